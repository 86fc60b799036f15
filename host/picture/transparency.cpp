#include "host/picture/transparency.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "host/picture/working_format.h"

extern "C" {
#include <libavutil/intreadwrite.h>
#include <libavutil/pixdesc.h>
}

namespace aveffect {
namespace {

bool UsesOpaqueColours(const AVFrame& picture) {
    constexpr int kColours = 256, kAlpha = 24;
    const auto* palette = reinterpret_cast<const uint32_t*>(picture.data[1]);
    std::array<bool, kColours> opaque{};
    for (size_t index = 0; index < kColours; ++index) opaque[index] = palette[index] >> kAlpha == 0xFF;
    for (int y = 0; y < picture.height; ++y) {
        const uint8_t* row = picture.data[0] + ptrdiff_t{y} * picture.linesize[0];
        if (!std::all_of(row, row + picture.width, [&](uint8_t index) { return opaque[index]; }))
            return false;
    }
    return true;
}

template <typename Full>
bool IsFull(const AVFrame& picture, const AVComponentDescriptor& alpha, Full full) {
    for (int y = 0; y < picture.height; ++y) {
        const uint8_t* sample =
            picture.data[alpha.plane] + ptrdiff_t{y} * picture.linesize[alpha.plane] + alpha.offset;
        for (int x = 0; x < picture.width; ++x, sample += alpha.step)
            if (!full(sample)) return false;
    }
    return true;
}

} // namespace

bool IsOpaque(const AVFrame& picture) {
    const AVPixFmtDescriptor* about = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    if (!about || !(about->flags & AV_PIX_FMT_FLAG_ALPHA)) return true;
    if (about->flags & AV_PIX_FMT_FLAG_PAL) return UsesOpaqueColours(picture);
    const AVComponentDescriptor& alpha = about->comp[about->nb_components - 1];
    const auto full = (int64_t{1} << alpha.depth) - 1;
    if (alpha.depth == 8)
        return IsFull(picture, alpha, [](const uint8_t* sample) { return *sample == 0xFF; });
    if (alpha.depth > 16 || (about->flags & AV_PIX_FMT_FLAG_FLOAT))
        return false; // nothing that decoders give out
    if (about->flags & AV_PIX_FMT_FLAG_BE)
        return IsFull(picture, alpha,
                      [&](const uint8_t* sample) { return AV_RB16(sample) >> alpha.shift == full; });
    return IsFull(picture, alpha,
                  [&](const uint8_t* sample) { return AV_RL16(sample) >> alpha.shift == full; });
}

void AlphaLoss::Watch(const AVFrame& picture, AVPixelFormat next, const std::string& why,
                      Reporter& reporter) {
    if (m_said || !HasAlpha(static_cast<AVPixelFormat>(picture.format)) || HasAlpha(next) ||
        IsOpaque(picture))
        return;
    m_said = true;
    reporter.Warn(why + "; the pictures become opaque");
}

} // namespace aveffect
