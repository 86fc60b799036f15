/// Films in pieces that are kept: by the program, killed and resumed.
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

using clips::Bytes;

/// A film of three clips with a transition, an effect on one clip and a title above.
class FilmPieces : public testing::Test {
protected:
    void SetUp() override {
        clips::Make(m_directory / "a.mkv", "96x64", 24, 4, "-c:v ffv1 -c:a pcm_s16le", true);
        clips::Make(m_directory / "b.mkv", "96x64", 24, 4, "-c:v ffv1 -c:a pcm_s16le", true);
        clips::Run("ffmpeg -v error -f lavfi -i color=red@0.5:s=96x64,format=rgba -frames:v 1 " +
                   (m_directory / "title.png"));
        WriteFilm(40);
    }

    void WriteFilm(int mix) {
        const auto time = [](int value) {
            return R"({"OTIO_SCHEMA":"RationalTime.1","rate":24,"value":)" + std::to_string(value) + "}";
        };
        const auto clip = [&](const std::string& file, int start, int length,
                              const std::string& effects = "") {
            return R"({"OTIO_SCHEMA":"Clip.1","media_reference":{"OTIO_SCHEMA":"ExternalReference.1","target_url":")" +
                   file + R"("},"effects":[)" + effects +
                   R"(],"source_range":{"OTIO_SCHEMA":"TimeRange.1","start_time":)" + time(start) +
                   R"(,"duration":)" + time(length) + "}}";
        };
        const auto track = [](const std::string& kind, const std::string& children) {
            return R"({"OTIO_SCHEMA":"Track.1","kind":")" + kind + R"(","children":[)" + children + "]}";
        };
        const std::string effect =
            R"({"OTIO_SCHEMA":"Effect.1","effect_name":"aveffect.gray","metadata":{"aveffect":{"mix":0.)" +
            std::to_string(mix) + "}}}";
        const std::string across =
            R"({"OTIO_SCHEMA":"Transition.1","transition_type":"SMPTE_Dissolve","in_offset":)" + time(12) +
            R"(,"out_offset":)" + time(12) + "}";
        std::ofstream(m_directory / "film.otio")
            << R"({"OTIO_SCHEMA":"Timeline.1","tracks":{"OTIO_SCHEMA":"Stack.1","children":[)"
            << track("Video", clip("a.mkv", 0, 48) + "," + across + "," + clip("b.mkv", 20, 40) + "," +
                                  clip("a.mkv", 60, 30, effect))
            << ","
            << track("Video",
                     R"({"OTIO_SCHEMA":"Gap.1","source_range":{"OTIO_SCHEMA":"TimeRange.1","start_time":)" +
                         time(0) + R"(,"duration":)" + time(10) + "}}," + clip("title.png", 0, 20))
            << "," << track("Audio", clip("a.mkv", 0, 118)) << "]}}";
    }

    /// The command that renders into pieces, or at once without a directory for them.
    std::string Command(const std::string& output, const std::string& more) const {
        return std::string(AVEFFECT_BIN_DIR) + "/aveffect timeline render " + (m_directory / "film.otio") +
               " " + (m_directory / output) + " -v --overwrite 2>&1 " + more;
    }
    std::string Render(const std::string& output, const std::string& more) {
        return clips::RunText(Command(output, more));
    }
    std::string Work(const std::string& name = "work") const { return "--work " + (m_directory / name); }

    void ExpectSame(const std::string& one, const std::string& other) {
        EXPECT_EQ(clips::Decode(m_directory / one), clips::Decode(m_directory / other));
        EXPECT_EQ(clips::DecodeSound(m_directory / one), clips::DecodeSound(m_directory / other));
        EXPECT_EQ(clips::Packets(m_directory / one, "v:0", "pts_time,duration_time"),
                  clips::Packets(m_directory / other, "v:0", "pts_time,duration_time"));
    }

    clips::TemporaryDirectory m_directory;
};

