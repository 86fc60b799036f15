#pragma once
/// Clips made of transitions: between two pictures or clips, as a sheet of samples, and at the seams of a row
/// of clips. Pictures and clips are named by source URLs (a path, and "?vstreamid=1" for one of its streams).
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/jobs/render.h"
#include "host/media/moment.h"

namespace aveffect {

/// Pictures from begin on up to the one before end, counted from a film's beginning.
struct FilmShare {
    int64_t begin = 0, end = 0;
};

/// What films of transitions have in common. A framing says how each source's pictures get the film's size;
/// fit and background count without a size too.
struct FilmOptions : OutputOptions {
    bool silent = false; ///< without sound
    std::optional<FilmShare> share =
        {}; ///< without sound, and encoded as if it were part of the whole; absent: all of it
};

/// How many pictures a film has.
struct FilmShape {
    AVRational rate{25, 1}; ///< a second
    int64_t pictures = 0;
    std::vector<ClipEnd> ends = {}; ///< of a join's clips
};

struct TransitionOptions {
    FilmOptions film;
    std::string transition; ///< an effect's name
    std::string first, second;
    int64_t durationMs = 1000; ///< of the span in which the transition lies; above 0
    int64_t startMs =
        0; ///< when it begins in the span, the first picture being shown before; below durationMs
    int64_t holdBeforeMs = 0; ///< the first picture before the span
    int64_t holdAfterMs = 0;  ///< the second one after it
    /// Both clips play from their beginnings, the first from the start of the result, the second from the
    /// start of the transition, and their sound is faded over with it. Without it the last picture of
    /// the first and the first of the second are shown, silently, unless their URLs say "picture=first" or
    /// so.
    bool live = false;
};

/// Renders a transition from one picture to another, at the first one's size, in square pixels, and rate (25
/// a second for a still picture) where none are asked for. Throws Error. As for Render(), the output appears
/// under its name only when it is whole, cancelling ends soon, and memory use does not grow with the length.
RenderResult RenderTransition(const Plugin& plugin, const TransitionOptions& options,
                              const RenderObserver& observer, const std::atomic<bool>& cancel);

/// A clip or a still picture in a row of them.
struct JoinClip {
    std::string url;
    /// How long a still picture stands, or of a clip how much is shown; absent: JoinOptions::pictureMs, all.
    std::optional<int64_t> lengthMs = {};
    std::optional<ClipEnd> end = {}; ///< where it is known already
};

/// How one clip passes into the next.
struct JoinSeam {
    std::string transition; ///< an effect's name; may be empty at a straight cut
    int64_t durationMs = 0; ///< of the transition; 0: a straight cut
};

/// What is heard from the beginning of a film to its end, over and over if need be.
struct JoinMusic {
    std::string url;
    int64_t fadeInMs = 0, fadeOutMs = 0;
    double volume = 1; ///< a factor
};

struct JoinOptions {
    FilmOptions film;
    std::vector<JoinClip> clips; ///< two or more
    std::vector<JoinSeam> seams; ///< one for all seams, or one for each
    int64_t pictureMs = 3000;    ///< of a still picture with no length of its own; above 0
    std::optional<JoinMusic> music = {};
    bool clipSound = true; ///< false: the clips are silent
};

/// Renders clips and pictures one after the other, the end of each crossing into the beginning of the next
/// with a transition, sound and all, or cut straight. Where nothing else is asked for, pictures are fitted to
/// the size and the rate of the first that moves (the first picture's and 25 a second when none does), sound
/// to that of the first clip that has any; clips without count as silent. Music is added to it. As
/// RenderTransition() otherwise.
RenderResult RenderJoin(const Plugin& plugin, const JoinOptions& options, const RenderObserver& observer,
                        const std::atomic<bool>& cancel);

/// Of the film that RenderJoin() makes. Throws Error.
FilmShape ShapeOfJoin(const JoinOptions& options, const RenderObserver& observer,
                      const std::atomic<bool>& cancel);

struct SheetOptions {
    std::string first, second;
    std::string output;              ///< a still picture
    std::optional<PictureSize> tile; ///< size of one sample; absent: the first picture's shape, 160 at most
    unsigned threads = 0;            ///< that draw; 0: as many as there are processors
    bool overwrite = false;
};

/// Renders a picture of all transitions between two pictures: one row for each, in the catalogue's order,
/// eight moments across. Throws Error.
RenderResult RenderSheet(const Plugin& plugin, const SheetOptions& options, const RenderObserver& observer,
                         const std::atomic<bool>& cancel);

} // namespace aveffect
