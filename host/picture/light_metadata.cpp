#include "host/picture/light_metadata.h"

#include <cmath>
#include <cstring>
#include <utility>

extern "C" {
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/pixdesc.h>
}

#include "host/picture/working_format.h"
#include "host/support/error.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {
namespace {

struct LightKind {
    AVPacketSideDataType stream;
    AVFrameSideDataType picture;
};
constexpr LightKind kLight[] = {
    {AV_PKT_DATA_MASTERING_DISPLAY_METADATA, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA},
    {AV_PKT_DATA_CONTENT_LIGHT_LEVEL, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL},
};

/// Where the picture does not say it itself.
void Say(AVFrame& picture, AVFrameSideDataType kind, const uint8_t* said, size_t size) {
    if (av_frame_get_side_data(&picture, kind)) return;
    if (AVFrameSideData* copy = av_frame_new_side_data(&picture, kind, size))
        std::memcpy(copy->data, said, size);
}

/// In ticks of the encoders, so many to the unit.
std::string Ticks(AVRational value, int perUnit) {
    return std::to_string(std::lround(av_q2d(value) * perUnit));
}

/// Primaries in 1/50000, luminance in 1/10000 cd/m2, in the order that both encoders want.
std::string DisplayWords(const AVMasteringDisplayMetadata& display) {
    const auto point = [](const char* name, const AVRational(&place)[2]) {
        return std::string(name) + "(" + Ticks(place[0], 50000) + "," + Ticks(place[1], 50000) + ")";
    };
    return point("G", display.display_primaries[1]) + point("B", display.display_primaries[2]) +
           point("R", display.display_primaries[0]) + point("WP", display.white_point) + "L(" +
           Ticks(display.max_luminance, 10000) + "," + Ticks(display.min_luminance, 10000) + ")";
}

/// libavfilter's words for what pictures of high dynamic range are where they do not say all of it.
std::string SayUnsaid(const AVFrame& picture, bool yuv) {
    std::string words;
    const auto say = [&](const char* word) {
        words += std::string(words.empty() ? "setparams=" : ":") + word;
    };
    if (picture.color_primaries == AVCOL_PRI_UNSPECIFIED) say("color_primaries=bt2020");
    if (yuv && picture.colorspace == AVCOL_SPC_UNSPECIFIED) say("colorspace=bt2020nc");
    if (yuv && picture.color_range == AVCOL_RANGE_UNSPECIFIED) say("range=limited");
    return words.empty() ? words : words + ",";
}

std::string MappingFilter(const AVFrame& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const AVPixFmtDescriptor* shape = av_pix_fmt_desc_get(format);
    const bool yuv = mediabridge::HasColourRange(format);
    // zscale takes whole chroma samples only.
    const bool whole =
        picture.width % (1 << shape->log2_chroma_w) == 0 && picture.height % (1 << shape->log2_chroma_h) == 0;
    const std::string target = yuv && whole ? FormatName(EightBitKind(format)) : "yuv444p";
    const std::string source = !yuv ? "format=gbrp16le," : whole ? "" : "format=yuv444p16le,";
    return SayUnsaid(picture, yuv) + source +
           "zscale=t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,tonemap=hable:desat=0,"
           "zscale=t=bt709:m=bt709:r=limited:dither=ordered,format=" +
           target;
}

} // namespace

bool IsHighDynamicRange(AVColorTransferCharacteristic transfer) {
    return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
}

bool IsHighDynamicRange(const AVFrame& picture) { return IsHighDynamicRange(picture.color_trc); }

void KeepLight(const AVStream& from, AVFrame& picture) {
    for (const auto& [stream, kind] : kLight) {
        size_t size = 0;
        if (const uint8_t* said = av_stream_get_side_data(&from, stream, &size))
            Say(picture, kind, said, size);
    }
}

void KeepLight(const AVFrame& from, AVFrame& picture) {
    for (const auto& [stream, kind] : kLight)
        if (const AVFrameSideData* said = av_frame_get_side_data(&from, kind))
            Say(picture, kind, said->data, said->size);
}

void MarkLight(AVStream& to, const AVFrame& picture) {
    for (const auto& [stream, kind] : kLight) {
        const AVFrameSideData* said = av_frame_get_side_data(&picture, kind);
        if (!said) continue;
        if (uint8_t* copy = av_stream_new_side_data(&to, stream, said->size))
            std::memcpy(copy, said->data, said->size);
    }
}

std::string LightSettings(const std::string& encoder, const AVFrame& picture) {
    const bool x265 = encoder == "libx265";
    if (!IsHighDynamicRange(picture) || (!x265 && encoder != "libx264")) return {};
    std::string settings;
    const auto add = [&](const std::string& name, const std::string& value) {
        settings += (settings.empty() ? "" : ":") + name + "=" + value;
    };
    if (const auto* said = av_frame_get_side_data(&picture, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA)) {
        const auto& display = *reinterpret_cast<const AVMasteringDisplayMetadata*>(said->data);
        if (display.has_primaries && display.has_luminance)
            add(x265 ? "master-display" : "mastering-display", DisplayWords(display));
    }
    if (const auto* said = av_frame_get_side_data(&picture, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL)) {
        const auto& light = *reinterpret_cast<const AVContentLightMetadata*>(said->data);
        add(x265 ? "max-cll" : "cll", std::to_string(light.MaxCLL) + "," + std::to_string(light.MaxFALL));
    }
    return settings;
}

bool ToneMapper::Exists() { return avfilter_get_by_name("zscale") && avfilter_get_by_name("tonemap"); }

void ToneMapper::Require() {
    if (!Exists())
        throw Error(ErrorKind::Usage,
                    "--sdr needs the filters zscale and tonemap, which the installed libavfilter lacks");
}

mediabridge::AVFramePtr ToneMapper::Apply(mediabridge::AVFramePtr picture) {
    if (!IsHighDynamicRange(*picture)) return picture;
    if (!m_filter) m_filter.emplace(MappingFilter(*picture), "brought to standard dynamic range");
    mediabridge::AVFramePtr mapped = m_filter->Apply(std::move(picture));
    for (const auto type :
         {AV_FRAME_DATA_MASTERING_DISPLAY_METADATA, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL,
          AV_FRAME_DATA_DYNAMIC_HDR_PLUS, AV_FRAME_DATA_DOVI_METADATA, AV_FRAME_DATA_DOVI_RPU_BUFFER})
        av_frame_remove_side_data(mapped.get(), type);
    return mapped;
}

} // namespace aveffect
