#pragma once
/// The pictures of a clip's media.
#include <atomic>
#include <memory>

#include "host/media/damage.h"
#include "host/picture/picture_intake.h"
#include "timeline/film/film.h"

namespace aveffect {

/// Shows media at moments. Used by one thread at a time.
class PictureSource {
public:
    PictureSource() = default;
    virtual ~PictureSource() = default;
    PictureSource(const PictureSource&) = delete;
    PictureSource& operator=(const PictureSource&) = delete;

    /// The picture that is shown at a time, counted from the media's first one: upright, in the range that
    /// was asked for. Before the first picture and behind the last one these are shown. Moments in a row cost
    /// least, forwards or backwards. Null where numbered pictures have a gap that is to be black. Throws
    /// Error (Input, Interrupted).
    virtual mediabridge::AVFramePtr At(const FilmTime& time) = 0;

    /// What was found to be wrong with it so far.
    virtual DamageReport Damage() const = 0;
};

/// How media are opened.
struct SourceTerms {
    AVRational rate{25, 1};       ///< at which media are looked at whose own rate varies
    IntakeTerms* terms = nullptr; ///< outlive the sources
    unsigned threads = 0;         ///< of each decoder
    const std::atomic<bool>& cancel;
};

/// Opens a clip's media; null where it is not known where they are. Throws Error (Input, Interrupted).
std::unique_ptr<PictureSource> OpenPictures(const FilmMedia& media, const SourceTerms& terms);

} // namespace aveffect
