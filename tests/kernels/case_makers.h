#pragma once
/// What the lists of kernel cases share.
#include <algorithm>
#include <cmath>

#include "tests/kernels/harness.h"

namespace test {

inline uint8_t Clamp(long value) { return static_cast<uint8_t>(std::clamp(value, 0L, 255L)); }
inline long FloorDivide256(long value) {
    return static_cast<long>(std::floor(static_cast<double>(value) / 256));
}

/// A plane of bytes as the pixels that it holds.
inline Plane32 Pixels(const Plane8& plane) { return {plane.data, plane.width / 4, plane.pitch, plane.rows}; }

/// A kernel on one plane of pixels; the reference changes one pixel.
template <class Kernel, class Reference, class... Parameters>
KernelCase OnPixels(std::string name, Kernel kernel, Reference reference, Parameters... parameters) {
    return {std::move(name), 1, 4, [=](const auto& planes) { kernel(Pixels(planes[0]), parameters...); },
            [=](const auto& planes) {
                for (size_t y = 0; y < planes[0].rows; ++y)
                    for (size_t x = 0; x < planes[0].width; x += 4) reference(planes[0].Row(y) + x);
            }};
}

/// A kernel on one plane of samples; the reference gives a sample's new value.
template <class Kernel, class Reference, class... Parameters>
KernelCase OnSamples(std::string name, Kernel kernel, Reference reference, Parameters... parameters) {
    return {std::move(name), 1, 1, [=](const auto& planes) { kernel(planes[0], parameters...); },
            [=](const auto& planes) {
                for (size_t y = 0; y < planes[0].rows; ++y)
                    for (size_t x = 0; x < planes[0].width; ++x)
                        planes[0].Row(y)[x] = reference(planes[0].Row(y)[x]);
            }};
}

/// Kernels that weigh each sample: fades, keys, noise, emboss.
void AddWeightCases(std::vector<KernelCase>& cases, unsigned features);

/// Kernels that take samples from elsewhere.
void AddPositionCases(std::vector<KernelCase>& cases, unsigned features);

/// Kernels that combine samples with their neighbours: morphology and relief.
void AddNeighbourCases(std::vector<KernelCase>& cases, unsigned features);
/// Kernels of the transitions, and the cross-fade's definition.
void AddTransitionCases(std::vector<KernelCase>& cases, unsigned features);
uint8_t CrossFaded(int a, int b, double progress);
/// Kernels of posters, walls and lenses.
void AddStyleCases(std::vector<KernelCase>& cases, unsigned features);
/// Edge light, spotlight and radiate.
void AddLightCases(std::vector<KernelCase>& cases, unsigned features);
/// Kernels of the paint effects.
void AddPaintCases(std::vector<KernelCase>& cases, unsigned features);
/// Kernels that draw two views.
void AddStereoCases(std::vector<KernelCase>& cases, unsigned features);
/// Kernels on sound.
void AddSoundCases(std::vector<KernelCase>& cases, unsigned features);

} // namespace test
