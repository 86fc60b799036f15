// References of the kernels that take samples from elsewhere, each written straight from its definition.
#include <memory>

#include "AVEffect/support/scratch.h"
#include "kernels/mirage.h"
#include "kernels/mosaic.h"
#include "kernels/pick.h"
#include "kernels/remap.h"
#include "kernels/reverse.h"
#include "kernels/turn.h"
#include "tests/kernels/case_makers.h"
#include "tests/support/turned.h"

namespace test {

namespace {

using AVBased::kernels::Mirage;
using AVBased::kernels::MosaicArea;

// Some rectangle of a picture, whose right and bottom are whole blocks from the edge.
MosaicArea AreaOf(size_t width, size_t height, unsigned step) {
    const size_t block = size_t{1} << step;
    return {width / 7, height / 5, width / block * block, height / block * block, step};
}

// Calls write(x, y, column and row of the block) for all of the area, rows from the top.
template <class Write>
void ForBlocks(const MosaicArea& area, size_t width, Write write) {
    const size_t block = size_t{1} << area.step;
    for (size_t y = area.top; y < area.bottom; ++y)
        for (size_t start = area.left; start < area.right; start += block)
            for (size_t x = start; x < std::min(start + block, width); ++x)
                write(x, y, start, area.top + (y - area.top) / block * block);
}

void AddMosaicCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::MosaicKernels>(features);
    const auto scratch = std::make_shared<AVBased::Scratch>();
    for (const unsigned step : {1u, 2u, 3u, 4u, 6u, 7u}) {
        const std::string suffix = " " + std::to_string(step);
        cases.push_back({"mosaicRgba32" + suffix, 1, 4,
                         [=](const auto& planes) {
                             const Plane32 plane = Pixels(planes[0]);
                             kernels.mosaicRgba32(plane, AreaOf(plane.width, plane.rows, step));
                         },
                         [=](const auto& planes) {
                             const Plane8& plane = planes[0];
                             ForBlocks(AreaOf(plane.width / 4, plane.rows, step), plane.width / 4,
                                       [&](size_t x, size_t y, size_t column, size_t row) {
                                           std::copy_n(plane.Row(row) + 4 * column, 4, plane.Row(y) + 4 * x);
                                       });
                         }});
        if (step < 2) continue;
        cases.push_back({"mosaicLuma" + suffix, 1, 1,
                         [=](const auto& planes) {
                             kernels.mosaicLuma(planes[0], AreaOf(planes[0].width, planes[0].rows, step));
                         },
                         [=](const auto& planes) {
                             const Plane8& plane = planes[0];
                             ForBlocks(AreaOf(plane.width, plane.rows, step), plane.width,
                                       [&](size_t x, size_t y, size_t column, size_t row) {
                                           plane.Row(y)[x] = plane.Row(row)[column];
                                       });
                         }});
        for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 0u}, {1u, 1u}, {2u, 0u}, {2u, 2u}})
            cases.push_back({"mosaicChroma" + suffix + " " + std::to_string(10 * h + v), 1, 1,
                             [=, hShift = h, vShift = v](const auto& planes) {
                                 // Luma of odd sizes, whose chroma is rounded down.
                                 const size_t width = (planes[0].width << hShift) + hShift;
                                 const size_t height = (planes[0].rows << vShift) + vShift;
                                 kernels.mosaicChroma(planes[0], AreaOf(width, height, step), width, hShift,
                                                      vShift, scratch->Require(planes[0].width));
                             },
                             [=, hShift = h, vShift = v](const auto& planes) {
                                 const Plane8& plane = planes[0];
                                 const size_t width = (plane.width << hShift) + hShift;
                                 const size_t height = (plane.rows << vShift) + vShift;
                                 const MosaicArea area = AreaOf(width, height, step);
                                 ForBlocks(area, width, [&](size_t x, size_t y, size_t column, size_t row) {
                                     if ((x - column) % 4 != 0) return;
                                     if (x >> hShift >= plane.width || y >> vShift >= plane.rows) return;
                                     plane.Row(y >> vShift)[x >> hShift] =
                                         plane.Row(row >> vShift)[column >> hShift];
                                 });
                             }});
    }
}

