// Two views, from two clips or from one.
#include <gtest/gtest.h>

#include "tests/host/clips.h"
#include "tests/support/stereo.h"

namespace {

using aveffect::ErrorKind;
using aveffect::StereoLayout;
using clips::Bytes;
using test::ViewSamples;

constexpr size_t kWidth = 22, kHeight = 12, kPictureBytes = kWidth * kHeight * 4;
constexpr int kPictures = 10;

class TwoViews : public testing::Test {
protected:
    std::string Clip(const std::string& name, int rate, double seconds, const std::string& filter = "null") {
        return clips::Make(m_directory / name, "22x12", rate, seconds,
                           "-vf " + filter + " -c:v ffv1 -pix_fmt bgra");
    }
    aveffect::RenderOptions Options(const std::string& input, const std::string& settings) {
        aveffect::RenderOptions options;
        options.input = input;
        options.output = m_directory / "out.mkv";
        options.videoCodec = "ffv1";
        options.overwrite = true;
        options.effects = {aveffect::ParseEffect("EffectName3DRenderEffect:" + settings, false)};
        return options;
    }
    Bytes Rendered(const aveffect::RenderOptions& options) {
        aveffect::RenderObserver observer;
        observer.warning = [this](const std::string& text) { m_warnings += text; };
        const std::atomic<bool> cancel{false};
        aveffect::Render(clips::ThePlugin(), options, observer, cancel);
        return clips::Decode(options.output);
    }

