/// Bad input, bad output and interruption: one line each, and nothing left behind.
#include <csignal>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

using aveffect::ErrorKind;
using Names = std::vector<std::string>;

void ExpectFailure(const clips::Failure& failure, ErrorKind kind, const std::string& word) {
    EXPECT_TRUE(failure.failed);
    EXPECT_EQ(failure.kind, kind) << failure.text;
    EXPECT_NE(failure.text.find(word), std::string::npos) << failure.text;
    EXPECT_EQ(failure.text.find('\n'), std::string::npos) << failure.text;
}

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

TEST(Input, TruncatedClipsAreRenderedAsFarAsTheyGo) {
    const clips::TemporaryDirectory directory;
    const auto truncated = [&](const std::string& name, const std::string& options) {
        const std::string whole = clips::Make(directory / ("whole" + name), "64x48", 25, 4, options, true);
        const std::string input = directory / name;
        std::filesystem::copy_file(whole, input);
        std::filesystem::resize_file(input, std::filesystem::file_size(whole) / 2);
        const auto result = clips::Render(input, directory / (name + ".mkv"), "ffv1");
        ASSERT_TRUE(result.inputDamage) << name;
        EXPECT_NE(result.inputDamage->find(" of about 10"), std::string::npos) << *result.inputDamage;
        EXPECT_GT(result.frames, 20);
        EXPECT_LT(result.frames, 95);
        const auto written = clips::Packets(directory / (name + ".mkv"), "v:0", "pts_time");
        EXPECT_EQ(written.size(), static_cast<size_t>(result.frames));
        EXPECT_FALSE(clips::Render(whole, directory / ("whole" + name + ".mkv"), "ffv1").inputDamage);
    };
    truncated("a.mkv", "-c:v libx264 -g 10 -pix_fmt yuv420p -c:a aac");
    truncated("a.mp4", "-c:v libx264 -g 10 -pix_fmt yuv420p -c:a aac -movflags +faststart");
}

TEST(Input, DamagedPicturesAreSaidAndNothingDecodableIsAnError) {
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

    clips::Make(directory / "cut.png", "64x48", 25, 0.04, "-frames:v 1");
    std::filesystem::resize_file(directory / "cut.png", 60);
    const auto failure =
        clips::FailureOf([&] { clips::Render(directory / "cut.png", directory / "none.mkv"); });
    ExpectFailure(failure, ErrorKind::Input, "cut.png");
    EXPECT_EQ(directory.Entries(), (Names{"cut.png", "in.avi", "out.mkv"}));
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

TEST_F(Output, ExistingFilesAreReplacedOnlyOnRequest) {
    const std::string output = m_directory / "out.mkv";
    std::ofstream(output) << "precious";
    chmod(output.c_str(), 0640);
    ExpectFailure(RenderTo(output), ErrorKind::Output, "--overwrite");
    EXPECT_EQ(clips::RunText("cat " + output), "precious");
    m_options.overwrite = true;
    EXPECT_FALSE(RenderTo(output).failed);
    EXPECT_EQ(clips::Packets(output, "v:0", "pts_time").size(), 25u);
    struct stat info = {};
    ASSERT_EQ(stat(output.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    ExpectFailure(RenderTo(m_input), ErrorKind::Output, "input itself");
    std::filesystem::create_hard_link(m_input, m_directory / "alias.mkv");
    ExpectFailure(RenderTo(m_directory / "alias.mkv"), ErrorKind::Output, "input itself");
    EXPECT_EQ(m_directory.Entries(), (Names{"alias.mkv", "in.mkv", "out.mkv"}));
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

TEST_F(Output, FullDisksEndTheRenderAndLeaveNothing) {
    ExpectFailure(RenderTo("/dev/full"), ErrorKind::Output, "No space left on device");
    // A limit on the file's size stands for the disk that fills up half way.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    for (const rlim_t bytes : {rlim_t{100}, rlim_t{20000}}) {
        const rlimit limit{bytes, unlimited.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const clips::Failure failure = RenderTo(m_directory / "out.mkv");
        setrlimit(RLIMIT_FSIZE, &unlimited);
        ExpectFailure(failure, ErrorKind::Output, "File too large");
    }
    EXPECT_EQ(m_directory.Entries(), Names{"in.mkv"});
    EXPECT_FALSE(RenderTo("/dev/null").failed);
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

TEST_F(Output, InterruptionLeavesNothing) {
    m_options.input = clips::Make(m_directory / "long.mp4", "1280x720", 25, 4,
                                  "-c:v libx264 -preset ultrafast -pix_fmt yuv420p");
    m_options.videoCodec = "libx264";
    m_options.preset = "slow";
    m_options.effects = {aveffect::ParseEffect("invert", false)};
    std::atomic<bool> progressed{false};
    aveffect::RenderObserver observer;
    observer.progress = [&](const aveffect::RenderProgress& progress) {
        EXPECT_EQ(progress.framesExpected.value_or(0), 100);
        progressed = true;
        m_cancel = true;
    };
    m_options.output = m_directory / "out.mp4";
    const auto failure =
        clips::FailureOf([&] { aveffect::Render(clips::ThePlugin(), m_options, observer, m_cancel); });
    ExpectFailure(failure, ErrorKind::Interrupted, "nothing was written");
    EXPECT_TRUE(progressed);
    EXPECT_EQ(clips::FailureOf([&] { clips::Render(m_options, m_cancel); }).kind, ErrorKind::Interrupted);
    EXPECT_EQ(m_directory.Entries(), (Names{"in.mkv", "long.mp4"}));
}

} // namespace
