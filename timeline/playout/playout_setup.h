#pragma once
/// What all parts of a film's pictures share.
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "host/effects/plugin.h"
#include "host/media/damage.h"
#include "host/picture/fitting.h"
#include "host/picture/framer.h"
#include "timeline/film/film.h"

namespace aveffect {

class EffectLine;

/// The effects that are at work, to be stopped.
class EffectLines {
public:
    void Add(const std::shared_ptr<EffectLine>& line);
    /// Ends all waiting of pictures for each other. From any thread.
    void Stop();

private:
    std::mutex m_mutex;
    std::vector<std::weak_ptr<EffectLine>> m_lines;
    bool m_stopped = false;
};

/// What the references are to outlives the film's pictures.
struct PlayoutSetup {
    const Plugin& plugin;
    AVRational rate; ///< pictures a second
    Canvas canvas;   ///< of the film's pictures
    Framing framing; ///< of each clip's pictures behind its effects; what is left is fitted to the canvas
    IntakeTerms& terms;
    Reporter& reporter;
    unsigned threads; ///< of each decoder
    unsigned workers; ///< that finish pictures; the thread that begins them counts as one more
    EffectLines& lines;
    const std::atomic<bool>& cancel;
};

/// Finishes a picture that is begun; called once, on any thread. Workers are numbers below the setup's, or
/// that number on the thread that begins pictures; each is used by one thread at a time.
using Finish = std::function<mediabridge::AVFramePtr(unsigned worker)>;

/// What is at a moment of a part of a film.
struct Sketch {
    /// Gives a picture as large as the canvas: of any format where it is opaque, else BGRA. Empty: nothing is
    /// there.
    Finish finish = {};
    bool opaque = false; ///< nothing below is seen

    explicit operator bool() const { return static_cast<bool>(finish); }
};

/// The pictures of a part of a film. Used by one thread at a time, but for what it has begun, which may
/// outlive it.
class PicturePart {
public:
    PicturePart() = default;
    virtual ~PicturePart() = default;
    PicturePart(const PicturePart&) = delete;
    PicturePart& operator=(const PicturePart&) = delete;

    /// Begins the picture of a moment, counted from the part's beginning. It may lie before that or behind
    /// the end, where a transition shows more. Moments in a row, forwards or backwards, cost least. Throws
    /// Error, as what it returns does.
    virtual Sketch Begin(const FilmTime& moment) = 0;

    /// What was found to be wrong so far.
    virtual DamageReport Damage() const = 0;
};

/// The pictures of an item, its effects included. The setup outlives them, the item does too.
std::unique_ptr<PicturePart> MakePart(const FilmItem& item, const PlayoutSetup& setup);

/// Those of a film, which are opaque at every moment.
std::unique_ptr<PicturePart> MakeWhole(const Film& film, const PlayoutSetup& setup);

} // namespace aveffect
