// Kernels that take samples from elsewhere.
#include <array>
#include <memory>
#include <vector>

#include "bench/kernel_calls.h"
#include "kernels/blend.h"
#include "kernels/lens.h"
#include "kernels/mirage.h"
#include "kernels/mosaic.h"
#include "kernels/pick.h"
#include "kernels/remap.h"
#include "kernels/reverse.h"
#include "kernels/stereo.h"
#include "kernels/transition.h"
#include "kernels/turn.h"
#include "kernels/wall.h"

namespace bench {

namespace {

using namespace AVBased::kernels;
using AVBased::Scratch;
using Calls = std::vector<KernelCall>;

void AddMosaics(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<MosaicKernels>(features);
    for (const unsigned step : {2u, 4u, 6u}) {
        const std::string suffix = " " + std::to_string(step);
        // All of a picture, in whole blocks.
        const auto areaOf = [=](size_t width, size_t height) {
            return MosaicArea{0, 0, width >> step << step, height >> step << step, step};
        };
        calls.push_back({"mosaicRgba32" + suffix, 1, 4, [=](const auto& planes) {
                             kernels.mosaicRgba32(Pixels(planes[0]),
                                                  areaOf(planes[0].width / 4, planes[0].rows));
                         }});
        calls.push_back({"mosaicLuma" + suffix, 1, 1, [=](const auto& planes) {
                             kernels.mosaicLuma(planes[0], areaOf(planes[0].width, planes[0].rows));
                         }});
        for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 1u}})
            calls.push_back(
                {"mosaicChroma" + suffix + " " + std::to_string(10 * h + v), 1, 1,
                 [=, across = h, along = v, scratch = std::make_shared<Scratch>()](const auto& planes) {
                     const Plane8& plane = planes[0];
                     const size_t width = plane.width << across;
                     kernels.mosaicChroma(plane, areaOf(width, plane.rows << along), width, across, along,
                                          scratch->Require(plane.width));
                 }});
    }
}

void AddMirages(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<MirageKernels>(features);
    const auto mirageOf = [](size_t width, size_t rows, unsigned shift) { // enlarged by 1.05
        return Mirage{200000, 100000, 62415, 64, width << shift, rows << shift, shift, shift};
    };
    const auto scratch = std::make_shared<Scratch>();
    for (const bool blendsAlpha : {false, true})
        calls.push_back({blendsAlpha ? "mirageRgba32Mmx" : "mirageRgba32", 2, 4, [=](const auto& planes) {
                             const Plane32 plane = Pixels(planes[0]);
                             (blendsAlpha ? kernels.mirageRgba32Mmx : kernels.mirageRgba32)(
                                 plane, Pixels(planes[1]), mirageOf(plane.width, plane.rows, 0),
                                 scratch->Require(MirageScratchBytes(planes[0].width)));
                         }});
    for (const unsigned shift : {0u, 1u})
        calls.push_back({"mirageComponent " + std::to_string(shift), 2, 1, [=](const auto& planes) {
                             const Plane8& plane = planes[0];
                             kernels.mirageComponent(plane, planes[1],
                                                     mirageOf(plane.width, plane.rows, shift),
                                                     scratch->Require(MirageScratchBytes(plane.width)));
                         }});
}

// Columns of a row that is stretched in its middle and squeezed beside it, in bytes or whole units.
std::vector<uint32_t> StretchedColumns(size_t width, size_t unit) {
    std::vector<uint32_t> columns(width);
    for (size_t x = 0; x < width; ++x)
        columns[x] = static_cast<uint32_t>(
            unit * (x < width / 3 ? x * 3 / 2 : std::min(width / 2 + x / 5, width - 1)));
    return columns;
}

void AddPicks(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<PickKernels>(features);
    const auto& remaps = SelectKernels<RemapKernels>(features);
    const auto scratch = std::make_shared<Scratch>();
    for (const size_t unit : {size_t{1}, size_t{4}}) {
        const std::string suffix = unit == 4 ? "Rgba32" : "Component";
        calls.push_back(
            {"pick" + suffix, 2, unit, [=](const auto& planes) {
                 const auto columns = StretchedColumns(planes[0].width / unit, 1);
                 std::vector<uint32_t> rows(planes[0].rows);
                 for (size_t y = 0; y < rows.size(); ++y)
                     rows[y] = static_cast<uint32_t>(rows.size() - 1 - y);
                 uint8_t* const memory = scratch->Require(ColumnScratchBytes(columns.size()));
                 const Places across{columns.data(), columns.size()}, down{rows.data(), rows.size()};
                 if (unit == 4)
                     kernels.pickRgba32(Pixels(planes[0]), Pixels(planes[1]), across, down, memory);
                 else
                     kernels.pickComponent(planes[0], planes[1], across, down, memory);
             }});
        calls.push_back({"remap" + suffix, 2, unit, [=](const auto& planes) {
                             const auto offsets = StretchedColumns(planes[0].width / unit, unit);
                             const auto remap = unit == 4 ? remaps.remapRgba32 : remaps.remapComponent;
                             for (size_t y = 0; y < planes[0].rows; ++y)
                                 remap(planes[0].Row(y), planes[1].Row(y), offsets.data(), offsets.size());
                         }});
    }
}

