// References of the kernels that draw two views.
#include "kernels/stereo.h"
#include "tests/kernels/case_makers.h"
#include "tests/support/stereo.h"

namespace test {

namespace {

using AVBased::kernels::YuvPlanes;

ViewSamples Now(const Plane8& plane) { return {plane.data, plane.width, plane.pitch, plane.rows}; }

// A part of a plane from its first row and column.
Plane8 Part(const Plane8& plane, size_t width, size_t rows) {
    return {plane.data, std::min(width, plane.width), plane.pitch, std::min(rows, plane.rows)};
}

// What is drawn into: a plane of its own, or one of the views.
struct Target {
    const char* name;
    size_t left, right; // among the planes, of which the first is drawn into
};
constexpr Target kTargets[] = {{"", 1, 2}, {" over left", 0, 1}, {" over right", 1, 0}};

/// Views as large as the output, or smaller in both directions.
void AddPairCases(std::vector<KernelCase>& cases, const std::string& name, size_t unit, auto kernel,
                  auto reference) {
    for (const Target& target : kTargets)
        for (const bool smaller : {false, true}) {
            const auto view = [=](const Plane8& plane) {
                return smaller ? Part(plane, plane.width / unit * 2 / 3 * unit, plane.rows / 2) : plane;
            };
            cases.push_back({name + target.name + (smaller ? ", smaller" : ""), 3, unit,
                             [=](const auto& planes) {
                                 kernel(planes[0], view(planes[target.left]), view(planes[target.right]));
                             },
                             [=](const auto& planes) {
                                 reference(planes[0], Now(view(planes[target.left])),
                                           Now(view(planes[target.right])));
                             }});
        }
}

auto DrawInto(const Plane8& plane) {
    return [=](size_t x, size_t y, uint8_t value) { plane.Row(y)[x] = value; };
}

void AddAnaglyphYuvCases(std::vector<KernelCase>& cases, const AVBased::kernels::StereoKernels& kernels) {
    struct Chroma {
        const char* name;
        size_t wider, divisor; // luma size plus the one, divided by the other
    };
    for (const Chroma chroma :
         {Chroma{" 4:2:0", 1, 2}, {" 4:2:0, rounded down", 0, 2}, {" 4:4:4", 0, 1}, {" 4:1:0", 3, 4}})
        for (const Target& target : kTargets) {
            // Three views of three planes, the second of each a chroma plane like the third.
            const auto view = [=](const auto& planes, size_t n) {
                const Plane8& y = planes[3 * n];
                const size_t width = (y.width + chroma.wider) / chroma.divisor;
                const size_t rows = (y.rows + chroma.wider) / chroma.divisor;
                return YuvPlanes{y, Part(planes[3 * n + 1], width, rows),
                                 Part(planes[3 * n + 2], width, rows)};
            };
            cases.push_back(
                {std::string("anaglyphYuv") + chroma.name + target.name, 9, 1,
                 [=](const auto& planes) {
                     const YuvPlanes left = view(planes, target.left), right = view(planes, target.right);
                     if (!left.u.Empty()) kernels.anaglyphYuv(view(planes, 0), left, right);
                 },
                 [=](const auto& planes) {
                     const YuvPlanes out = view(planes, 0);
                     const YuvPlanes left = view(planes, target.left), right = view(planes, target.right);
                     if (left.u.Empty()) return;
                     const ViewSamples leftY = Now(left.y), leftV = Now(left.v);
                     const ViewSamples rightY = Now(right.y), rightU = Now(right.u), rightV = Now(right.v);
                     for (size_t y = 0; y < out.y.rows; ++y)
                         for (size_t x = 0; x < out.y.width; ++x) {
                             const AnaglyphYuv pixel(leftY.At(x, y), leftV.Nearest(x / 2, y / 2),
                                                     rightY.At(x, y), rightU.Nearest(x / 2, y / 2),
                                                     rightV.Nearest(x / 2, y / 2));
                             out.y.Row(y)[x] = pixel.y;
                             if (x % 2 || y % 2 || x / 2 >= out.u.width || y / 2 >= out.u.rows) continue;
                             out.u.Row(y / 2)[x / 2] = pixel.u;
                             out.v.Row(y / 2)[x / 2] = pixel.v;
                         }
                 }});
        }
}

void AddShiftCases(std::vector<KernelCase>& cases, const AVBased::kernels::StereoKernels& kernels) {
    for (const bool blueToo : {false, true})
        for (const size_t shift : {size_t{0}, size_t{3}, size_t{36}}) {
            const auto narrow = [=](const Plane8& plane) {
                return Part(plane, plane.width - std::min(shift, plane.width), plane.rows);
            };
            cases.push_back({(blueToo ? "shiftRedAndBlueRgb24 " : "shiftRedRgb24 ") + std::to_string(shift),
                             2, 1,
                             [=](const auto& planes) {
                                 (blueToo ? kernels.shiftRedAndBlueRgb24
                                          : kernels.shiftRedRgb24)(narrow(planes[0]), planes[1], shift);
                             },
                             [=](const auto& planes) {
                                 const Plane8 out = narrow(planes[0]);
                                 for (size_t y = 0; y < out.rows; ++y)
                                     for (size_t x = 0; x < out.width; ++x) {
                                         const bool moves = x % 3 == 0 || (blueToo && x % 3 == 2);
                                         out.Row(y)[x] = planes[1].Row(y)[moves ? x + shift : x];
                                     }
                             }});
        }
}

} // namespace

void AddStereoCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::StereoKernels>(features);
    const auto onPixels = [](auto kernel) {
        return [=](const Plane8& out, const Plane8& left, const Plane8& right) {
            kernel(Pixels(out), Pixels(left), Pixels(right));
        };
    };
    AddPairCases(cases, "anaglyphRgba32", 4, onPixels(kernels.anaglyphRgba32),
                 [](const Plane8& out, const ViewSamples& left, const ViewSamples& right) {
                     for (size_t y = 0; y < out.rows; ++y)
                         for (size_t x = 0; x < out.width; ++x)
                             if (x % 4 != 3 && left.Has(x, y) && right.Has(x, y))
                                 out.Row(y)[x] = (x % 4 == 2 ? left : right).At(x, y);
                 });
    const auto sideBySide = [](size_t unit) {
        return [=](const Plane8& out, const ViewSamples& left, const ViewSamples& right) {
            SideBySide(out.width, out.rows, unit, left, right, DrawInto(out));
        };
    };
    AddPairCases(cases, "sideBySideRgba32", 4, onPixels(kernels.sideBySideRgba32), sideBySide(4));
    AddPairCases(cases, "sideBySideComponent", 1, kernels.sideBySideComponent, sideBySide(1));
    AddPairCases(cases, "topAndBottomComponent", 1, kernels.topAndBottomComponent,
                 [](const Plane8& out, const ViewSamples& left, const ViewSamples& right) {
                     TopAndBottom(out.width, out.rows, left, right, DrawInto(out));
                 });
    AddAnaglyphYuvCases(cases, kernels);
    AddShiftCases(cases, kernels);
}

} // namespace test
