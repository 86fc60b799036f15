// References of the kernels that weigh each sample, each written straight from its formula.
#include <memory>

#include "AVEffect/support/scratch.h"
#include "kernels/emboss.h"
#include "kernels/fade.h"
#include "kernels/key.h"
#include "kernels/noise.h"
#include "tests/kernels/case_makers.h"

namespace test {

namespace {

// Calls change(sample, position of the byte in its pixel) for all bytes of pixels but alpha, or for samples.
template <class Change>
PlaneFunction ForColours(size_t unitBytes, Change change) {
    return [=](const auto& planes) {
        for (size_t y = 0; y < planes[0].rows; ++y)
            for (size_t x = 0; x < planes[0].width; ++x)
                if (unitBytes == 1 || x % 4 != 3) change(planes, x, y);
    };
}

void AddFadeCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::FadeKernels>(features);
    for (const uint32_t level : {0u, 1u, 77u, 255u, 256u, 257u, 300u, 1000u, 65280u, 65536u, 4294967295u}) {
        const std::string suffix = " " + std::to_string(level);
        const auto scale = [=](uint8_t x) { return Clamp(FloorDivide256(x * long{level})); };
        const auto mix = [=](uint8_t c, uint32_t k) {
            return Clamp(FloorDivide256(c * long{level} + k * (256 - long{level})));
        };
        cases.push_back(OnPixels(
            "scaleAlphaRgba32" + suffix, kernels.scaleAlphaRgba32, [=](uint8_t* p) { p[3] = scale(p[3]); },
            level));
        cases.push_back(OnSamples("scaleComponent" + suffix, kernels.scaleComponent, scale, level));
        for (const uint32_t colour : {0u, 0x80FF01u, 0xFFFFFFFFu})
            cases.push_back(OnPixels(
                "mixRgba32" + suffix + " " + std::to_string(colour), kernels.mixRgba32,
                [=](uint8_t* p) {
                    for (size_t i = 0; i < 3; ++i) p[i] = mix(p[i], (colour >> (8 * i)) & 255);
                },
                level, colour));
        for (const uint8_t value : {uint8_t{0}, uint8_t{129}, uint8_t{255}})
            cases.push_back(OnSamples(
                "mixComponent" + suffix + " " + std::to_string(value), kernels.mixComponent,
                [=](uint8_t x) { return mix(x, value); }, level, value));
    }
}

// An emboss kernel; relief gives a sample's new value from the sample, the one above and the column.
template <class Plane, class Relief>
void AddEmboss(std::vector<KernelCase>& cases, const std::string& name,
               void (*kernel)(Plane, int32_t) noexcept, int32_t level, Relief relief) {
    constexpr size_t kUnit = std::is_same_v<Plane, Plane32> ? 4 : 1;
    cases.push_back({name + " " + std::to_string(level), 1, kUnit,
                     [=](const auto& planes) {
                         if constexpr (kUnit == 4)
                             kernel(Pixels(planes[0]), level);
                         else
                             kernel(planes[0], level);
                     },
                     [=](const auto& planes) {
                         const Plane8& plane = planes[0];
                         for (size_t y = plane.rows; y-- > 1;)
                             for (size_t x = 0; x < plane.width; ++x)
                                 if (kUnit == 1 || x % 4 != 3)
                                     plane.Row(y)[x] = relief(plane, plane.Row(y)[x], plane.Row(y - 1)[x], x);
                     }});
}

void AddEmbossCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::EmbossKernels>(features);
    for (const int32_t level : {0, 1, -1, 2, 127, -127, 128, -128, 129, 255, -256, 257, 1000, 65536, 16777216,
                                16777217, -2147483647 - 1}) {
        const auto limited = [=](long product) {
            return static_cast<uint8_t>(std::clamp(product, -128L, 127L) + 128);
        };
        const auto plain = [=](const Plane8&, int c, int above, size_t) {
            return limited((c - above) * long{level});
        };
        const auto whitening = [=](const Plane8&, int c, int above, size_t) {
            const auto value = static_cast<uint32_t>((c - above) * long{level} + 128);
            return static_cast<uint8_t>(value < 255 ? value : 255);
        };
        const auto wrapping = [=](const Plane8&, int c, int above, size_t) {
            const int t = static_cast<int16_t>(c * long{level} + 128);
            const int u = static_cast<int16_t>(above * long{level});
            return Clamp(std::clamp(t - u, -32768, 32767));
        };
        const auto wrappingWithTail = [=](const Plane8& plane, int c, int above, size_t x) {
            return x < plane.width / 4 * 4 ? wrapping(plane, c, above, x) : limited(2 * (c - above));
        };
        AddEmboss(cases, "embossRgba32", kernels.embossRgba32, level, plain);
        AddEmboss(cases, "embossComponent", kernels.embossComponent, level, whitening);
        AddEmboss(cases, "embossRgba32Mmx", kernels.embossRgba32Mmx, level, wrapping);
        AddEmboss(cases, "embossComponentMmx", kernels.embossComponentMmx, level, wrappingWithTail);
    }
}

