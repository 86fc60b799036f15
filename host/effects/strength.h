#pragma once
/// How much of an effect is seen, and where.
#include <memory>

#include "aveffect/video_frame.h"
#include "host/effects/mask_file.h"
#include "host/picture/area_mask.h"
#include "host/settings/settings_at_time.h"
#include "mediabridge/picture_blend.h"

namespace aveffect {

struct FrameFree {
    void operator()(AVBased::IRawVideoFrame* frame) const noexcept { frame->Free(); }
};
using FramePtr = std::unique_ptr<AVBased::IRawVideoFrame, FrameFree>;

/// A copy in memory of its own. Throws Error (Effect).
FramePtr CopyOf(AVBased::IRawVideoFrame& frame);

/// Blends what an effect makes of a picture with what it was before, by the effect's mix, rise and fall, mask
/// and area. Costs nothing where the effect is seen whole. Used by one thread at a time.
class Strength {
public:
    /// The settings outlive it.
    explicit Strength(const SettingsAtTime& settings);

    /// Before the effect; moments are milliseconds in the clip. False when nothing of it is to be seen, and
    /// it need not be drawn. Throws Error.
    bool Begin(AVBased::IRawVideoFrame& frame, int ms);
    /// Behind it. Throws Error (Input, Effect).
    void End(AVBased::IRawVideoFrame& frame, int ms);

private:
    bool HasPlace() const;
    MaskFile& File();
    const AVFrame& MaskAt(int ms, int width, int height);

    const SettingsAtTime& m_settings;
    std::unique_ptr<MaskFile> m_file; ///< once it is needed
    AreaMask m_area;
    mediabridge::PictureBlend m_blend;
    double m_strength = 1;
    FramePtr m_before; ///< null while the effect is seen whole
};

} // namespace aveffect
