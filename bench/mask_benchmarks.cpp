// Areas in 1080p as they move, and pictures blended in each way.
#include <algorithm>
#include <string>
#include <tuple>
#include <utility>

#include "aveffect/pixel_format.h"
#include "bench/copy_time.h"
#include "host/picture/area_mask.h"
#include "mediabridge/picture_blend.h"
#include "mediabridge/video_frame.h"

namespace bench {

namespace {

using aveffect::Area;
using mediabridge::VideoFrame;

constexpr int kMaskColumns = 1920, kMaskRows = 1080;

void RunArea(benchmark::State& state, Area::Shape shape, double feather) {
    aveffect::AreaMask mask;
    Area area = {shape, 0.2, 0.2, 0.5, 0.5};
    TimeAgainstCopy(state, size_t{kMaskColumns} * kMaskRows, [&] {
        area.x = area.x < 0.4 ? area.x + 0.001 : 0.1;
        benchmark::DoNotOptimize(mask.Draw(area, feather, false, kMaskColumns, kMaskRows).data[0]);
    });
}

void RunBlend(benchmark::State& state, unsigned format, bool masked, double strength) {
    const auto frame = VideoFrame::Allocate(format, kMaskColumns, kMaskRows);
    const auto before = VideoFrame::Allocate(format, kMaskColumns, kMaskRows);
    for (VideoFrame* each : {frame.get(), before.get()})
        for (unsigned plane = 0; plane < each->GetBufferCount(); ++plane) {
            unsigned width = 0, pitch = 0, rows = 0;
            unsigned char* const data = each->GetBuffer(plane, &width, &pitch, &rows);
            std::fill(data, data + size_t{pitch} * rows, each == frame.get() ? 200 : 50);
        }
    aveffect::AreaMask mask;
    const AVFrame& drawn =
        mask.Draw({Area::Shape::Ellipse, 0.2, 0.2, 0.5, 0.5}, 40, false, kMaskColumns, kMaskRows);
    mediabridge::PictureBlend blend;
    TimeAgainstCopy(state, frame->GetTotalSize(), [&] {
        if (masked)
            blend.Mask(*frame, *before, drawn, strength);
        else
            blend.Mix(*frame, *before, strength);
    });
}

} // namespace

void RegisterMaskBenchmarks() {
    for (const auto& [shape, name] :
         {std::pair{Area::Shape::Rectangle, "rectangle"}, {Area::Shape::Ellipse, "ellipse"}})
        for (const int feather : {0, 40})
            benchmark::RegisterBenchmark(
                ("moving " + std::string(name) + ", feather " + std::to_string(feather)).c_str(),
                [shape = shape, feather](benchmark::State& state) { RunArea(state, shape, feather); })
                ->UseManualTime();
    for (const auto& [format, name] :
         {std::pair{unsigned{AVBased::BGRA}, "BGRA"}, {unsigned{AVBased::YUV420P}, "YUV420P"}})
        for (const auto& [masked, strength, how] :
             {std::tuple{false, 0.3, "mix"}, {true, 1.0, "mask"}, {true, 0.3, "mask and mix"}})
            benchmark::RegisterBenchmark(
                (std::string(how) + " of frames, " + name).c_str(),
                [=, format = format, masked = masked, strength = strength](benchmark::State& state) {
                    RunBlend(state, format, masked, strength);
                })
                ->UseManualTime();
}

} // namespace bench
