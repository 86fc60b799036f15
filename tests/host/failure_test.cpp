/// Bad input and bad output: one line each, and nothing left behind.
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

using aveffect::ErrorKind;
using clips::ExpectFailure;
using Names = std::vector<std::string>;

TEST(Input, EachKindOfBadFileHasItsOwnWords) {
    const clips::TemporaryDirectory directory;
    std::ofstream(directory / "empty.mp4").close();
    std::ofstream(directory / "text.txt") << "Not a clip, whatever its name says.\n";
    std::ofstream(directory / "text.mp4") << "Not a clip, whatever its name says.\n";
    clips::Run("ffmpeg -v error -nostdin -f lavfi -i sine=d=0.2 " + (directory / "sound.wav"));
    mkdir((directory / "folder").c_str(), 0777);
    const Names before = directory.Entries();
    const auto refused = [&](const std::string& name, const std::string& word) {
        const auto failure =
            clips::FailureOf([&] { clips::Render(directory / name, directory / "out.mkv"); });
        ExpectFailure(failure, ErrorKind::Input, word);
        EXPECT_NE(failure.text.find(name), std::string::npos) << failure.text;
    };
    refused("missing.mp4", "no such file");
    refused("empty.mp4", "empty");
    refused("folder", "directory");
    refused("text.txt", "no clip or picture");
    refused("text.mp4", "no clip or picture");
    refused("sound.wav", "no pictures");
    if (geteuid() != 0) {
        chmod((directory / "text.mp4").c_str(), 0);
        refused("text.mp4", "Permission denied");
    }
    EXPECT_EQ(directory.Entries(), before);
}

TEST(Input, DamagedPicturesAreSaid) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.avi", "64x48", 25, 1, "-c:v mjpeg -pix_fmt yuvj420p");
    std::fstream file(input, std::ios::in | std::ios::out | std::ios::binary);
    const auto size = static_cast<std::streamoff>(std::filesystem::file_size(input));
    const std::string junk(4000, '\xff');
    file.seekp(size / 2);
    file.write(junk.data(), static_cast<std::streamsize>(junk.size()));
    file.close();
    EXPECT_TRUE(clips::Render(input, directory / "out.mkv", "ffv1").inputDamage);
}

class Output : public testing::Test {
protected:
    Output()
        : m_input(clips::Make(m_directory / "in.mkv", "64x48", 25, 1, "-c:v ffv1 -pix_fmt yuv420p")) {
        m_options.input = m_input;
        m_options.videoCodec = "ffv1";
    }
    clips::Failure RenderTo(const std::string& output) {
        m_options.output = output;
        return clips::FailureOf([&] { clips::Render(m_options, m_cancel); });
    }

    clips::TemporaryDirectory m_directory;
    std::string m_input;
    aveffect::RenderOptions m_options;
    std::atomic<bool> m_cancel{false};
};

TEST_F(Output, InputsAreNeverReplaced) {
    m_options.overwrite = true;
    std::filesystem::create_hard_link(m_input, m_directory / "alias.mkv");
    ExpectFailure(RenderTo(m_input), ErrorKind::Output, "input itself");
    ExpectFailure(RenderTo(m_directory / "alias.mkv"), ErrorKind::Output, "input itself");
    EXPECT_EQ(m_directory.Entries(), (Names{"alias.mkv", "in.mkv"}));
}

TEST_F(Output, UnwritablePlacesAreNamed) {
    mkdir((m_directory / "folder.mkv").c_str(), 0777);
    ExpectFailure(RenderTo(m_directory / "folder.mkv"), ErrorKind::Output, "directory");
    ExpectFailure(RenderTo(m_directory / "missing/out.mkv"), ErrorKind::Output, "No such file or directory");
    if (geteuid() != 0) {
        chmod((m_directory / "folder.mkv").c_str(), 0555);
        ExpectFailure(RenderTo(m_directory / "folder.mkv/out.mkv"), ErrorKind::Output, "Permission denied");
    }
    EXPECT_EQ(m_directory.Entries(), (Names{"folder.mkv", "in.mkv"}));
}

TEST_F(Output, FileThatAppearsMeanwhileIsNotReplaced) {
    const std::string output = m_directory / "out.mkv";
    aveffect::RenderObserver observer;
    observer.note = [&](const std::string&) { std::ofstream(output) << "precious"; };
    m_options.output = output;
    m_options.effects = {aveffect::ParseEffect("invert", false)};
    const auto failure =
        clips::FailureOf([&] { aveffect::Render(clips::ThePlugin(), m_options, observer, m_cancel); });
    ExpectFailure(failure, ErrorKind::Output, "exists");
    EXPECT_EQ(clips::RunText("cat " + output), "precious");
    EXPECT_EQ(m_directory.Entries(), (Names{"in.mkv", "out.mkv"}));
}

} // namespace
