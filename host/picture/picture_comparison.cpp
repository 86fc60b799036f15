#include "host/picture/picture_comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "host/support/error.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;

constexpr char kDone[] = "compared";

/// The nearest format that can be measured, those that PSNR is defined for.
AVPixelFormat MeasuredFormat(AVPixelFormat format) {
    static constexpr AVPixelFormat kMeasured[] = {
        AV_PIX_FMT_GRAY8,     AV_PIX_FMT_GRAY10,    AV_PIX_FMT_GRAY12,    AV_PIX_FMT_GRAY16,
        AV_PIX_FMT_YUV410P,   AV_PIX_FMT_YUV411P,   AV_PIX_FMT_YUV420P,   AV_PIX_FMT_YUVJ420P,
        AV_PIX_FMT_YUV422P,   AV_PIX_FMT_YUVJ422P,  AV_PIX_FMT_YUV440P,   AV_PIX_FMT_YUV444P,
        AV_PIX_FMT_YUVJ444P,  AV_PIX_FMT_YUVA420P,  AV_PIX_FMT_YUVA422P,  AV_PIX_FMT_YUVA444P,
        AV_PIX_FMT_YUV420P10, AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV420P12,
        AV_PIX_FMT_YUV422P12, AV_PIX_FMT_YUV444P12, AV_PIX_FMT_YUV420P16, AV_PIX_FMT_YUV422P16,
        AV_PIX_FMT_YUV444P16, AV_PIX_FMT_GBRP,      AV_PIX_FMT_GBRAP,     AV_PIX_FMT_GBRP10,
        AV_PIX_FMT_GBRP12,    AV_PIX_FMT_GBRP16,    AV_PIX_FMT_NONE};
    const AVPixFmtDescriptor* const about = av_pix_fmt_desc_get(format);
    const bool alpha = about && (about->flags & AV_PIX_FMT_FLAG_ALPHA);
    return avcodec_find_best_pix_fmt_of_list(kMeasured, format, alpha, nullptr);
}

/// A frame's number under this name among what filters wrote to it.
double Measure(const AVFrame& frame, const char* name) {
    const AVDictionaryEntry* const entry = av_dict_get(frame.metadata, name, nullptr, 0);
    if (!entry) throw Error(ErrorKind::Output, std::string("the pictures can't be compared: no ") + name);
    return std::strtod(entry->value, nullptr);
}

AVFramePtr AtTime(const AVFrame& picture, int64_t time) {
    AVFramePtr copy(av_frame_clone(&picture));
    if (!copy) throw NoMemory("pictures can't be compared: out of memory");
    copy->pts = time;
    return copy;
}

template <typename Change>
void ForSamples(AVFrame& picture, Change change) {
    constexpr int kPlanes = 3;
    for (int plane = 0; plane < kPlanes; ++plane)
        for (int y = 0; y < picture.height; ++y) {
            uint8_t* const row = picture.data[plane] + ptrdiff_t{y} * picture.linesize[plane];
            std::for_each(row, row + picture.width, change);
        }
}

} // namespace

double PeakSignalToNoise(double meanSquare, double peak) {
    return meanSquare > 0 ? 10 * std::log10(peak * peak / meanSquare)
                          : std::numeric_limits<double>::infinity();
}

PictureDifference PictureComparison::Compare(const AVFrame& first, const AVFrame& second) {
    if (first.width != second.width || first.height != second.height)
        throw Error(ErrorKind::Usage, "pictures of " + std::to_string(first.width) + "x" +
                                          std::to_string(first.height) + " and " +
                                          std::to_string(second.width) + "x" + std::to_string(second.height) +
                                          " can't be compared; both must have one size");
    const Shapes shapes = {first.width, first.height, first.format, second.format};
    if (!m_graph || m_shapes != shapes) {
        const AVPixelFormat format = MeasuredFormat(static_cast<AVPixelFormat>(first.format));
        const std::string bring = std::string("format=") + av_get_pix_fmt_name(format);
        m_graph.emplace("[in0]" + bring + "[a];[in1]" + bring +
                            ",split[b][c];[a][b]psnr[measured];[measured][c]ssim[out]",
                        kDone, std::vector{&first, &second});
        m_shapes = shapes;
        m_peak = std::ldexp(1, av_pix_fmt_desc_get(format)->comp[0].depth) - 1;
    }
    // The filters pair pictures of one time, which must rise: they count the pairs.
    const AVFramePtr a = AtTime(first, m_pairs), b = AtTime(second, m_pairs);
    ++m_pairs;
    const AVFramePtr measured = m_graph->Apply({a.get(), b.get()});
    return {Measure(*measured, "lavfi.psnr.mse_avg"), m_peak, Measure(*measured, "lavfi.ssim.All")};
}

AVFramePtr PictureComparison::Draw(const AVFrame& first, const AVFrame& second, int& factor) {
    FilterGraph graph("[in0]format=gbrp[a];[in1]format=gbrp[b];[a][b]blend=all_mode=difference[out]", kDone,
                      {&first, &second});
    const AVFramePtr a = AtTime(first, 0), b = AtTime(second, 0);
    AVFramePtr drawn = graph.Apply({a.get(), b.get()});
    if (av_frame_make_writable(drawn.get()) < 0)
        throw NoMemory("the difference can't be drawn: out of memory");
    int largest = 1;
    ForSamples(*drawn, [&](uint8_t sample) { largest = std::max<int>(largest, sample); });
    factor = 255 / largest;
    ForSamples(*drawn, [&](uint8_t& sample) { sample = static_cast<uint8_t>(sample * factor); });
    return drawn;
}

} // namespace aveffect
