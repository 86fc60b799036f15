#include "host/picture/bit_depth.h"

#include <utility>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "host/picture/working_format.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {

int BitDepth(AVPixelFormat format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    return descriptor ? descriptor->comp[0].depth : 8;
}

mediabridge::AVFramePtr DepthReducer::Apply(mediabridge::AVFramePtr picture) {
    const auto format = static_cast<AVPixelFormat>(picture->format);
    if (BitDepth(format) <= 8) return picture;
    if (mediabridge::HasColourRange(format)) {
        if (!m_scaler) m_scaler.emplace(EightBitKind(format), 0, 0, mediabridge::ScaleQuality::Bicubic);
        return ConvertWith(*m_scaler, *picture);
    }
    if (!avfilter_get_by_name("zscale")) return picture;
    const std::string alpha = HasAlpha(format) ? "a" : "";
    if (!m_filter)
        m_filter.emplace("format=gbr" + alpha + "p16le,zscale=dither=ordered,format=gbr" + alpha + "p",
                         "brought to 8 bits");
    return m_filter->Apply(std::move(picture));
}

} // namespace aveffect