// The enlarged picture's origin along one axis.
size_t OriginOf(size_t luma, uint32_t offset, uint32_t step, size_t lumaSize) {
    return std::min<size_t>((offset + static_cast<uint32_t>(luma) * step) >> 16, lumaSize - 1);
}

// Both passes as they are defined, luma sample by luma sample, the second one on what the first has left.
void MirageReference(const Plane8& plane, const Plane8& copy, size_t unitBytes, const Mirage& mirage,
                     bool blendAlpha) {
    const size_t width = plane.width / unitBytes;
    const unsigned h = mirage.horizontalShift, v = mirage.verticalShift;
    const auto forLuma = [&](auto visit) {
        for (size_t y = 0; y < mirage.height; ++y)
            for (size_t x = 0; x < mirage.width; ++x)
                if (x >> h < width && y >> v < plane.rows)
                    for (size_t i = 0; i < unitBytes; ++i) visit(x, y, i);
    };
    forLuma([&](size_t x, size_t y, size_t i) {
        const size_t fromX = std::min(OriginOf(x, mirage.offsetX, mirage.step, mirage.width) >> h, width - 1);
        const size_t fromY =
            std::min(OriginOf(y, mirage.offsetY, mirage.step, mirage.height) >> v, plane.rows - 1);
        plane.Row(y >> v)[(x >> h) * unitBytes + i] = copy.Row(fromY)[fromX * unitBytes + i];
    });
    forLuma([&](size_t x, size_t y, size_t i) {
        if (i == 3 && !blendAlpha) return;
        const size_t at = (x >> h) * unitBytes + i;
        uint8_t& c = plane.Row(y >> v)[at];
        c = static_cast<uint8_t>((copy.Row(y >> v)[at] * (256 - mirage.weight) + c * mirage.weight) / 256);
    });
}

// The second plane is made a copy of the first.
PlaneFunction WithCopy(const std::function<void(const Plane8& plane, const Plane8& copy)>& function) {
    return [=](const auto& planes) {
        for (size_t y = 0; y < planes[0].rows; ++y)
            std::copy_n(planes[0].Row(y), planes[0].width, planes[1].Row(y));
        function(planes[0], planes[1]);
    };
}

void AddMirageCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::MirageKernels>(features);
    const auto scratch = std::make_shared<AVBased::Scratch>();
    const auto memory = [=](const Plane8& plane) {
        return scratch->Require(AVBased::kernels::MirageScratchBytes(plane.width));
    };
    struct Zoom {
        uint32_t offset, step;
    };
    // Enlarged by 1.05 and 3, as it is, from far outside, and made smaller.
    for (const Zoom zoom :
         {Zoom{200000, 62415}, {1 << 20, 21845}, {0, 65536}, {4294000000u, 62415}, {0, 150000}}) {
        const auto mirageOf = [=](size_t width, size_t rows, unsigned h, unsigned v, uint32_t weight) {
            return Mirage{zoom.offset,
                          zoom.offset / 2,
                          zoom.step,
                          weight,
                          (width << h) + (h ? 1 : 0),
                          (rows << v) - (v ? 1 : 0),
                          h,
                          v};
        };
        const std::string suffix = " " + std::to_string(zoom.step) + " from " + std::to_string(zoom.offset);
        for (const bool blendAlpha : {false, true}) {
            const auto kernel = blendAlpha ? kernels.mirageRgba32Mmx : kernels.mirageRgba32;
            cases.push_back({(blendAlpha ? "mirageRgba32Mmx" : "mirageRgba32") + suffix, 2, 4,
                             WithCopy([=](const Plane8& plane, const Plane8& copy) {
                                 kernel(Pixels(plane), Pixels(copy),
                                        mirageOf(plane.width / 4, plane.rows, 0, 0, 64), memory(plane));
                             }),
                             WithCopy([=](const Plane8& plane, const Plane8& copy) {
                                 MirageReference(plane, copy, 4,
                                                 mirageOf(plane.width / 4, plane.rows, 0, 0, 64), blendAlpha);
                             })});
        }
        for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 0u}, {1u, 1u}, {2u, 2u}})
            cases.push_back(
                {"mirageComponent" + suffix + " " + std::to_string(10 * h + v), 2, 1,
                 WithCopy([=, hShift = h, vShift = v](const Plane8& plane, const Plane8& copy) {
                     kernels.mirageComponent(
                         plane, copy, mirageOf(plane.width, plane.rows, hShift, vShift, 179), memory(plane));
                 }),
                 WithCopy([=, hShift = h, vShift = v](const Plane8& plane, const Plane8& copy) {
                     MirageReference(plane, copy, 1, mirageOf(plane.width, plane.rows, hShift, vShift, 179),
                                     true);
                 })});
    }
}