void AddTurns(Calls& calls, unsigned features) {
    const auto& reverses = SelectKernels<ReverseKernels>(features);
    calls.push_back(OnPlane("mirrorRgba32", reverses.mirrorRgba32));
    calls.push_back(OnPlane("mirrorComponent", reverses.mirrorComponent));
    calls.push_back(OnPlane("flipComponent", reverses.flipComponent));
    calls.push_back(OnPlane("oppositeRgba32", reverses.oppositeRgba32));
    calls.push_back(OnPlane("oppositeComponent", reverses.oppositeComponent));
    calls.push_back(OnPlane("halfTurnRgba32", reverses.halfTurnRgba32));
    calls.push_back(OnPlane("halfTurnComponent", reverses.halfTurnComponent));
    const auto& turns = SelectKernels<TurnKernels>(features);
    for (const size_t unit : {size_t{1}, size_t{4}})
        calls.push_back({unit == 4 ? "turnRgba32" : "turnComponent", 1, unit,
                         [=, scratch = std::make_shared<Scratch>()](const auto& planes) {
                             const Plane8& plane = planes[0];
                             const size_t width = plane.width / unit, left = width * 3 / 10;
                             const PlaneArea area = {left, 0, width - 2 * left, plane.rows};
                             uint8_t* const memory =
                                 scratch->Require(TurnScratchBytes(width, area.width, unit));
                             if (unit == 4)
                                 turns.turnRgba32(Pixels(plane), area, true, 0xFF000000, memory);
                             else
                                 turns.turnComponent(plane, area, true, 16, memory);
                         }});
}

void AddWallsAndLenses(Calls& calls, unsigned features) {
    const auto& walls = SelectKernels<WallKernels>(features);
    const auto every3rd = [](size_t size) {
        std::vector<uint32_t> places(size / 3);
        for (size_t i = 0; i < places.size(); ++i) places[i] = static_cast<uint32_t>(3 * i);
        return places;
    };
    for (const size_t unit : {size_t{1}, size_t{4}})
        calls.push_back(
            {unit == 4 ? "shrinkRgba32" : "shrinkComponent", 1, unit, [=](const auto& planes) {
                 const auto columns = every3rd(planes[0].width / unit), rows = every3rd(planes[0].rows);
                 const WallTile tile = {{columns.data(), columns.size()}, {rows.data(), rows.size()}, 1, 1};
                 if (unit == 4)
                     walls.shrinkRgba32(Pixels(planes[0]), tile);
                 else
                     walls.shrinkComponent(planes[0], tile);
             }});
    calls.push_back({"repeatRow", 1, 1, [=](const auto& planes) {
                         static constexpr uint32_t kFollowing[] = {1, 0, 2};
                         for (size_t y = 0; y < planes[0].rows; ++y)
                             walls.repeatRow(planes[0].Row(y), 3, {kFollowing, 3}, planes[0].width);
                     }});
    const auto& lenses = SelectKernels<LensKernels>(features);
    // The places of two planes' pixels, as numbers in their stead.
    const auto addRows = [&](const char* name, auto findRow) {
        calls.push_back({name, 2, 4, [=](const auto& planes) {
                             const LensSize size = {static_cast<uint32_t>(planes[0].width / 4),
                                                    static_cast<uint32_t>(planes[0].rows)};
                             for (uint32_t y = 0; y < size.height; ++y)
                                 findRow(size, y, reinterpret_cast<uint32_t*>(planes[0].Row(y)),
                                         reinterpret_cast<uint32_t*>(planes[1].Row(y)));
                         }});
    };
    addRows("tileRow", [=](const LensSize& size, uint32_t y, uint32_t* columns, uint32_t* rows) {
        static constexpr std::array<int32_t, TileLens::kBends> kFlat{};
        lenses.tileRow({size, 16384, 28378, 1536, kFlat.data()}, y, size.width, columns, rows);
    });
    addRows("inversionRow", [=](const LensSize& size, uint32_t y, uint32_t* columns, uint32_t* rows) {
        lenses.inversionRow(size, 74649600, y, size.width, columns, rows);
    });
    const auto around = [](const LensSize& size, uint32_t y) {
        const auto x = static_cast<int32_t>(size.width / 2), middle = static_cast<int32_t>(size.height / 2);
        return RowAround{x, middle, -x, static_cast<int32_t>(y) - middle, size.width};
    };
    addRows("scaledRow", [=](const LensSize& size, uint32_t y, uint32_t* columns, uint32_t* rows) {
        static const std::vector<int32_t> kFactors(4096, 200);
        lenses.scaledRow(around(size, y), kFactors.data(), columns, rows);
    });
    addRows("turnedRow", [=](const LensSize& size, uint32_t y, uint32_t* columns, uint32_t* rows) {
        static const std::vector<float> kSines(4096, 0.6F), kCosines(4096, 0.8F);
        lenses.turnedRow(around(size, y), 1000, kSines.data(), kCosines.data(), columns, rows);
    });
}

