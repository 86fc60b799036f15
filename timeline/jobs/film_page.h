#pragma once
/// Films as a page to look at.
#include <atomic>
#include <functional>
#include <map>
#include <string>

#include "host/effects/plugin.h"
#include "host/support/reporter.h"
#include "timeline/film/film.h"

namespace aveffect {

/// The picture of a clip in its page, as the bytes of a JPEG file; empty: none.
using Thumbnailer = std::function<std::string(const FilmItem& clip)>;

/// One page of HTML without scripts and without other files: the tracks drawn to scale, and their items with
/// pictures, times, effects and transitions.
std::string FilmPage(const Film& film, const Thumbnailer& thumbnail);

/// Draws the first picture of clips, with those of their effects that stand still. Clips whose media can't be
/// read have none, of which the observer is warned. Used by one thread at a time.
class FilmThumbnails {
public:
    /// Plugin, observer and flag outlive it. No more than that many pictures are drawn.
    /// They pass through files in a hidden directory beside the page, where this process may write.
    FilmThumbnails(const Plugin& plugin, const std::string& page, size_t most, const RenderObserver& observer,
                   const std::atomic<bool>& cancel);
    ~FilmThumbnails();
    FilmThumbnails(const FilmThumbnails&) = delete;
    FilmThumbnails& operator=(const FilmThumbnails&) = delete;

    /// Throws Error (Effect, Interrupted).
    std::string Of(const FilmItem& clip);

private:
    std::string Draw(const FilmItem& clip, const std::string& url, int64_t milliseconds);

    const Plugin& m_plugin;
    size_t m_most;
    Reporter m_reporter;
    const std::atomic<bool>& m_cancel;
    std::string m_directory, m_picture;
};

struct FilmPageOptions {
    std::string input;  ///< the film's file, which the page does not replace
    std::string output; ///< file of the page
    bool overwrite = false;
};

/// Writes the film's page with the pictures of its first thousand clips. Throws Error.
void WriteFilmPage(const Plugin& plugin, const Film& film, const FilmPageOptions& options,
                   const RenderObserver& observer, const std::atomic<bool>& cancel);

} // namespace aveffect