// Columns of a row that is stretched in its middle and squeezed beside it.
std::vector<uint32_t> StretchedColumns(size_t width) {
    std::vector<uint32_t> columns(width);
    for (size_t x = 0; x < width; ++x)
        columns[x] =
            static_cast<uint32_t>(x < width / 3 ? x * 3 / 2 : std::min(width / 2 + x / 5, width - 1));
    return columns;
}

// Picks, in place of the first plane, from the second, rows upside down.
void PickReference(const Plane8& plane, const Plane8& copy, size_t unitBytes) {
    const auto columns = StretchedColumns(plane.width / unitBytes);
    for (size_t y = 0; y < plane.rows; ++y)
        for (size_t x = 0; x < columns.size(); ++x)
            std::copy_n(copy.Row(plane.rows - 1 - y) + columns[x] * unitBytes, unitBytes,
                        plane.Row(y) + x * unitBytes);
}

void AddPickCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::PickKernels>(features);
    const auto& remaps = AVBased::kernels::SelectKernels<AVBased::kernels::RemapKernels>(features);
    for (const size_t unit : {size_t{1}, size_t{4}}) {
        const std::string suffix = unit == 4 ? "Rgba32" : "Component";
        cases.push_back(
            {"pick" + suffix, 2, unit,
             [=](const auto& planes) {
                 const auto columns = StretchedColumns(planes[0].width / unit);
                 std::vector<uint32_t> rows(planes[0].rows);
                 for (size_t y = 0; y < rows.size(); ++y)
                     rows[y] = static_cast<uint32_t>(rows.size() - 1 - y);
                 AVBased::Scratch scratch;
                 uint8_t* memory = scratch.Require(AVBased::kernels::ColumnScratchBytes(columns.size()));
                 const AVBased::kernels::Places across{columns.data(), columns.size()},
                     down{rows.data(), rows.size()};
                 if (unit == 4)
                     kernels.pickRgba32(Pixels(planes[0]), Pixels(planes[1]), across, down, memory);
                 else
                     kernels.pickComponent(planes[0], planes[1], across, down, memory);
             },
             [=](const auto& planes) { PickReference(planes[0], planes[1], unit); }});
        cases.push_back({"remap" + suffix, 2, unit,
                         [=](const auto& planes) {
                             auto offsets = StretchedColumns(planes[0].width / unit);
                             for (uint32_t& offset : offsets) offset *= static_cast<uint32_t>(unit);
                             const auto remap = unit == 4 ? remaps.remapRgba32 : remaps.remapComponent;
                             for (size_t y = 0; y < planes[0].rows; ++y)
                                 remap(planes[0].Row(y), planes[1].Row(planes[1].rows - 1 - y),
                                       offsets.data(), offsets.size());
                         },
                         [=](const auto& planes) { PickReference(planes[0], planes[1], unit); }});
    }
}

