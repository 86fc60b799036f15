#pragma once
/// What was said last.
#include <exception>
#include <mutex>
#include <string>

namespace aveffect::adapters {

/// Keeps failures from being told twice in a row, as each picture would. Safe from any thread.
class LastWords {
public:
    /// Whether these are others. Without memory to remember them they are not.
    bool AreNew(const char* words) noexcept {
        const std::scoped_lock lock(m_mutex);
        if (m_said == words) return false;
        try {
            m_said = words;
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }

private:
    std::mutex m_mutex;
    std::string m_said;
};

} // namespace aveffect::adapters
