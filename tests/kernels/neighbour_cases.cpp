// Kernels whose results hang on a sample's neighbours.
#include "tests/support/neighbours.h"

#include <memory>

#include "AVEffect/support/scratch.h"
#include "kernels/morphology.h"
#include "kernels/relief.h"
#include "tests/kernels/case_makers.h"

namespace test {

namespace {

// kernel(plane, scratch) on samples or pixels, and reference(plane, bytes from one to the next).
template <class Plane, class Kernel, class Reference>
KernelCase OnNeighbours(std::string name, Kernel kernel, size_t scratchBytes(size_t), Reference reference) {
    constexpr size_t kUnit = std::is_same_v<Plane, Plane32> ? 4 : 1;
    const auto scratch = std::make_shared<AVBased::Scratch>();
    return {std::move(name), 1, kUnit,
            [=](const auto& planes) {
                uint8_t* memory = scratch->Require(scratchBytes(planes[0].width));
                if constexpr (kUnit == 4)
                    kernel(Pixels(planes[0]), memory);
                else
                    kernel(planes[0], memory);
            },
            [=](const auto& planes) { reference(planes[0], kUnit); }};
}

} // namespace

void AddNeighbourCases(std::vector<KernelCase>& cases, unsigned features) {
    using namespace AVBased::kernels;
    const auto addExtreme = [&]<class Plane>(const char* name, void (*kernel)(Plane, uint8_t*) noexcept,
                                             auto reference) {
        cases.push_back(OnNeighbours<Plane>(name, kernel, MorphologyScratchBytes, reference));
    };
    const MorphologyKernels& morphology = SelectKernels<MorphologyKernels>(features);
    addExtreme("dilateComponent", morphology.dilateComponent, TakeExtreme<true>);
    addExtreme("dilateRgba32", morphology.dilateRgba32, TakeExtreme<true>);
    addExtreme("erodeComponent", morphology.erodeComponent, TakeExtreme<false>);
    addExtreme("erodeRgba32", morphology.erodeRgba32, TakeExtreme<false>);
    const ReliefKernels& relief = SelectKernels<ReliefKernels>(features);
    // Of no direction: all different, the ends of the range, and the largest sums.
    for (const ReliefWeights& weights : {ReliefWeights{22, -164, -255, 196, 256, -197, 255, 163, -21},
                                         {-256, 256, -1, 1, 256, 0, -128, 127, 255},
                                         {-255, -256, -256, -256, 256, -256, -256, -256, -256},
                                         {256, 256, 256, 256, 256, 256, 256, 256, 256}}) {
        const auto add = [&]<class Plane>(const char* name,
                                          void (*kernel)(Plane, const ReliefWeights&, uint8_t*) noexcept) {
            cases.push_back(OnNeighbours<Plane>(
                name + std::to_string(weights.of[0]),
                [=](Plane plane, uint8_t* scratch) { kernel(plane, weights, scratch); }, ReliefScratchBytes,
                [=](Plane8 plane, size_t step) { Relief(plane, step, weights.of); }));
        };
        add("reliefComponent ", relief.reliefComponent);
        add("reliefRgba32 ", relief.reliefRgba32);
    }
}

} // namespace test
