#pragma once
/// The frames that every effect is tried on, and the comparison with a plain computation.
#include <gtest/gtest.h>

#include <functional>
#include <span>
#include <string>

#include "tests/support/feature_mask.h"
#include "tests/support/host_frame.h"
#include "tests/support/plugin.h"
#include "tests/support/record.h"

namespace test {

inline const unsigned kPlanarFormats[] = {AVBased::YUV420P,  AVBased::YUV422P,  AVBased::YUV410P,
                                          AVBased::YUV411P,  AVBased::YUVJ420P, AVBased::YUVJ422P,
                                          AVBased::YUVA420P, AVBased::YUVA444P};

/// Awkward shapes of one format: sizes from 1x1, odd widths around register sizes, padding, unaligned first
/// bytes, chroma rounded either way.
inline std::vector<Shape> AwkwardShapes(unsigned format) {
    constexpr std::pair<unsigned, unsigned> kSizes[] = {
        {1, 1},  {2, 3},  {3, 3},  {7, 5},  {15, 4},  {16, 2},  {17, 9},  {23, 1},  {31, 3}, {33, 8},
        {47, 4}, {63, 3}, {64, 6}, {65, 5}, {95, 33}, {127, 3}, {129, 4}, {130, 7}, {257, 3}};
    std::vector<Shape> shapes;
    unsigned n = 0;
    for (const auto& [width, height] : kSizes) {
        ++n;
        shapes.push_back(
            {format, width, height, n % 3 * 5, n % 4, n % 2 == 0, n % 2 ? Flush::Start : Flush::End});
        shapes.push_back({format, width, height, 0, 0, n % 2 == 1, n % 2 ? Flush::End : Flush::Start});
    }
    return shapes;
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
    bool deep = true; ///< worth a large frame
};

inline VideoProc MakeVideo(const Setting& setting) {
    VideoProc proc = MakeVideo(setting.effect);
    for (const auto& [name, value] : setting.properties)
        if (!proc->SetProperty(name.c_str(), value.c_str())) throw std::runtime_error("no property " + name);
    return proc;
}

/// Calls body once for each level of the machine.
template <class Body>
void ForLevels(Body body) {
    for (const unsigned mask : kLevelMasks) {
        const FeatureMask hidden(mask);
        SCOPED_TRACE("mask " + std::to_string(mask));
        body();
    }
}

inline constexpr unsigned kPacked[] = {AVBased::BGRA};
using Plain = std::function<void(HostFrame&)>;

/// Holds an effect to a plain computation at every level of the machine: in place, and through a copy that
/// must leave the host's frame alone. On frames of all awkward shapes, with contents of every kind, and on a
/// deep one of the first format.
inline void ExpectComputes(const Setting& setting, std::span<const unsigned> formats, const Plain& plain,
                           int time = 0, std::span<const unsigned> masks = kLevelMasks) {
    std::vector<VideoProc> procs;
    for (const unsigned mask : masks) {
        const FeatureMask hidden(mask);
        procs.push_back(MakeVideo(setting));
    }
    GetBaseException()->Clear();
    const auto tryShape = [&](const Shape& shape, unsigned seed, Contents contents) {
        const FramePtr original = MakeFrame(shape, seed, contents);
        HostFrame expected = *original;
        plain(expected);
        for (size_t i = 0; i < procs.size(); ++i) {
            const FeatureMask hidden(masks[i]);
            std::string what = ", mask " + std::to_string(masks[i]) + ", contents " +
                               std::to_string(static_cast<int>(contents)) + ", " + Describe(shape);
            for (const auto& [name, value] : setting.properties)
                what.append(" ").append(name).append("=").append(value);
            HostFrame frame = *original;
            AVBased::ImagePostion position{};
            auto* copy = static_cast<HostFrame*>(procs[i]->ProcFrame(&position, time, &frame));
            // A refusal gives no copy.
            ASSERT_NO_FATAL_FAILURE(
                ExpectSame(copy ? *copy : *original, expected, setting.effect + ", copied" + what));
            EXPECT_EQ(GetBaseException()->GetExceptionCode() != 0, copy == nullptr) << what;
            ASSERT_NO_FATAL_FAILURE(ExpectSame(frame, *original, "host's frame" + what));
            Run(*procs[i], frame, time);
            GetBaseException()->Clear();
            ASSERT_NO_FATAL_FAILURE(ExpectSame(frame, expected, setting.effect + what));
        }
    };
    unsigned seed = 0;
    for (const unsigned format : formats) // planar formats share their kernels, and so the kinds of contents
        for (unsigned round = 0; round < (format == AVBased::BGRA ? 2 : 1); ++round)
            for (const Shape& shape : AwkwardShapes(format)) {
                ++seed;
                const auto contents = static_cast<Contents>((seed / 2 + seed / 38) % 4);
                ASSERT_NO_FATAL_FAILURE(tryShape(shape, seed, contents));
            }
    if (setting.deep) tryShape({formats[0], 523, 401, 5, 1, true}, 1, Contents::Random);
}
/// On pixels and on planes.
inline void ExpectComputes(const Setting& setting, const Plain& packed, const Plain& planar, int time = 0,
                           std::span<const unsigned> masks = kLevelMasks) {
    ASSERT_NO_FATAL_FAILURE(ExpectComputes(setting, kPacked, packed, time, masks));
    ASSERT_NO_FATAL_FAILURE(ExpectComputes(setting, kPlanarFormats, planar, time, masks));
}
inline void ExpectComputes(const Setting& setting, const Plain& plain) {
    ExpectComputes(setting, plain, plain);
}

/// One frame through a processor, against a plain computation.
inline void ExpectFrame(AVBased::IVideoProc& proc, const Shape& shape, const Plain& plain,
                        const std::string& what, int time = 0) {
    const FramePtr frame = MakeFrame(shape, 7);
    HostFrame expected = *frame;
    plain(expected);
    Run(proc, *frame, time);
    ExpectSame(*frame, expected, what + ", " + Describe(shape));
}

/// A frame that must stay as it is, and nothing to say about it.
inline void ExpectLeavesAlone(AVBased::IVideoProc& proc, const Shape& shape, int time = 0) {
    GetBaseException()->Clear();
    ExpectFrame(
        proc, shape, [](HostFrame&) {}, "left alone", time);
    EXPECT_EQ(TakeRecord().second, "") << Describe(shape);
}

/// A frame that must stay as it is, and a record of why, in which the reason stands.
inline void ExpectRefuses(AVBased::IVideoProc& proc, const Shape& shape, const std::string& reason,
                          int code = 10021008, int time = 0) {
    GetBaseException()->Clear();
    ASSERT_NO_FATAL_FAILURE(ExpectFrame(
        proc, shape, [](HostFrame&) {}, reason, time));
    const auto [recorded, message] = TakeRecord();
    EXPECT_EQ(recorded, code) << reason;
    EXPECT_NE(message.find(reason), std::string::npos) << message;
}
/// The same for a processor with these settings, on pixels and on planes.
inline void ExpectRefuses(const std::string& effect, Settings settings, const std::string& reason) {
    for (const unsigned format : {unsigned{AVBased::BGRA}, unsigned{AVBased::YUV420P}})
        ASSERT_NO_FATAL_FAILURE(ExpectRefuses(*MakeVideo(effect, settings), {format, 20, 12, 3}, reason));
}

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
