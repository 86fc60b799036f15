#pragma once
/// The frames that every effect is tried on, and the comparison with a plain computation.
#include <gtest/gtest.h>

#include <functional>
#include <span>
#include <string>

#include "aveffect/base_media.h"
#include "tests/support/host_frame.h"
#include "tests/support/plugin.h"

namespace test {

inline const unsigned kPlanarFormats[] = {AVBased::YUV420P,  AVBased::YUV422P,  AVBased::YUV410P,
                                          AVBased::YUV411P,  AVBased::YUVJ420P, AVBased::YUVJ422P,
                                          AVBased::YUVA420P, AVBased::YUVA444P};

/// Awkward shapes of one format: sizes from 1x1, odd widths around register sizes, padding, unaligned first
/// bytes, chroma rounded either way.
inline std::vector<Shape> AwkwardShapes(unsigned format) {
    std::vector<Shape> shapes;
    unsigned n = 0;
    for (const auto& [width, height] : {std::pair{1u, 1u},
                                        {2u, 3u},
                                        {3u, 3u},
                                        {7u, 5u},
                                        {15u, 4u},
                                        {16u, 2u},
                                        {17u, 9u},
                                        {31u, 3u},
                                        {33u, 8u},
                                        {64u, 6u},
                                        {65u, 5u},
                                        {130u, 7u}}) {
        ++n;
        shapes.push_back({format, width, height, n % 3 * 5, n % 4, n % 2 == 0});
        shapes.push_back({format, width, height, 0, 0, n % 2 == 1});
    }
    return shapes;
}

inline std::string Describe(const Shape& shape) {
    return "format " + std::to_string(shape.format) + ", " + std::to_string(shape.width) + "x" +
           std::to_string(shape.height) + ", padding " + std::to_string(shape.extraPitch) + ", offset " +
           std::to_string(shape.offset) + (shape.roundUp ? ", chroma rounded up" : "");
}

/// Byte for byte, padding included.
inline void ExpectSame(const HostFrame& actual, const HostFrame& expected, const std::string& what) {
    for (size_t i = 0; i < expected.planes.size(); ++i) {
        const auto& a = actual.planes[i].bytes;
        const auto& e = expected.planes[i].bytes;
        const auto difference = std::mismatch(a.begin(), a.end(), e.begin());
        if (difference.first == a.end()) continue;
        const auto& plane = expected.planes[i];
        const auto at = static_cast<size_t>(difference.first - a.begin()) - plane.offset;
        FAIL() << what << ": plane " << i << ", byte " << at % plane.pitch << " of row " << at / plane.pitch
               << " is " << int{*difference.first} << ", not " << int{*difference.second};
    }
}

/// An effect and its settings.
struct Setting {
    std::string effect;
    std::vector<std::pair<std::string, std::string>> properties = {};
};

inline VideoProc MakeVideo(const Setting& setting) {
    VideoProc proc = MakeVideo(setting.effect);
    for (const auto& [name, value] : setting.properties)
        if (!proc->SetProperty(name.c_str(), value.c_str())) throw std::runtime_error("no property " + name);
    return proc;
}

/// Feature masks that leave one level of kernels each: SSE2, AVX2, AVX-512, everything.
inline constexpr unsigned kLevelMasks[] = {0x7, 0x1FF, 0x3FF, ~0u};

/// The processor as processors are made and run under a mask.
class FeatureMask {
public:
    explicit FeatureMask(unsigned mask) { AVBasedSetCPUFeatureMask(mask); }
    ~FeatureMask() { AVBasedSetCPUFeatureMask(~0u); }
    FeatureMask(const FeatureMask&) = delete;
    FeatureMask& operator=(const FeatureMask&) = delete;
};

/// Holds an effect to a plain computation on random frames of the formats, at every level of the machine: in
/// place, and through a copy that must leave the host's frame alone.
inline void ExpectComputes(const Setting& setting, std::span<const unsigned> formats,
                           const std::function<void(HostFrame&)>& plain, int time = 0,
                           std::span<const unsigned> masks = kLevelMasks) {
    for (const unsigned mask : masks) {
        const FeatureMask hidden(mask);
        const VideoProc proc = MakeVideo(setting);
        unsigned seed = 0;
        for (const unsigned format : formats)
            for (const Shape& shape : AwkwardShapes(format)) {
                const std::string what = "mask " + std::to_string(mask) + ", " + Describe(shape);
                auto frame = MakeFrame(shape, ++seed);
                HostFrame original = *frame, expected = *frame;
                plain(expected);
                AVBased::ImagePostion position{};
                auto* copy = static_cast<HostFrame*>(proc->ProcFrame(&position, time, frame.get()));
                ASSERT_NE(copy, nullptr);
                ASSERT_NO_FATAL_FAILURE(ExpectSame(*copy, expected, "copy, " + what));
                ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, original, "host's frame, " + what));
                Run(*proc, *frame, time);
                ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, expected, what));
            }
    }
}

inline constexpr unsigned kPacked[] = {AVBased::BGRA};

/// Calls change(pixel) for the four bytes of every whole pixel.
template <class Change>
void ForPixels(HostFrame& frame, Change change) {
    auto& plane = frame.planes[0];
    for (unsigned y = 0; y < plane.rows; ++y)
        for (unsigned x = 0; x + 4 <= plane.width; x += 4) change(&plane.At(x, y));
}

/// Calls change(byte) for every sample of a plane.
template <class Change>
void ForSamples(HostFrame::Plane& plane, Change change) {
    for (unsigned y = 0; y < plane.rows; ++y)
        for (unsigned x = 0; x < plane.width; ++x) change(plane.At(x, y));
}

/// Every byte of a plane, from the first row's start to the last row's end of pitch.
inline void FillPitch(HostFrame::Plane& plane, unsigned char value) {
    std::fill_n(plane.Data(), size_t{plane.pitch} * plane.rows, value);
}

} // namespace test
