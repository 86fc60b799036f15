#pragma once
/// Clips that follow one another, each crossing into the next with a transition.
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/effects/plugin.h"
#include "host/jobs/composition.h"
#include "host/media/clip_player.h"
#include "host/media/clip_scan.h"
#include "host/picture/canvas_fitting.h"
#include "host/sound/joined_sound.h"

namespace aveffect {

/// How one part passes into the next.
struct Seam {
    std::string transition;
    int64_t pictures = 0; ///< that both share, in which the one crosses into the other; 0: a straight cut
};

/// A clip's part of a sequence: its first so many pictures at the sequence's rate. A still picture lasts as
/// long as it takes.
struct SequencePart {
    const ClipScan* clip; ///< outlives the sequence
    int64_t pictures;     ///< no less than it shares with its neighbours together
    Seam seam = {};       ///< to the next part; the last one's counts for nothing
};

struct SequenceSetup {
    AVRational rate{25, 1};
    std::vector<SequencePart> parts;
    std::optional<Music> music = {}; ///< with the parts' sound
    Framing framing = {};            ///< of the pictures; what is behind the effects is left to the caller
    size_t model = 0;                ///< the part that has the sequence's size and shape of pixels
    bool squarePixels = false;       ///< whatever that part has
    unsigned threads = 0;            ///< of each decoder
    unsigned workers = 1;            ///< that finish drawings
    IntakeTerms* terms = nullptr;    ///< of the clips' pictures; outlive the sequence
};

/// Draws the pictures of a sequence. No more than two clips are open at a time. Used by one thread at a time.
class ClipSequence {
public:
    /// Plug-in and flag outlive the sequence. Throws Error.
    ClipSequence(const Plugin& plugin, SequenceSetup setup, Reporter& reporter,
                 const std::atomic<bool>& cancel);

    int64_t Pictures() const;
    /// A picture like those of the sequence: its first, in colour where a later one has any.
    mediabridge::AVFramePtr Look();
    /// Goes to where the picture of an index can be decoded; indices go up from there.
    void GoTo(int64_t index);
    /// Begins the picture of an index; indices only go up. Pictures of clips that have the sequence's shape
    /// come as they are, others in BGRA, crossing ones in BGR0. Drawings end before the sequence. Throws
    /// Error, as drawings do.
    Drawing Draw(int64_t index);

    /// The parts' sound in samples of that rate, ending where their pictures do.
    std::vector<SoundPart> Sound(int rate) const;

    /// What was found to be wrong with the clips; call after the last Draw().
    DamageReport Damage() const;

private:
    using Fittings =
        std::shared_ptr<std::vector<CanvasFitting>>; ///< by workers; drawings outlive the playing
    /// A clip that is being played.
    struct Playing {
        std::unique_ptr<ClipPlayer> player;
        Fittings fittings;
    };
    std::unique_ptr<ClipPlayer> Player(size_t part) const;
    void Open(size_t part);
    void Leave();
    Fittings MakeFittings() const;
    mediabridge::AVFramePtr Cross(const Seam& seam, mediabridge::AVFramePtr from, mediabridge::AVFramePtr to,
                                  int64_t picture) const;
    void Shape(Reporter& reporter);

    const Plugin& m_plugin;
    SequenceSetup m_setup;
    const std::atomic<bool>& m_cancel;
    std::vector<int64_t> m_begins; ///< each part's first picture
    Framing m_framing;             ///< of every part's pictures
    Canvas m_canvas;
    std::deque<Playing> m_playing; ///< the part that is shown, and the next one once they cross
    size_t m_shown = 0;            ///< the part at the front of m_playing
    DamageReport m_damage;         ///< of the parts before
};

} // namespace aveffect
