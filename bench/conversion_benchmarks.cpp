// Conversions between planes and pixels beside those of the libraries: time, and how far samples are from
// double precision, chroma at the left of its pair.
#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

extern "C" {
#include <libavutil/opt.h>
}
#ifdef AVEFFECT_HAS_LIBYUV
#include <libyuv.h>
#endif

#include "aveffect/base_media.h"
#include "aveffect/pixel_format.h"
#include "bench/copy_time.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/video_frame.h"
#include "tests/support/colour_model.h"

namespace bench {

namespace {

using mediabridge::AVFramePtr;

constexpr int kColumns = 1920, kRows = 1080, kQuality = 4;
constexpr test::ColourModel kModel = {0.299, 0.114, false, true, 0, 0.5};

enum class Content { Photo, Noise };

// Slopes, textures, edges and grain; or chance.
AVFramePtr MakePixels(Content content) {
    AVFramePtr picture = mediabridge::AllocatePicture(AV_PIX_FMT_BGRA, kColumns, kRows);
    std::mt19937 random(1);
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < 4 * kColumns; ++x) {
            const int column = x / 4, channel = x % 4;
            const double slope = 70 * std::sin(column * 0.013 * (channel + 1) + y * 0.02);
            const double texture = 40 * std::sin(y * 0.11 * (channel + 1) - column * 0.07);
            const double edge = (column / 97 + y / 61) % 5 == channel ? 40 : 0;
            const double photo = 120 + slope + texture + edge + static_cast<double>(random() % 17);
            const double value = content == Content::Photo ? std::clamp(photo, 0.0, 255.0)
                                                           : static_cast<double>(random() % 256);
            picture->data[0][ptrdiff_t{y} * picture->linesize[0] + x] =
                channel == 3 ? 255 : static_cast<uint8_t>(value);
        }
    return picture;
}

// What makes the target of the source; both are there already for libraries.
using Convert = std::function<void(const AVFrame& source, AVFrame& target)>;

struct Free {
    void operator()(AVBased::IRawVideoFrame* frame) const { frame->Free(); }
    void operator()(AVBased::IImageConverter* converter) const { converter->Release(); }
};

// Through the companion, which gives out a frame of its own; the last one's picture becomes the target.
Convert ByCompanion(unsigned format) {
    const std::shared_ptr<AVBased::IImageConverter> converter(CreateImageConverterEx(format, 0, 0, kQuality),
                                                              Free());
    auto last = std::make_shared<std::unique_ptr<AVBased::IRawVideoFrame, Free>>();
    return [=](const AVFrame& source, AVFrame& target) {
        const auto frame = mediabridge::VideoFrame::Wrap(&source, 0, 0);
        last->reset(converter->Convert(frame.get()));
        for (unsigned i = 0; i < (*last)->GetBufferCount(); ++i) {
            unsigned pitch = 0;
            target.data[i] = (*last)->GetBuffer(i, nullptr, &pitch, nullptr);
            target.linesize[i] = static_cast<int>(pitch);
        }
    };
}

Convert ByLibswscale() {
    return [context = std::shared_ptr<SwsContext>()](const AVFrame& source, AVFrame& target) mutable {
        if (!context) {
            context.reset(sws_alloc_context(), sws_freeContext);
            const std::pair<const char*, int> options[] = {
                {"srcw", kColumns},
                {"srch", kRows},
                {"src_format", source.format},
                {"dstw", kColumns},
                {"dsth", kRows},
                {"dst_format", target.format},
                {source.format == AV_PIX_FMT_BGRA ? "dst_h_chr_pos" : "src_h_chr_pos", 0},
                {"sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP}};
            for (const auto& [name, value] : options) av_opt_set_int(context.get(), name, value, 0);
            if (sws_init_context(context.get(), nullptr, nullptr) < 0) std::abort();
        }
        sws_scale(context.get(), source.data, source.linesize, 0, kRows, target.data, target.linesize);
    };
}

#ifdef AVEFFECT_HAS_LIBYUV
void ByLibyuv(const AVFrame& s, AVFrame& t) {
    if (s.format == AV_PIX_FMT_BGRA)
        libyuv::ARGBToI420(s.data[0], s.linesize[0], t.data[0], t.linesize[0], t.data[1], t.linesize[1],
                           t.data[2], t.linesize[2], kColumns, kRows);
    else
        libyuv::I420ToARGBMatrixFilter(s.data[0], s.linesize[0], s.data[1], s.linesize[1], s.data[2],
                                       s.linesize[2], t.data[0], t.linesize[0], &libyuv::kYuvI601Constants,
                                       kColumns, kRows, libyuv::kFilterBilinear);
}
#endif

void RunConversion(benchmark::State& state, Content content, bool toPlanes, const Convert& convert) {
    AVFramePtr pixels = MakePixels(content);
    AVFramePtr planes = mediabridge::AllocatePicture(AV_PIX_FMT_YUV420P, kColumns, kRows);
    AVFramePtr target =
        mediabridge::AllocatePicture(toPlanes ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_BGRA, kColumns, kRows);
    const Convert there = ByCompanion(AVBased::YUV420P);
    there(*pixels, *planes);
    planes = mediabridge::CopyPicture(planes.get());
    const AVFrame& source = toPlanes ? *pixels : *planes;
    const size_t bytes = size_t{kColumns} * kRows * (toPlanes ? 4 : 3) / (toPlanes ? 1 : 2);
    TimeAgainstCopy(state, bytes, [&] { convert(source, *target); });
    const auto wanted = toPlanes ? kModel.Yuv(source, kColumns / 2, kRows / 2) : kModel.Rgb(source);
    for (int i = 0; i < 3; ++i) {
        const test::SampleError error(test::Component(*target, i), wanted[static_cast<size_t>(i)]);
        state.counters[kMeanErrors[i]] = error.mean;
        state.counters[kLargestErrors[i]] = error.largest;
    }
}

} // namespace

void RegisterConversionBenchmarks() {
    const auto add = [](const std::string& name, bool toPlanes, const Convert& convert) {
        for (const auto& [content, picture] : {std::pair{Content::Photo, "photo"}, {Content::Noise, "noise"}})
            benchmark::RegisterBenchmark((std::string(toPlanes ? "BGRA to YUV420P" : "YUV420P to BGRA") +
                                          " 1080p, " + picture + ", " + name)
                                             .c_str(),
                                         [=, what = content](benchmark::State& state) {
                                             RunConversion(state, what, toPlanes, convert);
                                         })
                ->UseManualTime();
    };
    for (const bool toPlanes : {true, false}) {
        add("companion", toPlanes, ByCompanion(toPlanes ? AVBased::YUV420P : AVBased::BGRA));
        add("libswscale bicubic", toPlanes, ByLibswscale());
#ifdef AVEFFECT_HAS_LIBYUV
        add("libyuv bilinear", toPlanes, ByLibyuv);
#endif
    }
}

} // namespace bench
