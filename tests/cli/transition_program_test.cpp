// The program makes clips of transitions, and says what is wrong when it can't.
#include <algorithm>
#include <cstring>

#include <nlohmann/json.hpp>

#include "host/effects/transition_frame.h"
#include "tests/cli/program.h"

namespace {

using test::Outcome;
using Strings = std::vector<std::string>;

class TransitionProgram : public test::ProgramTest {
protected:
    TransitionProgram() {
        MakeStill("a.png", "ff0000");
        MakeStill("b.png", "0000ff");
    }
    std::vector<float> Sound(const std::string& name) const {
        const std::string bytes = Ffmpeg({"-i", name, "-f", "f32le", "-ac", "1", "-"});
        std::vector<float> sound(bytes.size() / sizeof(float));
        std::memcpy(sound.data(), bytes.data(), sound.size() * sizeof(float));
        return sound;
    }
    void Run(const Strings& arguments) const {
        const Outcome outcome = Aveffect(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
        EXPECT_EQ(outcome.output + outcome.messages, "");
    }
};

TEST_F(TransitionProgram, OptionsReachTheTransition) {
    Run({"transition",   "a.png", "b.png",   "out.mkv", "--effect",      "EffectNameMkFade",
         "--duration",   "0.4",   "--start", "0.2",     "--hold-before", "0.1",
         "--hold-after", "0.1",   "--size",  "8x12",    "--fps",         "10",
         "--codec",      "ffv1"});
    const std::string pixels = Pixels("out.mkv");
    constexpr size_t kPicture = 8 * 12 * 3, kBlack = 8 * 3 * 3;
    ASSERT_EQ(pixels.size(), 6 * kPicture);
    // Three black rows above and below 8x6; then red for 1 + 2 pictures, half and half, blue.
    const int whole = static_cast<unsigned char>(Pixels("a.png")[0]);
    const int red[] = {whole, whole, whole, whole, whole / 2, 0};
    for (size_t picture = 0; picture < 6; ++picture) {
        const std::string shown = pixels.substr(picture * kPicture, kPicture);
        EXPECT_EQ(shown.substr(0, kBlack), std::string(kBlack, '\0')) << picture;
        EXPECT_EQ(static_cast<unsigned char>(shown[kBlack]), red[picture]) << picture;
    }
}

TEST_F(TransitionProgram, SheetHasARowForEachTransition) {
    Run({"sheet", "a.png", "b.png", "sheet.png", "--size", "80x60"});
    const auto transitions = aveffect::AllTransitions();
    const size_t width = 8 * 84 - 4, height = transitions.size() * 64 - 4;
    const std::string sheet = Pixels("sheet.png");
    ASSERT_EQ(sheet.size(), width * height * 3);
    for (size_t row = 0; row < transitions.size(); ++row) {
        const std::string name = transitions[row]->name;
        // The same moments of a clip: the middles of eight parts, sixteen pictures being two a part.
        Run({"transition", "a.png", "b.png", name + ".mkv", "-e", name, "--duration", "1.6", "--fps", "10",
             "--size", "80x60", "--codec", "ffv1"});
        const std::string clip = Pixels(name + ".mkv");
        for (size_t column = 0; column < 8; ++column)
            for (size_t y = 0; y < 60; ++y)
                ASSERT_EQ(sheet.substr(((row * 64 + y) * width + column * 84) * 3, 80 * 3),
                          clip.substr(((2 * column + 1) * 60 + y) * 80 * 3, 80 * 3))
                    << name << " " << column << " " << y;
    }
}

TEST_F(TransitionProgram, ASlideShowWithMusicIsOneCommand) {
    MakeStill("c@3.png", "00ff00"); // a name of its own, no duration
    Ffmpeg({"-f", "lavfi", "-i", "sine=f=480:r=48000:d=0.5", "-c:a", "pcm_f32le", "music.wav"});
    Run({"join",
         "a.png",
         "b.png@1",
         "c@3.png",
         "c@3.png@0.4",
         "b.png",
         "a.png",
         "out.mkv",
         "-e",
         "crossfade",
         "-e",
         "clock@0.4",
         "-e",
         "cut",
         "-e",
         "roll",
         "-e",
         "push",
         "--duration",
         "0.2",
         "--picture-duration",
         "0.8",
         "--music",
         "music.wav",
         "--music-fade-in",
         "0.5",
         "--music-fade-out",
         "1",
         "--music-volume",
         "50%",
         "--codec",
         "ffv1",
         "--audio-codec",
         "pcm_f32le"});
    // Pictures at 25 a second; each begins before the end of the one before it.
    constexpr int kPictures[] = {20, 25, 20, 10, 20, 20}, kShared[] = {5, 10, 0, 5, 5, 0};
    const std::string film = Pixels("out.mkv"),
                      kinds[] = {"a.png", "b.png", "c@3.png", "c@3.png", "b.png", "a.png"};
    const size_t picture = Pixels("a.png").size();
    int begin = 0, shared = 0;
    for (size_t part = 0; part < 6; ++part) {
        const std::string alone = Pixels(kinds[part]);
        for (int index = begin + shared; index < begin + kPictures[part] - kShared[part]; ++index)
            ASSERT_EQ(film.substr(static_cast<size_t>(index) * picture, picture), alone)
                << part << " " << index;
        shared = kShared[part];
        begin += kPictures[part] - shared;
    }
    ASSERT_EQ(film.size(), static_cast<size_t>(begin) * picture);
    const std::vector<float> music = Sound("music.wav"), heard = Sound("out.mkv");
    const size_t length = static_cast<size_t>(begin) * 1920;
    ASSERT_EQ(heard.size(), length);
    for (size_t at = 0; at < length; ++at) {
        const double in = std::min(1.0, static_cast<double>(at) / 24000);
        const double out = std::min(1.0, static_cast<double>(length - at) / 48000);
        ASSERT_NEAR(heard[at], music[at % music.size()] * 0.5 * in * out, 1e-5) << at;
    }
}

TEST_F(TransitionProgram, MusicAndSoundAreNotClipped) {
    Ffmpeg({"-f", "lavfi", "-i", "color=s=16x16:d=0.4", "-f", "lavfi", "-i",
            "aevalsrc='0.7*sin(2000*t)*gt(t,0.2)':s=48000:d=0.4", "-c:v", "ffv1", "-c:a", "pcm_f32le",
            "a.mkv"});
    Ffmpeg(
        {"-f", "lavfi", "-i", "aevalsrc='0.6*sin(2000*t)':s=48000:d=0.4", "-c:a", "pcm_f32le", "music.wav"});
    Run({"join", "a.mkv", "a.mkv", "out.mkv", "--duration", "0", "--music", "music.wav", "--codec", "ffv1",
         "--audio-codec", "pcm_f32le"});
    const std::vector<float> heard = Sound("out.mkv"), music = Sound("music.wav");
    ASSERT_EQ(heard.size(), 2 * music.size());
    EXPECT_TRUE(std::equal(heard.begin(), heard.begin() + 9000, music.begin())); // alone it is as it was
    const auto [lowest, highest] = std::minmax_element(heard.begin(), heard.end());
    EXPECT_TRUE(*highest > 0.95f && *highest <= 1 && *lowest < -0.95f && *lowest >= -1)
        << *lowest << *highest;
}

// Long groups of pictures, containers with an index, without one, without a length and without times.
TEST_F(TransitionProgram, AClipEndsWithItsLastPicture) {
    for (const Strings& kind : {Strings{"a.mp4", "mpeg4"},
                                {"a.avi", "mpeg4"},
                                {"a.ts", "mpeg2video"},
                                {"a.m2v", "mpeg2video"},
                                {"a.mkv", "mpeg4", "-live", "1"}}) {
        SCOPED_TRACE(kind[0]);
        Strings make = {"-f",   "lavfi", "-i",   "color=s=64x48:d=8,geq=lum=20+N:cb=128:cr=128",
                        "-g",   "130",   "-bf",  "0",
                        "-q:v", "1",     "-c:v", kind[1]};
        make.insert(make.end(), kind.begin() + 2, kind.end());
        make.push_back(kind[0]);
        Ffmpeg(make);
        const std::string clip = Pixels(kind[0]);
        for (const bool last : {true, false}) {
            const Outcome outcome =
                Aveffect({"transition", kind[0] + (last ? "" : "?picture=first"), kind[0], "out.mkv", "-e",
                          "crossfade", "--hold-after", "0.1", "--codec", "ffv1", "--overwrite"});
            EXPECT_EQ(outcome.exitCode, 0);
            const std::string both = "the last picture of " + kind[0] + " and the first picture of ";
            EXPECT_EQ(outcome.messages.find(both) != std::string::npos, last) << outcome.messages;
            EXPECT_TRUE(test::IsOneMessage(outcome.messages));
            const std::string film = Pixels("out.mkv");
            const auto luma = [](char byte) { return static_cast<unsigned char>(byte); };
            EXPECT_NEAR(luma(film.front()), luma(last ? clip.back() : clip.front()), 2);
            EXPECT_NEAR(luma(film.back()), luma(clip.front()), 2);
        }
    }
}

TEST_F(TransitionProgram, StraightCutsAreExact) {
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=64x48:d=1", "-f", "lavfi", "-i", "sine=r=48000:d=1", "-c:v",
            "ffv1", "-pix_fmt", "yuv420p", "-c:a", "pcm_f32le", "in.mkv"});
    Run({"join", "in.mkv", "in.mkv@0.4", "out.mkv", "--duration", "0", "--codec", "ffv1", "--audio-codec",
         "pcm_f32le"});
    const std::string pixels = Pixels("in.mkv");
    EXPECT_EQ(Pixels("out.mkv"), pixels + pixels.substr(0, pixels.size() / 25 * 10));
    std::vector<float> sound = Sound("in.mkv");
    sound.insert(sound.end(), sound.begin(), sound.begin() + 10 * 1920);
    EXPECT_EQ(Sound("out.mkv"), sound);
}