    clips::TemporaryDirectory m_directory;
    std::string m_left = Clip("left.mkv", 25, 0.4);
    std::string m_right = Clip("right.mkv", 50, 0.4, "negate");
    std::string m_warnings;
};

// What the pictures become, from the left clip's and the right clip's of the same time.
Bytes Shown(const Bytes& left, const Bytes& right, int mode, bool exchanged, size_t rightStep = 2) {
    Bytes result = left;
    for (size_t n = 0; n < left.size() / kPictureBytes; ++n) {
        unsigned char* to = &result[n * kPictureBytes];
        const ViewSamples l(&left[n * kPictureBytes], kWidth * 4, kWidth * 4, kHeight);
        const ViewSamples r(&right[n * rightStep * kPictureBytes], kWidth * 4, kWidth * 4, kHeight);
        const ViewSamples &first = exchanged ? r : l, &second = exchanged ? l : r;
        const auto draw = [&](size_t x, size_t y, uint8_t value) { to[y * kWidth * 4 + x] = value; };
        if (mode == 3) test::SideBySide(kWidth * 4, kHeight, 4, first, second, draw);
        if (mode == 4) test::TopAndBottom(kWidth * 4, kHeight, first, second, draw);
        for (size_t i = 0; mode < 3 && i < kPictureBytes; ++i) {
            const bool fromFirst = mode == 0 || i % 4 == 2 || (mode == 2 && i % 4 == 0);
            if (i % 4 != 3) to[i] = (fromFirst ? first : second).bytes[i];
        }
    }
    return result;
}

TEST_F(TwoViews, OfTwoClipsAreShownInEveryWay) {
    const Bytes left = clips::Decode(m_left), right = clips::Decode(m_right);
    ASSERT_EQ(left.size(), kPictures * kPictureBytes);
    for (int mode = 0; mode <= 4; ++mode)
        for (const bool exchanged : {false, true}) {
            auto options = Options(m_left, "render_3d_mode=" + std::to_string(mode) +
                                               ":render_3d_swtich=" + (exchanged ? "on" : "off"));
            options.stereo.right = m_right;
            EXPECT_EQ(Rendered(options), Shown(left, right, mode, exchanged)) << mode << exchanged;
            const std::string mode3 = exchanged ? "right_left" : "left_right";
            const std::string mode4 = exchanged ? "bottom_top" : "top_bottom";
            EXPECT_EQ(clips::RunText(
                          "ffprobe -v error -show_entries stream_tags=stereo_mode -of default=nw=1:nk=1 " +
                          options.output),
                      mode == 3   ? mode3
                      : mode == 4 ? mode4
                                  : "");
        }
    EXPECT_EQ(m_warnings, "");
}

TEST_F(TwoViews, KeepTheirMarkWhileTheirHalvesStay) {
    auto options = Options(m_left, "render_3d_mode=3");
    options.stereo.right = m_right;
    options.output = m_directory / "both.mkv";
    Rendered(options);
    using aveffect::Extent;
    using aveffect::Framing;
    const Extent half{50, true}, ten{10};
    Framing halved, narrow, stretched, covered, cropped;
    halved.width = halved.height = half;
    narrow.width = ten;
    stretched.width = stretched.height = covered.width = covered.height = ten;
    stretched.fit = Framing::Fit::Stretch;
    covered.fit = Framing::Fit::Cover;
    cropped.crop = Framing::Crop{ten, ten};
    const std::pair<Framing, bool> cases[] = {
        {halved, true}, {narrow, true}, {stretched, true}, {covered, false}, {cropped, false}};
    for (const bool after : {false, true})
        for (const auto& [framing, kept] : cases) {
            auto sized = options;
            if (!after) sized = {};
            sized.input = after ? m_left : options.output;
            sized.output = m_directory / "sized.mkv";
            sized.overwrite = true;
            sized.framing = framing;
            sized.framing.afterEffects = after;
            Rendered(sized);
            const std::string said = clips::RunText("ffprobe -v error -show_entries stream_tags=stereo_mode:"
                                                    "stream_side_data=type -of default=nw=1:nk=1 " +
                                                    sized.output);
            EXPECT_EQ(said.find("left_right") != std::string::npos, kept) << after << said;
        }
}

TEST_F(TwoViews, OfOnePictureAreSplit) {
    const Bytes left = clips::Decode(m_left), right = clips::Decode(Clip("same.mkv", 25, 0.4, "negate"));
    for (const bool beside : {true, false}) {
        const std::string both = m_directory / "both.mkv";
        clips::Run("ffmpeg -v error -nostdin -y -i " + m_left + " -i " + (m_directory / "same.mkv") +
                   " -filter_complex " + (beside ? "hstack" : "vstack") + " -c:v ffv1 " + both);
        auto options = Options(both, "render_3d_mode=red-cyan");
        options.stereo.layout = beside ? StereoLayout::SideBySide : StereoLayout::TopAndBottom;
        EXPECT_EQ(Rendered(options), Shown(left, right, 1, false, 1)) << beside;
    }
}

// The effects before the stereo effect change both views, and a part of a clip goes with the same part of the
// other; where that ends, its last picture stays.
TEST_F(TwoViews, GoThroughTheChainByTime) {
    auto options = Options(m_left, "render_3d_mode=side-by-side");
    options.effects.insert(options.effects.begin(), aveffect::ParseEffect("invert", false));
    options.stereo.right = Clip("short.mkv", 50, 0.26, "negate");
    options.fromMs = 120;
    const Bytes actual = Rendered(options);
    Bytes left = clips::Decode(m_left), right = clips::Decode(options.stereo.right);
    const Bytes last(right.end() - kPictureBytes, right.end());
    while (right.size() < 2 * left.size()) right.insert(right.end(), last.begin(), last.end());
    left.erase(left.begin(), left.begin() + 3 * kPictureBytes);
    right.erase(right.begin(), right.begin() + 6 * kPictureBytes);
    Bytes expected = Shown(left, right, 3, false);
    for (size_t i = 0; i < expected.size(); ++i)
        if (i % 4 != 3) expected[i] = static_cast<unsigned char>(255 - expected[i]);
    EXPECT_EQ(actual, expected);
    EXPECT_NE(m_warnings.find("ends before the other view"), std::string::npos) << m_warnings;
}

// Pictures of any pitch reach the effect from decoders; their own views need the same one.
TEST_F(TwoViews, OfOneViewComeFromAnyDecoder) {
    for (const std::string codec : {"libx264", "rawvideo"})
        for (const std::string settings :
             {"render_3d_mode=left", "render_3d_mode=top-and-bottom", "render_3d_mode=red-cyan"}) {
            const std::string input =
                clips::Make(m_directory / "in.mkv", "102x50", 25, 0.2, "-c:v " + codec + " -pix_fmt yuv420p");
            EXPECT_EQ(Rendered(Options(input, settings)).size(), 5u * 102 * 50 * 3 / 2) << codec;
        }
    // A mark goes when the picture is no pair any more.
    auto options = Options(m_left, "render_3d_mode=top-and-bottom");
    Rendered(options);
    const std::string marked = m_directory / "marked.mkv";
    clips::Run("mv " + options.output + " " + marked);
    options = Options(marked, "render_3d_mode=left");
    options.stereo.layout = StereoLayout::TopAndBottom;
    Rendered(options);
    EXPECT_EQ(clips::RunText("ffprobe -v error -show_streams " + options.output).find("tereo"),
              std::string::npos);
}

TEST_F(TwoViews, WhatCantBeIsRefused) {
    const auto expect = [&](const aveffect::RenderOptions& options, ErrorKind kind, const std::string& text) {
        clips::ExpectFailure(clips::FailureOf([&] { Rendered(options); }), kind, text);
    };
    auto options = Options(m_left, "render_3d_mode=red-cyan");
    options.pixelFormat = "yuva420p";
    expect(options, ErrorKind::Usage, "choose --pixel-format bgra");
    options.stereo.right = m_directory / "missing.mkv";
    expect(options, ErrorKind::Input, "missing.mkv");
    options.stereo.right = m_right;
    options.pixelFormat = "yuv420p";
    expect(options, ErrorKind::Usage, "choose --pixel-format bgra");
    options.stereo.layout = StereoLayout::SideBySide;
    expect(options, ErrorKind::Usage, "not both");
    options.effects = {aveffect::ParseEffect("gray", false)};
    expect(options, ErrorKind::Usage, "need the effect anaglyph");
    options.stereo = {};
    options.effects = {aveffect::ParseEffect("EffectName3DRenderEffect:render_3d_mode=-1", true)};
    expect(options, ErrorKind::Usage, "can't be negative");
}

} // namespace
