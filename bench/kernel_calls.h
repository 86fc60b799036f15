#pragma once
/// The kernels to time, each with parameters as effects give them.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "AVEffect/support/scratch.h"
#include "kernels/planes.h"

namespace bench {

using AVBased::kernels::Plane32;
using AVBased::kernels::Plane8;

/// One kernel, with its parameters bound. It works in place on planes of one size; those of packed kernels
/// are whole pixels wide.
struct KernelCall {
    std::string name;
    size_t planes;    ///< how many it takes
    size_t unitBytes; ///< of a sample or pixel
    std::function<void(const std::vector<Plane8>& planes)> run;
};

/// The kernels at the level that a feature word selects; those of circles are timed with the magnifier. A new
/// kernel adds a line to one of the lists.
std::vector<KernelCall> KernelCalls(unsigned features);

/// Colours, fades, keys, noise, filters, sound: samples stay where they are.
void AddSampleCalls(std::vector<KernelCall>& calls, unsigned features);
/// Samples that come from elsewhere, and pictures that are put together.
void AddPlaceCalls(std::vector<KernelCall>& calls, unsigned features);
/// Light and paint.
void AddDrawingCalls(std::vector<KernelCall>& calls, unsigned features);

/// A plane of bytes as the pixels that it holds.
inline Plane32 Pixels(const Plane8& plane) { return {plane.data, plane.width / 4, plane.pitch, plane.rows}; }

/// A kernel on one plane, of pixels or of samples, and further parameters.
template <class Plane, class Result, class... Declared, class... Parameters>
KernelCall OnPlane(std::string name, Result (*kernel)(Plane, Declared...) noexcept,
                   Parameters... parameters) {
    constexpr bool kPacked = std::is_same_v<Plane, Plane32>;
    return {std::move(name), 1, kPacked ? size_t{4} : size_t{1}, [=](const auto& planes) {
                if constexpr (kPacked)
                    kernel(Pixels(planes[0]), parameters...);
                else
                    kernel(planes[0], parameters...);
            }};
}

/// The same for one that wants scratch, as its last parameter or, with a flag behind, its last but one.
template <class Plane, class Result, class... Declared, class... Parameters>
KernelCall WithScratch(std::string name, size_t scratchBytes(size_t widthBytes),
                       Result (*kernel)(Plane, Declared...) noexcept, Parameters... parameters) {
    constexpr bool kPacked = std::is_same_v<Plane, Plane32>;
    return {std::move(name), 1, kPacked ? size_t{4} : size_t{1},
            [=, scratch = std::make_shared<AVBased::Scratch>()](const auto& planes) {
                uint8_t* const memory = scratch->Require(scratchBytes(planes[0].width));
                const auto call = [&](auto plane) {
                    if constexpr (std::is_invocable_v<decltype(kernel), Plane, Parameters..., uint8_t*>)
                        kernel(plane, parameters..., memory);
                    else
                        kernel(plane, parameters..., memory, false);
                };
                if constexpr (kPacked)
                    call(Pixels(planes[0]));
                else
                    call(planes[0]);
            }};
}

} // namespace bench