void AddStereo(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<StereoKernels>(features);
    const auto ofPixels = [&](const char* name, auto kernel) {
        calls.push_back({name, 3, 4, [=](const auto& planes) {
                             kernel(Pixels(planes[0]), Pixels(planes[1]), Pixels(planes[2]));
                         }});
    };
    const auto ofSamples = [&](const char* name, auto kernel) {
        calls.push_back({name, 3, 1, [=](const auto& planes) { kernel(planes[0], planes[1], planes[2]); }});
    };
    ofPixels("anaglyphRgba32", kernels.anaglyphRgba32);
    ofPixels("sideBySideRgba32", kernels.sideBySideRgba32);
    ofSamples("sideBySideComponent", kernels.sideBySideComponent);
    ofSamples("topAndBottomComponent", kernels.topAndBottomComponent);
    calls.push_back({"anaglyphYuv 4:2:0", 9, 1, [=](const auto& planes) {
                         const auto view = [&](size_t n) {
                             const auto chroma = [&](const Plane8& plane) {
                                 return Plane8{plane.data, plane.width / 2, plane.pitch, plane.rows / 2};
                             };
                             return YuvPlanes{planes[n], chroma(planes[n + 1]), chroma(planes[n + 2])};
                         };
                         kernels.anaglyphYuv(view(0), view(3), view(6));
                     }});
    for (const bool blueToo : {false, true})
        calls.push_back({blueToo ? "shiftRedAndBlueRgb24" : "shiftRedRgb24", 2, 1, [=](const auto& planes) {
                             Plane8 out = planes[0];
                             out.width -= 36;
                             (blueToo ? kernels.shiftRedAndBlueRgb24 : kernels.shiftRedRgb24)(out, planes[1],
                                                                                              36);
                         }});
}

void AddTransitions(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<TransitionKernels>(features);
    calls.push_back({"overlayRuns", 3, 1, [=](const auto& planes) {
                         const size_t width = planes[0].width, third = width / 3, last = width - width / 6;
                         const Run runs[] = {{third, 2 * third, 0}, {last, width, last}};
                         kernels.overlayRuns(planes[0], planes[1], planes[2], runs, 2);
                     }});
    calls.push_back({"overlayStripes", 3, 1, [=](const auto& planes) {
                         kernels.overlayStripes(planes[0], planes[1], planes[2], 0, 384);
                     }});
    for (const double progress : {0.3, 7.0 / 25, 0.5})
        calls.push_back({"crossFadeRgba32 " + std::to_string(progress), 3, 4, [=](const auto& planes) {
                             kernels.crossFadeRgba32(Pixels(planes[0]), Pixels(planes[1]), Pixels(planes[2]),
                                                     progress);
                         }});
    calls.push_back(
        {"mirrorRgba32 with gains", 2, 4, [=](const auto& planes) {
             std::vector<uint32_t> wholes(planes[0].width / 4, 0x10001), fractions(wholes);
             kernels.mirrorRgba32(Pixels(planes[0]), Pixels(planes[1]), {wholes.data(), fractions.data()});
         }});
}

void AddBlends(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<BlendKernels>(features);
    for (const size_t unit : {size_t{1}, size_t{4}})
        calls.push_back({unit == 4 ? "mixBytes of pixels" : "mixBytes", 2, unit,
                         [=](const auto& planes) { kernels.mixBytes(planes[0], planes[1], 10000); }});
    calls.push_back(
        {"maskBytes", 3, 1, [=](const auto& planes) { kernels.maskBytes(planes[0], planes[1], planes[2]); }});
    calls.push_back({"maskRgba32", 2, 4, [=, memory = std::make_shared<Scratch>()](const auto& planes) {
                         const size_t width = planes[0].width / 4, rows = planes[0].rows;
                         kernels.maskRgba32(Pixels(planes[0]), Pixels(planes[1]),
                                            {memory->Require(width * rows), width, width, rows});
                     }});
    for (const auto& [h, v] : {std::pair{1u, 0u}, {1u, 1u}, {2u, 2u}})
        calls.push_back(
            {"shrinkMask " + std::to_string(10 * h + v), 2, 1, [=, across = h, down = v](const auto& planes) {
                 Plane8 to = planes[0];
                 to.width >>= across;
                 to.rows >>= down;
                 kernels.shrinkMask(to, planes[1], across, down);
             }});
}

} // namespace

void AddPlaceCalls(Calls& calls, unsigned features) {
    AddMosaics(calls, features);
    AddMirages(calls, features);
    AddPicks(calls, features);
    AddTurns(calls, features);
    AddWallsAndLenses(calls, features);
    AddStereo(calls, features);
    AddTransitions(calls, features);
    AddBlends(calls, features);
}

} // namespace bench
