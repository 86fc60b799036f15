#pragma once
/// What media files say of themselves, each opened once.
#include <atomic>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "timeline/film/film_time.h"

namespace aveffect {

struct MediaHeader {
    std::string fault; ///< why it can't be opened; empty: it can, and the rest counts
    bool pictures = false, sound = false;
    bool still = false;                  ///< one picture, which has no length
    AVRational rate{0, 1};               ///< of the pictures, a second
    int width = 0, height = 0;           ///< as stored
    std::optional<FilmTime> seen, heard; ///< how long pictures and sound are; absent: it does not tell
};

/// Used by one thread at a time.
class MediaHeaders {
public:
    /// The flag, which outlives this, ends waiting for media; null: nothing does.
    explicit MediaHeaders(const std::atomic<bool>* cancel = nullptr)
        : m_cancel(cancel) {}

    /// Of a source URL. Only what a file says in front is read.
    const MediaHeader& Of(const std::string& url);
    /// Opens many at a time, as many as there are processors, so that Of() has them at hand.
    void Prepare(const std::vector<std::string>& urls);
    /// How many have been opened.
    size_t Opened() const { return m_headers.size(); }

private:
    const std::atomic<bool>* m_cancel;
    std::map<std::string, MediaHeader> m_headers;
};

} // namespace aveffect
