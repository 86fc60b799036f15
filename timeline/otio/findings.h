#pragma once
/// What reading a film finds out besides the film.
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "timeline/otio/film_reader.h"

namespace aveffect {

class Findings {
public:
    void Fault(const std::string& place, const std::string& message, ErrorKind kind = ErrorKind::Usage) {
        m_faults.push_back({place, message, kind});
    }
    /// A kind of things that are not used: said once, with how many there are.
    void Unknown(const std::string& kind, const std::string& place);

    /// Does what may throw Error, or std::range_error for times; that becomes a fault. Whether there was
    /// none.
    template <typename Work>
    bool Try(const std::string& place, Work work) {
        try {
            work();
            return true;
        } catch (const Error& wrong) {
            Fault(place, wrong.what(), wrong.Kind());
        } catch (const std::range_error& wrong) {
            Fault(place, wrong.what());
        }
        return false;
    }

    std::vector<FilmFault> TakeFaults() { return std::move(m_faults); }
    std::vector<std::string> UnknownTexts() const;

private:
    struct Kind {
        std::string text, first;
        size_t count = 0;
    };
    std::vector<FilmFault> m_faults;
    std::vector<Kind> m_unknown; ///< in the order of the file
};

} // namespace aveffect
