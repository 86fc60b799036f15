#pragma once
/// Single pictures of clips that stay open.
#include "host/jobs/render.h"
#include "host/media/source.h"

namespace aveffect {

/// What an open clip shows at a moment.
struct ShownPicture {
    const Source& source;
    mediabridge::AVFramePtr picture; ///< as decoded
    DamageReport damage;             ///< on the way there
};

/// As the other RenderFrame(), of a picture that is at hand; the options' moment is the picture's. Several
/// threads may have pictures of one clip.
RenderResult RenderFrame(const Plugin& plugin, const FrameOptions& options, ShownPicture shown,
                         const RenderObserver& observer, const std::atomic<bool>& cancel);

} // namespace aveffect