// Exchanges what stands equally far from the middle: of a row's units, of rows, or of both.
PlaneFunction Exchanged(size_t unit, bool columns, bool rows) {
    return [=](const auto& planes) {
        const Plane8& plane = planes[0];
        const size_t width = plane.width / unit;
        const size_t halfWidth = columns ? width / 2 : width, halfRows = rows ? plane.rows / 2 : plane.rows;
        const auto swap = [&](size_t x, size_t y, size_t otherX, size_t otherY) {
            std::swap_ranges(plane.Row(y) + x * unit, plane.Row(y) + (x + 1) * unit,
                             plane.Row(otherY) + otherX * unit);
        };
        for (size_t y = 0; y < halfRows; ++y)
            for (size_t x = 0; x < halfWidth; ++x) {
                const size_t otherX = columns ? width - 1 - x : x, otherY = rows ? plane.rows - 1 - y : y;
                swap(x, y, otherX, otherY);
                if (columns && rows) swap(otherX, y, x, otherY);
            }
    };
}

void AddReverseCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::ReverseKernels>(features);
    const auto add = [&](const char* name, size_t unit, auto kernel, const PlaneFunction& reference) {
        cases.push_back({name, 1, unit,
                         [=](const auto& planes) {
                             if constexpr (std::is_invocable_v<decltype(kernel), Plane32>)
                                 kernel(Pixels(planes[0]));
                             else
                                 kernel(planes[0]);
                         },
                         reference});
    };
    add("mirrorRgba32", 4, kernels.mirrorRgba32, Exchanged(4, true, false));
    add("mirrorComponent", 1, kernels.mirrorComponent, Exchanged(1, true, false));
    add("flipComponent", 1, kernels.flipComponent, Exchanged(1, false, true));
    add("oppositeRgba32", 4, kernels.oppositeRgba32, Exchanged(4, true, true));
    add("oppositeComponent", 1, kernels.oppositeComponent, Exchanged(1, true, true));
    const auto halfTurned = [](const auto& planes) { // the rows turned, then every row
        Exchanged(1, false, true)(planes);
        Exchanged(1, true, false)(planes);
    };
    const auto halfTurnedPixels = [](const auto& planes) {
        Exchanged(1, false, true)(planes);
        Exchanged(4, true, false)(planes);
    };
    add("halfTurnComponent", 1, kernels.halfTurnComponent, halfTurned);
    add("halfTurnRgba32", 4, kernels.halfTurnRgba32, halfTurnedPixels);
}

void AddTurnCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::TurnKernels>(features);
    const auto scratch = std::make_shared<AVBased::Scratch>();
    struct Part { // of the plane that the area leaves out on either side, in tenths
        size_t left, top, right, bottom;
    };
    for (const Part part : {Part{3, 0, 3, 0}, {0, 4, 0, 5}, {1, 2, 8, 0}, {0, 0, 0, 0}})
        for (const bool clockwise : {true, false})
            for (const size_t unit : {1u, 4u}) {
                const auto areaOf = [=](const Plane8& plane) {
                    const size_t width = plane.width / unit, left = width * part.left / 10;
                    const size_t top = plane.rows * part.top / 10;
                    return AVBased::kernels::PlaneArea{left, top, width - left - width * part.right / 10,
                                                       plane.rows - top - plane.rows * part.bottom / 10};
                };
                const std::string name = unit == 4 ? "turnRgba32" : "turnComponent";
                cases.push_back(
                    {name + (clockwise ? " clockwise " : " anticlockwise ") + std::to_string(part.left), 1,
                     unit,
                     [=](const auto& planes) {
                         const Plane8& plane = planes[0];
                         if (plane.Empty()) return;
                         const auto area = areaOf(plane);
                         uint8_t* memory = scratch->Require(
                             AVBased::kernels::TurnScratchBytes(plane.width / unit, area.width, unit));
                         if (unit == 4)
                             kernels.turnRgba32(Pixels(plane), area, clockwise, 0x04030201, memory);
                         else
                             kernels.turnComponent(plane, area, clockwise, 1, memory);
                     },
                     [=](const auto& planes) {
                         if (!planes[0].Empty())
                             Turned(planes[0], unit, areaOf(planes[0]), clockwise, 0x04030201);
                     }});
            }
}

} // namespace

void AddPositionCases(std::vector<KernelCase>& cases, unsigned features) {
    AddMosaicCases(cases, features);
    AddMirageCases(cases, features);
    AddPickCases(cases, features);
    AddReverseCases(cases, features);
    AddTurnCases(cases, features);
}

} // namespace test
