#include "host/effects/view_pairs.h"

#include <algorithm>
#include <utility>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "aveffect/catalogue/stereo.h"
#include "host/settings/catalogue_lookup.h"
#include "host/support/error.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;
using mediabridge::ScaleQuality;
using mediabridge::VideoFrame;

std::vector<EffectSpec> EffectsBefore(const std::vector<EffectSpec>& effects) {
    const auto stereo = std::find_if(effects.begin(), effects.end(), [](const EffectSpec& effect) {
        return RequireEffect(effect.name).kind == AVBased::EffectKind::Stereo;
    });
    if (stereo == effects.end())
        throw Error(ErrorKind::Usage, "two views need the effect " +
                                          std::string(AVBased::catalogue::k3DRender.shortName) +
                                          " to show them");
    return {effects.begin(), stereo};
}

/// A part of a picture, in memory of its own.
AVFramePtr CutOut(const AVFrame& picture, int left, int top, int width, int height) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    AVFramePtr part = mediabridge::AllocatePicture(format, width, height);
    if (!part || av_frame_copy_props(part.get(), &picture) < 0) throw NoMemory("no memory for a picture");
    const uint8_t* planes[4] = {};
    for (int plane = 0; plane < 4 && picture.data[plane]; ++plane) {
        const bool chroma = plane == 1 || plane == 2;
        const int row = chroma ? top >> descriptor->log2_chroma_h : top;
        planes[plane] =
            picture.data[plane] + picture.linesize[plane] * row + av_image_get_linesize(format, left, plane);
    }
    av_image_copy(part->data, part->linesize, planes, picture.linesize, format, width, height);
    return part;
}

/// Where the second half of a side begins, and how long both are: whole chroma samples; what is left over
/// lies between them.
struct Halves {
    int second, length;

    Halves(int side, int chromaShift) {
        const int unit = 1 << chromaShift;
        second = ((side + 1) / 2 + unit - 1) / unit * unit;
        length = side - second;
        if (length < 1)
            throw Error(ErrorKind::Usage,
                        "a side of " + std::to_string(side) + " pixels can't hold two views");
    }
};

} // namespace

ViewPairs::ViewPairs(const Plugin& plugin, AVBased::IAVManager* manager,
                     const std::vector<EffectSpec>& effects, const TimeSpan& clip, StereoOptions options)
    : m_options(std::move(options))
    , m_before(plugin, manager, EffectsBefore(effects), clip) {
    if (m_options.layout && !m_options.right.empty())
        throw Error(ErrorKind::Usage, "the right view is either another clip's or in the pictures, not both");
}

std::pair<AVFramePtr, AVFramePtr> ViewPairs::Split(const AVFrame& picture) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    if (format->flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM)) {
        if (!m_toBytes) m_toBytes.emplace(AV_PIX_FMT_BGRA, 0, 0, ScaleQuality::Bicubic);
        return Split(*ConvertWith(*m_toBytes, picture));
    }
    if (m_options.layout == StereoLayout::SideBySide) {
        const Halves halves(picture.width, format->log2_chroma_w);
        return {CutOut(picture, 0, 0, halves.length, picture.height),
                CutOut(picture, halves.second, 0, halves.length, picture.height)};
    }
    const Halves halves(picture.height, format->log2_chroma_h);
    return {CutOut(picture, 0, 0, picture.width, halves.length),
            CutOut(picture, 0, halves.second, picture.width, halves.length)};
}

AVFramePtr ViewPairs::Fit(const AVFrame& second, AVFramePtr& left, const WorkingFormat& working) {
    if (!m_fit) {
        m_colours.emplace(left->color_primaries, left->color_trc);
        const AVColorRange range = left->color_range == AVCOL_RANGE_UNSPECIFIED
                                       ? mediabridge::UsualRange(working.format)
                                       : left->color_range;
        // Said, so that a right view that says another one is brought to it.
        const AVColorSpace matrix =
            mediabridge::Is601(left->colorspace) ? AVCOL_SPC_SMPTE170M : left->colorspace;
        m_fit.emplace(working.format, left->width, left->height, ScaleQuality::Bicubic, range, matrix);
    }
    AVFramePtr matched;
    if (m_colours->Changes(second)) {
        if (!m_toBytes) m_toBytes.emplace(AV_PIX_FMT_BGRA, 0, 0, ScaleQuality::Bicubic);
        matched = m_colours->Apply(ConvertWith(*m_toBytes, second));
    }
    AVFramePtr right = ConvertWith(*m_fit, matched ? *matched : second);
    // Pictures from elsewhere may have other pitches than those that are made here.
    if (!std::equal(left->linesize, left->linesize + 4, right->linesize))
        left = CutOut(*left, 0, 0, left->width, left->height);
    return right;
}

VideoFrame::Ptr ViewPairs::Prepare(const AVFrame& right, int timeMs, unsigned durationMs,
                                   std::optional<int64_t> number) {
    VideoFrame::Ptr frame = VideoFrame::Wrap(&right, timeMs, durationMs);
    if (!frame) throw NoMemory("no memory for a picture");
    m_before.Process(frame.get(), timeMs, number);
    return frame;
}

} // namespace aveffect
