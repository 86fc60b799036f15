#pragma once
/// A clip in a film.
#include <memory>

#include "timeline/playout/picture_source.h"
#include "timeline/playout/playout_setup.h"

namespace aveffect {

/// Pictures of a clip's media with its effects, fitted to the canvas; what is free beside them is
/// transparent.
class ClipPart : public PicturePart {
public:
    /// Opens the media when the first picture is begun.
    ClipPart(const FilmItem& item, const PlayoutSetup& setup);

    Sketch Begin(const FilmTime& moment) override;
    DamageReport Damage() const override;

private:
    struct Ways;

    const FilmItem& m_item;
    const PlayoutSetup& m_setup;
    std::unique_ptr<PictureSource> m_source; ///< null before the first picture, and without media
    std::shared_ptr<Ways> m_ways;            ///< of the workers; what is begun holds them
    int64_t m_begun = 0;
    bool m_fills = false; ///< the canvas, as far as the first picture tells
};

} // namespace aveffect