TEST_F(TransitionProgram, JoinShowsProgress) {
    MakeClip("in.mkv", "64x48", 50);
    const Outcome outcome =
        Aveffect({"join", "in.mkv", "in.mkv", "out.mp4", "-e", "EffectNameMkClock", "--progress", "json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
    const auto last = nlohmann::json::parse(outcome.output.substr(outcome.output.rfind('{')));
    EXPECT_EQ(last["state"], "done");
    EXPECT_EQ(last["frames"], 75);
}

TEST_F(TransitionProgram, WhatIsWrongIsSaidInOneLine) {
    test::WriteFile(Path("text.png"), "no picture");
    Ffmpeg({"-f", "lavfi", "-i", "sine=duration=1", "sound.wav"});
    struct Case {
        int exitCode;
        Strings arguments;
        const char* message;
    };
    const Case cases[] = {
        {2,
         {"transition", "a.png", "b.png", "o.mkv", "-e", "dissolve"},
         "'dissolve' is no transition; did you mean 'crossfade'?"},
        {2,
         {"join", "a.png", "b.png", "o.mkv", "-e", "gray"},
         "'gray' is no transition; these are: clock, turn-over, crossfade, "},
        {2, {"transition", "a.png", "b.png", "o.mkv"}, "--effect is required"},
        {2,
         {"transition", "a.png", "b.png", "o.mkv", "-e", "EffectNameMkFade", "--duration", "0"},
         "--duration takes a time above 0, not '0'"},
        {2,
         {"transition", "a.png", "b.png", "o.mkv", "-e", "EffectNameMkFade", "--start", "1"},
         "--start must lie before the end of --duration"},
        {2,
         {"transition", "a.png", "b.png", "o.mkv", "-e", "EffectNameMkFade", "--size", "9x"},
         "--size takes WIDTHxHEIGHT, WIDTH:, :HEIGHT or a percentage"},
        {2,
         {"transition", "a.png", "b.png", "o.mkv", "-e", "EffectNameMkFade", "--fps", "25/0"},
         "--fps takes"},
        {2, {"transition", "a.png", "b.png", "o.png", "-e", "EffectNameMkFade"}, "o.png holds one picture"},
        {3, {"transition", "a.png", "none.png", "o.mkv", "-e", "crossfade"}, "none.png: no such file"},
        {3,
         {"transition", "text.png", "b.png", "o.mkv", "-e", "EffectNameMkFade"},
         "text.png holds no picture that can be decoded"},
        {3,
         {"transition", "a.png", "sound.wav", "o.mkv", "-e", "EffectNameMkFade"},
         "sound.wav holds no picture that can be decoded"},
        {3,
         {"transition", "a.png", "b.png?vstreamid=4", "o.mkv", "-e", "EffectNameMkFade"},
         "b.png: stream 4 is no video stream"},
        {4,
         {"transition", "a.png", "b.png", "b.png.mkv/o.mkv", "-e", "EffectNameMkFade"},
         "can't be written"},
        {4, {"sheet", "a.png", "b.png", "a.png"}, "a.png is the input itself"},
        {2, {"sheet", "a.png", "b.png", "o.png", "--size", "16384x16384"}, "choose a smaller --size"},
        {3, {"sheet", "a.png", "sound.wav", "o.png"}, "sound.wav holds no picture"},
        {2,
         {"join", "a.png", "o.mkv", "-e", "EffectNameMkFade"},
         "join takes two clips or more and the output"},
        {2, {"join", "a.png", "b.png", "o.mkv"}, "clips need a transition between them: -e NAME, or -e cut"},
        {2,
         {"join", "a.png", "b.png", "o.mkv", "-e", "cut", "-e", "roll"},
         "2 clips have 1 seam, but 2 transitions"},
        {2, {"join", "a.png", "b.png@0", "o.mkv", "-e", "cut"}, "b.png@ takes a time above 0"},
        {2,
         {"join", "a.png", "b.png@1", "o.mkv", "-e", "roll@2"},
         "b.png lasts 1 s, too short for a transition of 2 s"},
        {3, {"join", "a.png", "b.png", "o.mkv", "-e", "cut", "--music", "a.png"}, "a.png has no sound"},
        {2,
         {"join", "a.png", "b.png", "o.mkv", "-e", "cut", "--music", "sound.wav", "--music-fade-in", "7"},
         "the music can't fade for 7 s: the film lasts 6 s"},
        {2, {"render", "a.png", "o.png", "-e", "EffectNameMkFade"}, "crossfade needs EffectPropVFPath1"},
        {3,
         {"frame", "a.png", "o.png", "-e",
          "EffectNameMkFade:EffectPropVFPath1=b.png:EffectPropVFPath2=none.png"},
         "none.png: no such file"},
    };
    const Strings before = Names();
    for (const Case& wrong : cases) {
        SCOPED_TRACE(::testing::PrintToString(wrong.arguments));
        const Outcome outcome = Aveffect(wrong.arguments);
        EXPECT_EQ(outcome.exitCode, wrong.exitCode);
        EXPECT_TRUE(test::IsOneMessage(outcome.messages));
        EXPECT_NE(outcome.messages.find(wrong.message), std::string::npos) << outcome.messages;
        EXPECT_EQ(Names(), before);
    }
}

} // namespace