TEST_F(FilmPieces, AreOnlyMadeWhereSomethingChanged) {
    Render("whole.mkv", "--codec ffv1 --audio-codec flac");
    const std::string lossless = Work() + " --codec ffv1 --audio-codec flac";
    EXPECT_NE(Render("pieces.mkv", lossless).find("0 of 6 pieces"), std::string::npos);
    ExpectSame("whole.mkv", "pieces.mkv");
    EXPECT_NE(Render("pieces.mkv", lossless).find("6 of 6 pieces"), std::string::npos);
    ExpectSame("whole.mkv", "pieces.mkv");

    WriteFilm(50);
    Render("whole.mkv", "--codec ffv1 --audio-codec flac");
    EXPECT_NE(Render("pieces.mkv", lossless).find("5 of 6 pieces"), std::string::npos);
    ExpectSame("whole.mkv", "pieces.mkv");
    std::filesystem::last_write_time(m_directory / "title.png",
                                     std::filesystem::file_time_type::clock::now());
    EXPECT_NE(Render("pieces.mkv", lossless).find("5 of 6 pieces"), std::string::npos);
    EXPECT_NE(Render("pieces.mkv", lossless + " --size 64x48").find("0 of 6 pieces"), std::string::npos);
}

// Coded in an order of their own, at any moment, as often as the environment says.
TEST_F(FilmPieces, SurviveBeingKilled) {
    const std::string coded = " --codec libx264 --preset ultrafast --encoder-option bf=2 --audio-codec aac";
    Render("undisturbed.mp4", Work("other") + coded);
    const char* const asked = std::getenv("AVEFFECT_KILLS");
    const int kills = asked ? std::atoi(asked) : 4;
    for (int kill = 0; kill < kills; ++kill) {
        const double moment = 0.05 + (kill * 37 % 100) * 0.012;
        clips::Run("timeout -s KILL " + std::to_string(moment) + " " + Command("killed.mp4", Work() + coded) +
                   " >" + (m_directory / "log") + "; true");
    }
    Render("killed.mp4", Work() + coded);
    ExpectSame("undisturbed.mp4", "killed.mp4");
    for (const std::string& entry : m_directory.Entries()) EXPECT_NE(entry[0], '.') << entry;
}

// Whoever renders again hears of it again.
TEST_F(FilmPieces, AreNotKeptWhereAClipIsDamaged) {
    std::filesystem::resize_file(m_directory / "b.mkv",
                                 std::filesystem::file_size(m_directory / "b.mkv") / 2);
    const std::string lossless = Work() + " --codec ffv1 --no-sound; true";
    for (const char* const kept : {"0 of 6 pieces", "4 of 6 pieces"}) {
        const std::string said = clips::RunText(Command("film.mkv", lossless));
        EXPECT_NE(said.find(kept), std::string::npos) << said;
        EXPECT_NE(said.find("b.mkv"), std::string::npos) << said;
    }
}

TEST_F(FilmPieces, TakeNoMoreRoomThanTheyMay) {
    const auto bytes = [&] {
        uintmax_t all = 0;
        for (const auto& entry : std::filesystem::directory_iterator(m_directory / "work"))
            all += entry.file_size();
        return all;
    };
    const std::string lossless = Work() + " --codec ffv1 --no-sound";
    Render("film.mkv", lossless);
    const uintmax_t one = bytes();
    WriteFilm(20);
    const std::string limit = " --work-limit " + std::to_string(one + one / 2);
    Render("film.mkv", lossless + " --sdr" + limit);
    EXPECT_LE(bytes(), one + one / 2);
    const std::string refused = clips::RunText(
        Command("film.mkv", lossless + " --work-limit 1000 --output-format yuv444p") + "; true");
    EXPECT_NE(refused.find("raise --work-limit"), std::string::npos) << refused;
    EXPECT_NE(clips::RunText(Command("film.gif", Work()) + "; true").find("--work keeps pieces"),
              std::string::npos);
}

} // namespace
