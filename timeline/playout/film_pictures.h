#pragma once
/// A film's pictures at its rate.
#include <memory>

#include "timeline/playout/playout_setup.h"

namespace aveffect {

/// What a film's pictures are like, as far as options don't say.
struct FilmLook {
    AVRational rate{25, 1};
    mediabridge::AVFramePtr picture; ///< one like those of the film, its own or another size; null: the film
                                     ///< shows nothing
    std::string source;              ///< where it comes from
    bool still = false;              ///< it is a photo or numbered
    AVCodecID codec = AV_CODEC_ID_NONE; ///< of the first clip that moves; none: there is none
};

/// From the first clip that is seen: the lowest track's, of those of one track the earliest; rate and codec
/// from the first that moves. Throws Error (Input, Interrupted).
FilmLook LookAt(const Film& film, IntakeTerms& terms, const std::atomic<bool>& cancel);

/// Pictures of a film by their numbers. Used by one thread at a time, but for what it has begun.
class FilmPictures {
public:
    /// Film and setup outlive the pictures.
    FilmPictures(const Film& film, const PlayoutSetup& setup)
        : m_setup(setup)
        , m_whole(MakeWhole(film, setup)) {}

    /// Begins the picture of an index of the setup's rate. Throws Error.
    Finish Draw(int64_t index) { return m_whole->Begin(FilmTime(index, m_setup.rate)).finish; }
    DamageReport Damage() const { return m_whole->Damage(); }

private:
    const PlayoutSetup& m_setup;
    std::unique_ptr<PicturePart> m_whole;
};

} // namespace aveffect
