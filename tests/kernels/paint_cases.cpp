// The kernels of the paint effects.
#include <memory>

#include "AVEffect/support/portrait_mixes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/oil.h"
#include "kernels/stroke.h"
#include "tests/kernels/case_makers.h"
#include "tests/support/painted.h"

namespace test {

namespace {

void AddStrokeCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::StrokeKernels>(features);
    const auto scratch = std::make_shared<AVBased::Scratch>();
    // Contrasts end at 510 and 1020; both parities, limits of bytes, and beyond.
    for (const uint32_t threshold : {32u, 0u, 3u, 101u, 255u, 256u, 508u, 509u, 510u, 1019u, 1020u}) {
        const std::string suffix = " " + std::to_string(threshold);
        cases.push_back({"strokeRgba32" + suffix, 1, 4,
                         [=](const auto& planes) {
                             const size_t bytes = AVBased::kernels::StrokeScratchBytes(planes[0].width / 4);
                             kernels.strokeRgba32(Pixels(planes[0]), threshold, scratch->Require(bytes));
                         },
                         [=](const auto& planes) { StrokedPixels(planes[0], threshold); }});
        cases.push_back({"strokeComponent" + suffix, 1, 1,
                         [=](const auto& planes) { kernels.strokeComponent(planes[0], threshold); },
                         [=](const auto& planes) { StrokedSamples(planes[0], threshold); }});
    }
}

void AddPortraitCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::PortraitKernels>(features);
    const auto mixes = std::make_shared<AVBased::PortraitMixes>();
    // Without a filled border and with one, bands that meet in few of the pictures and in nearly all.
    for (const unsigned band : {40u, 5u, 16u, 200u}) {
        const std::string suffix = " " + std::to_string(band);
        cases.push_back({"portraitRgba32" + suffix, 1, 4,
                         [=](const auto& planes) {
                             const Plane32 plane = Pixels(planes[0]);
                             if (plane.Empty()) return;
                             kernels.portraitRgba32(plane, mixes->Of({band, plane.width, plane.rows, 0, 0},
                                                                     plane.width, plane.rows, 4, 0x3080F0));
                         },
                         [=](const auto& planes) {
                             const uint8_t colour[4] = {0xF0, 0x80, 0x30, 0};
                             for (size_t i = 0; i < 4; ++i)
                                 Portrait({planes[0], 4, i}, planes[0].width / 4, planes[0].rows, band,
                                          colour[i], i == 3);
                         }});
        for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 1u}, {2u, 0u}, {2u, 2u}}) {
            // Luma sizes that are no multiples of the chroma's.
            const auto geometry = [=, hShift = h, vShift = v](const Plane8& plane) {
                return AVBased::PortraitGeometry{band, (plane.width << hShift) - (hShift ? 1 : 0),
                                                 (plane.rows << vShift) - (vShift ? 1 : 0), hShift, vShift};
            };
            cases.push_back({"portraitComponent" + suffix + " " + std::to_string(10 * h + v), 1, 1,
                             [=](const auto& planes) {
                                 const Plane8& plane = planes[0];
                                 if (plane.Empty()) return;
                                 kernels.portraitComponent(
                                     plane, mixes->Of(geometry(plane), plane.width, plane.rows, 1, 77));
                             },
                             [=, hShift = h, vShift = v](const auto& planes) {
                                 if (planes[0].Empty()) return;
                                 const auto g = geometry(planes[0]);
                                 Portrait({planes[0], 1, 0, hShift, vShift}, g.width, g.height, band, 77);
                             }});
        }
    }
}

void AddOilCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::OilKernels>(features);
    const auto scratch = std::make_shared<AVBased::Scratch>();
    // Radius 0, first because it is quick to compute plainly in depth; the usual brush; the largest small one
    // with the most bins; the smallest large ones.
    for (const auto& [r, l] :
         {std::pair<size_t, uint32_t>{0, 10}, {3, 50}, {1, 0}, {7, 255}, {2, 256}, {8, 50}}) {
        const AVBased::kernels::OilBrush brush = {r, l};
        const std::string suffix = " " + std::to_string(r) + " " + std::to_string(l);
        const auto memory = [=](size_t width, size_t rows) {
            return scratch->Require(AVBased::kernels::OilMemory(width, rows, brush).total);
        };
        cases.push_back({"oilRgba32" + suffix, 1, 4,
                         [=](const auto& planes) {
                             const Plane32 plane = Pixels(planes[0]);
                             kernels.oilRgba32(plane, brush, memory(plane.width, plane.rows));
                         },
                         [=](const auto& planes) {
                             Oil({Channel{planes[0], 4, 0}, {planes[0], 4, 1}, {planes[0], 4, 2}}, 1,
                                 brush.radius, brush.levels);
                             for (size_t y = 0; y < planes[0].rows; ++y)
                                 for (size_t x = 3; x < planes[0].width; x += 4) planes[0].Row(y)[x] = 0;
                         }});
        // The chroma planes are larger than they need be.
        for (const auto& [h, v] : {std::pair{1u, 1u}, {2u, 0u}})
            cases.push_back({"oilComponent" + suffix + " " + std::to_string(10 * h + v), 3, 1,
                             [=, hShift = h, vShift = v](const auto& planes) {
                                 kernels.oilComponent(planes[0], planes[1], planes[2], hShift, vShift, brush,
                                                      memory(planes[0].width, planes[0].rows));
                             },
                             [=, hShift = h, vShift = v](const auto& planes) {
                                 Oil({Channel{planes[0]},
                                      {planes[1], 1, 0, hShift, vShift},
                                      {planes[2], 1, 0, hShift, vShift}},
                                     0, brush.radius, brush.levels);
                             }});
    }
}

} // namespace

void AddPaintCases(std::vector<KernelCase>& cases, unsigned features) {
    AddStrokeCases(cases, features);
    AddPortraitCases(cases, features);
    AddOilCases(cases, features);
}

} // namespace test