// The second plane's bytes are the noise, which has no padding.
std::vector<uint8_t> WithoutPadding(const Plane8& plane) {
    std::vector<uint8_t> bytes;
    for (size_t y = 0; y < plane.rows; ++y)
        bytes.insert(bytes.end(), plane.Row(y), plane.Row(y) + plane.width);
    return bytes;
}

void AddNoiseCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::NoiseKernels>(features);
    for (const uint32_t gain : {40u, 200u, 280u, 660u}) {
        const auto add = [=](const auto& planes, size_t x, size_t y) {
            uint8_t& c = planes[0].Row(y)[x];
            c = Clamp(c * long{gain} / 256 + planes[1].Row(y)[x]);
        };
        const std::string suffix = " " + std::to_string(gain);
        cases.push_back({"addNoiseRgba32" + suffix, 2, 4,
                         [=](const auto& planes) {
                             const auto noise = WithoutPadding(planes[1]);
                             kernels.addNoiseRgba32(Pixels(planes[0]), noise.data(), gain);
                         },
                         ForColours(4, add)});
        cases.push_back({"addNoiseComponent" + suffix, 2, 1,
                         [=](const auto& planes) {
                             const auto noise = WithoutPadding(planes[1]);
                             kernels.addNoiseComponent(planes[0], noise.data(), gain);
                         },
                         ForColours(1, add)});
    }
}

void AddKeyCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::KeyKernels>(features);
    for (const auto& [low, high] : {std::pair{0u, 0xFFFFFFu}, {0x404040u, 0xC0C0C0u}, {0u, 0u}, {2u, 1u}})
        cases.push_back(OnPixels(
            "keyRgba32 " + std::to_string(low) + " " + std::to_string(high), kernels.keyRgba32,
            [=, first = low, last = high](uint8_t* p) {
                const uint32_t colour = p[0] + p[1] * 0x100u + p[2] * 0x10000u;
                if (colour >= first && colour <= last) p[3] = 0;
            },
            low, high));
    const auto scratch = std::make_shared<AVBased::Scratch>();
    for (const unsigned shift : {0u, 1u}) {
        const AVBased::kernels::PlanarKey key = {{20, 200}, {0, 150}, {128, 255}, shift, shift};
        const auto in = [](const AVBased::kernels::KeyRange& range, uint8_t x) {
            return x >= range.low && x <= range.high;
        };
        // The chroma planes are larger than they need be.
        cases.push_back({"keyComponent " + std::to_string(shift), 4, 1,
                         [=](const auto& planes) {
                             uint8_t* memory =
                                 scratch->Require(AVBased::kernels::KeyScratchBytes(planes[0].width));
                             kernels.keyComponent(planes[0], planes[1], planes[2], planes[3], key, memory);
                         },
                         ForColours(1, [=](const auto& planes, size_t x, size_t y) {
                             const size_t cx = x >> shift, cy = y >> shift;
                             if (in(key.y, planes[0].Row(y)[x]) && in(key.u, planes[1].Row(cy)[cx]) &&
                                 in(key.v, planes[2].Row(cy)[cx]))
                                 planes[3].Row(y)[x] = 0;
                         })});
    }
}

} // namespace

void AddWeightCases(std::vector<KernelCase>& cases, unsigned features) {
    AddFadeCases(cases, features);
    AddEmbossCases(cases, features);
    AddNoiseCases(cases, features);
    AddKeyCases(cases, features);
}

} // namespace test
