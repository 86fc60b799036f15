// Files that are cut off are said to be, whatever they are read for, and whole ones are not.
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/cli/program.h"

namespace {

using test::Outcome;
using Strings = std::vector<std::string>;

struct File {
    std::string name;
    Strings options; ///< of the ffmpeg program; sound alone where there is no picture
};

const Strings kDrawn = {"-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=1"};
const Strings kSound = {"-f", "lavfi", "-i", "sine=frequency=440:duration=1:sample_rate=48000"};

std::vector<File> FilesOf(const std::string& kind) {
    std::ifstream table(AVEFFECT_TEST_DATA "/support/media_kinds.txt");
    std::vector<File> files;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line);
        std::string word, name;
        words >> word >> name;
        if (word == kind) files.push_back({name, {std::istream_iterator<std::string>(words), {}}});
    }
    EXPECT_GT(files.size(), 10u) << kind;
    return files;
}

class CutOff : public test::ProgramTest {
protected:
    void Make(const File& file, Strings inputs) const {
        inputs.insert(inputs.end(), file.options.begin(), file.options.end());
        inputs.insert(inputs.end(), {"-flags", "+bitexact", "whole." + file.name});
        Ffmpeg(inputs);
    }
    void Cut(const std::string& name, int percent) const {
        const std::string bytes = test::ReadFile(Path("whole." + name));
        // An odd size never lies between two packets of a transport stream, where nothing would be missed.
        const size_t size = bytes.size() * static_cast<size_t>(percent) / 100 | 1;
        test::WriteFile(Path("cut." + name), bytes.substr(0, std::min(size, bytes.size() - 1)));
    }
    // The file whole, and cut off early, in the middle, late and before its last byte. Where nothing is left
    // to decode it is no input.
    void Try(const File& file, const Strings& inputs, const Strings& options) const {
        SCOPED_TRACE(file.name);
        Make(file, inputs);
        const auto render = [&](const std::string& kind) {
            Strings command = {"render", kind + file.name};
            command.insert(command.end(), options.begin(), options.end());
            return Aveffect(command);
        };
        const Outcome whole = render("whole.");
        EXPECT_EQ(whole.exitCode, 0);
        EXPECT_EQ(whole.messages.find(file.name), std::string::npos) << whole.messages;
        for (const int percent : {20, 50, 80, 100}) {
            Cut(file.name, percent);
            const Outcome cut = render("cut.");
            EXPECT_TRUE(cut.exitCode == 6 || cut.exitCode == 3) << percent << " " << cut.exitCode;
            EXPECT_NE(cut.messages.find("cut." + file.name), std::string::npos) << percent << cut.messages;
        }
    }
};

TEST_F(CutOff, Stills) {
    Strings one = kDrawn;
    one.insert(one.end(), {"-frames:v", "1"});
    for (const File& file : FilesOf("still")) Try(file, one, {"out.png", "-e", "gray", "--overwrite"});
}

TEST_F(CutOff, Clips) {
    Strings both = kDrawn;
    both.insert(both.end(), kSound.begin(), kSound.end());
    both.insert(both.end(), {"-g", "10"});
    for (const File& file : FilesOf("clip"))
        Try(file, both, {"out.mkv", "--codec", "ffv1", "--audio-codec", "flac", "--overwrite"});
}

TEST_F(CutOff, Sounds) {
    for (const File& file : FilesOf("sound"))
        Try(file, kSound, {"out.mka", "-a", "audio_volume:audio_volume=50", "--overwrite"});
}

TEST_F(CutOff, IsSaidWhateverTheFileIsReadFor) {
    MakeClip("b.mkv", "160x120", 25);
    MakeStill("b.png", "ff0000");
    Make({"a.jpg", {"-frames:v", "1"}}, kDrawn);
    Make({"a.avi", {"-c:v", "mjpeg"}}, kDrawn);
    Make({"a.flac", {}}, kSound);
    for (const char* name : {"a.jpg", "a.avi", "a.flac"}) Cut(name, 70);
    const auto said = [&](Strings command) {
        command.push_back("--overwrite");
        Outcome outcome = Aveffect(command);
        EXPECT_EQ(outcome.exitCode, 6) << command[0] << outcome.messages;
        EXPECT_NE(outcome.messages.find("cut.a."), std::string::npos) << outcome.messages;
        return outcome;
    };
    const std::string fade = "EffectNameMkFade";
    said({"frame", "cut.a.jpg", "out.png"});
    said({"transition", "cut.a.jpg", "b.png", "out.mkv", "-e", fade});
    said({"transition", "b.png", "cut.a.jpg", "out.mkv", "-e", fade});
    said({"transition", "cut.a.avi", "b.mkv", "out.mkv", "-e", fade, "--live", "--duration", "0.5"});
    said({"join", "b.mkv", "cut.a.avi", "out.mkv", "-e", fade, "--duration", "0.2"});
    said({"sheet", "cut.a.jpg", "b.png", "out.png"});
    std::filesystem::copy_file(Path("whole.a.jpg"), Path("cut.a.1.jpg"));
    std::filesystem::copy_file(Path("cut.a.jpg"), Path("cut.a.2.jpg"));
    EXPECT_NE(said({"render", "cut.a.%d.jpg", "out.mkv"}).messages.find("cut.a.2.jpg: it ends"),
              std::string::npos);
    said({"render", "b.mkv", "out.mkv", "-e", fade + ":EffectPropVFPath1=b.png:EffectPropVFPath2=cut.a.jpg"});
    said({"render", "b.mkv", "out.mkv", "--right", "cut.a.avi", "-e", "EffectName3DRenderEffect"});
    said({"render", "b.mkv", "out.mkv", "-a", "audio_replace:audio_replace_path=cut.a.flac"});

    // Each decoder has a line of its own, and nobody is told that all is done.
    const Outcome json = said({"render", "cut.a.jpg", "out.mkv", "--progress", "json"});
    EXPECT_NE(json.messages.find("mjpeg decoder"), std::string::npos) << json.messages;
    std::istringstream lines(json.output);
    for (std::string line; std::getline(lines, line);) {
        const auto percent = nlohmann::json::parse(line)["percent"];
        EXPECT_TRUE(percent.is_null() || percent < 100) << line;
    }
}

} // namespace
