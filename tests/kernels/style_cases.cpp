// References of the kernels of posters, walls and lenses, each written straight from its definition.
#include <array>
#include <cstring>

#include "kernels/lens.h"
#include "kernels/pop.h"
#include "kernels/wall.h"
#include "tests/kernels/case_makers.h"

namespace test {

namespace {

using AVBased::kernels::PlanarPop;

void AddPopCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::PopKernels>(features);
    for (const int threshold : {0, 127, 254, 255})
        cases.push_back(OnPixels(
            "popRgba32 " + std::to_string(threshold), kernels.popRgba32,
            [=](uint8_t* p) {
                const uint8_t bright = p[1] > threshold ? 1 : 0;
                for (int i = 0; i < 3; ++i) p[i] = static_cast<uint8_t>((30 + 10 * i) * bright);
            },
            static_cast<uint8_t>(threshold), 0x7F32281Eu));
    for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 0u}, {1u, 1u}, {2u, 0u}, {2u, 2u}}) {
        const PlanarPop pop = {100, 1, 2, 3, h, v};
        cases.push_back({"popComponent " + std::to_string(10 * h + v), 3, 1,
                         [=](const auto& planes) {
                             // Chroma planes as large as the luma: what lies beyond its share stays.
                             kernels.popComponent(planes[0], planes[1], planes[2], pop);
                         },
                         [=](const auto& planes) {
                             for (size_t y = 0; y < planes[0].rows; ++y)
                                 for (size_t x = 0; x < planes[0].width; ++x) {
                                     uint8_t& luma = planes[0].Row(y)[x];
                                     const bool bright = luma > pop.threshold;
                                     luma = bright ? 1 : 16;
                                     planes[1].Row(y >> pop.verticalShift)[x >> pop.horizontalShift] =
                                         bright ? 2 : 128;
                                     planes[2].Row(y >> pop.verticalShift)[x >> pop.horizontalShift] =
                                         bright ? 3 : 128;
                                 }
                         }});
    }
}

// Places of a tile of some size, in 256ths of a step.
std::vector<uint32_t> TileOf(size_t size, size_t step) {
    std::vector<uint32_t> places(size * 256 / step);
    for (size_t i = 0; i < places.size(); ++i) places[i] = static_cast<uint32_t>(i * step / 256);
    return places;
}

void AddWallCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::WallKernels>(features);
    struct Steps {
        size_t across, down;
        unsigned times, lastTimes;
    };
    for (const Steps& s : {Steps{768, 768, 1, 1}, {300, 256, 1, 1}, {400, 256, 3, 2}})
        for (const size_t unit : {size_t{1}, size_t{4}})
            cases.push_back(
                {(unit == 4 ? "shrinkRgba32 " : "shrinkComponent ") + std::to_string(s.across), 1, unit,
                 [=](const auto& planes) {
                     const Plane8& plane = planes[0];
                     const auto columns = TileOf(plane.width / unit, s.across),
                                rows = TileOf(plane.rows, s.down);
                     const AVBased::kernels::WallTile tile = {
                         {columns.data(), columns.size()}, {rows.data(), rows.size()}, s.times, s.lastTimes};
                     if (unit == 4)
                         kernels.shrinkRgba32(Pixels(plane), tile);
                     else
                         kernels.shrinkComponent(plane, tile);
                 },
                 [=](const auto& planes) {
                     const Plane8& plane = planes[0];
                     const auto columns = TileOf(plane.width / unit, s.across),
                                rows = TileOf(plane.rows, s.down);
                     for (size_t y = 0; y < rows.size(); ++y) {
                         const unsigned times = rows[y] != y           ? 1
                                                : y + 1 == rows.size() ? s.lastTimes
                                                                       : s.times;
                         for (unsigned i = 0; i < times; ++i)
                             for (size_t x = 0; x < columns.size(); ++x)
                                 std::copy_n(plane.Row(rows[y]) + columns[x] * unit, unit,
                                             plane.Row(y) + x * unit);
                     }
                 }});
    static constexpr uint32_t kFollowing[] = {1, 0, 2};
    cases.push_back({"repeatRow", 1, 1,
                     [=](const auto& planes) {
                         for (size_t y = 0; planes[0].width >= 3 && y < planes[0].rows; ++y)
                             kernels.repeatRow(planes[0].Row(y), 3, {kFollowing, 3}, planes[0].width);
                     },
                     [](const auto& planes) {
                         for (size_t y = 0; y < planes[0].rows; ++y)
                             for (size_t x = 3; x < planes[0].width; ++x)
                                 planes[0].Row(y)[x] = planes[0].Row(y)[x < 6 ? kFollowing[x - 3] : x - 6];
                     }});
}

// Where the two planes' pixels come from, as numbers in their place; the effects' tests try the formulas.
template <class Kernel, class Reference>
KernelCase Places(const char* name, Kernel kernel, Reference reference) {
    return {name, 2, 4,
            [=](const auto& planes) {
                const size_t width = planes[0].width / 4;
                const AVBased::kernels::LensSize size = {static_cast<uint32_t>(width),
                                                         static_cast<uint32_t>(planes[0].rows)};
                std::vector<uint32_t> places(2 * width);
                for (uint32_t y = 0; width > 0 && y < size.height; ++y) {
                    kernel(size, y, &places[0], &places[width]);
                    for (size_t i = 0; i < 2; ++i)
                        std::memcpy(planes[i].Row(y), &places[i * width], 4 * width);
                }
            },
            [=](const auto& planes) {
                for (size_t i = 0; i < 2; ++i)
                    for (uint32_t y = 0; y < planes[0].rows; ++y)
                        for (uint32_t x = 0; x < planes[0].width / 4; ++x) {
                            const size_t size = i == 0 ? planes[0].width / 4 : planes[0].rows;
                            const uint32_t place = reference(i == 0 ? x : y, static_cast<uint32_t>(size));
                            std::memcpy(planes[i].Row(y) + 4 * x, &place, 4);
                        }
            }};
}

constexpr std::array<int32_t, AVBased::kernels::TileLens::kBends> kFlat{};

void AddLensCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::LensKernels>(features);
    cases.push_back(Places(
        "tileRow",
        [=](auto size, uint32_t y, uint32_t* columns, uint32_t* rows) {
            kernels.tileRow({size, 0, 32768, 1536, kFlat.data()}, y, columns, rows);
        },
        [](uint32_t place, uint32_t) { return place; }));
    cases.push_back(Places(
        "inversionRow",
        [=](auto size, uint32_t y, uint32_t* columns, uint32_t* rows) {
            kernels.inversionRow(size, 0, y, columns, rows);
        },
        [](uint32_t, uint32_t size) { return size / 2; }));
}

} // namespace

void AddStyleCases(std::vector<KernelCase>& cases, unsigned features) {
    AddPopCases(cases, features);
    AddWallCases(cases, features);
    AddLensCases(cases, features);
}

} // namespace test
