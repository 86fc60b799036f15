// The commands of the guide's chapter on sound, in the programs themselves: what comes out is the plug-in's.
#include <cstring>

#include "tests/cli/program.h"
#include "tests/support/host_sound.h"
#include "tests/support/plugin.h"

namespace {

using namespace test;

constexpr unsigned kRate = 48000, kMilliseconds = 1900;

class SoundHosts : public ProgramTest {
protected:
    SoundHosts() {
        FindFirstIn(AVEFFECT_SOURCE_DIR "/tests/adapters/programs");
        // As if installed for a user of their own.
        std::filesystem::create_directory_symlink(AVEFFECT_BIN_DIR "/..", Path(".local"));
        Shell("ffmpeg -v error -f lavfi -i sine=r=48000:d=1.9,volume=4 -c:a pcm_s16le mono.wav\n"
              "ffmpeg -v error -i mono.wav -af 'pan=stereo|c0=c0|c1=c0' -c:a pcm_s16le in.wav");
    }

    /// What the script prints.
    std::string Shell(const std::string& script) const {
        RunningProgram shell(
            {"env", "HOME=" + m_directory.string(), "QT_QPA_PLATFORM=offscreen", "bash", "-euc", script},
            m_directory);
        const Outcome outcome = shell.Wait();
        EXPECT_EQ(outcome.exitCode, 0) << script << outcome.messages;
        return outcome.output + outcome.messages;
    }

    /// 16-bit samples, the mean of two channels.
    std::vector<int16_t> Samples(const std::string& name) const {
        Shell("ffmpeg -v error -y -i " + name + " -ac 1 -f s16le samples.raw");
        const std::string bytes = ReadFile(Path("samples.raw"));
        std::vector<int16_t> samples(bytes.size() / 2);
        std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
        return samples;
    }
};

std::vector<std::string> CommandBlocks(const std::string& guide) {
    const std::string chapter = guide.substr(guide.find("\n## Sound"));
    const std::string sound = chapter.substr(0, chapter.find("\n## ", 1));
    std::vector<std::string> blocks;
    constexpr char kBegin[] = "```sh\n";
    for (size_t at = 0; (at = sound.find(kBegin, at)) != std::string::npos;) {
        at += std::strlen(kBegin);
        blocks.push_back(sound.substr(at, sound.find("```", at) - at));
    }
    return blocks;
}

/// The stretch of samples through the plug-in, as one frame.
void Process(std::vector<int16_t>& samples, size_t first, size_t count, const AudioProc& proc) {
    HostSound stretch({.channels = 1, .samples = static_cast<unsigned>(count)});
    std::memcpy(stretch.buffers[0].data(), &samples[first], count * 2);
    proc->ProcFrameInPlace(&stretch);
    std::memcpy(&samples[first], stretch.buffers[0].data(), count * 2);
}

TEST_F(SoundHosts, RunTheGuidesCommands) {
    const std::vector<int16_t> tone = Samples("mono.wav");
    ASSERT_EQ(tone.size(), kRate / 1000 * kMilliseconds);
    std::vector<int16_t> softer = tone, faded = tone;
    Process(softer, 0, tone.size(), MakeAudio("audio_volume", {{"audio_volume", "50"}}));
    Process(faded, kRate / 2, kRate,
            MakeAudio("audio_fader",
                      {{"fader_duration", "1000"}, {"fader_start_scale", "0"}, {"fader_end_scale", "1"}}));

    const std::vector<std::string> blocks =
        CommandBlocks(ReadFile(AVEFFECT_SOURCE_DIR "/docs/in-other-programs.md"));
    unsigned heard = 0;
    for (size_t i = 1; i < blocks.size(); ++i) {
        Shell(blocks[0] + blocks[i]);
        for (const auto& [name, expected] :
             {std::pair("softer.wav", &softer), std::pair("faded.wav", &faded)}) {
            if (!std::filesystem::exists(Path(name))) continue;
            const std::vector<int16_t> actual = Samples(name);
            ASSERT_GE(actual.size(), expected->size()) << blocks[i];
            // Programs round in ways of their own, and some add noise of a step.
            for (size_t at = 0; at < expected->size(); ++at)
                ASSERT_NEAR(actual[at], (*expected)[at], 2) << name << ", " << at << ": " << blocks[i];
            std::filesystem::remove(Path(name));
            ++heard;
        }
    }
    EXPECT_EQ(heard, 13u);
}

TEST_F(SoundHosts, AreToldWhatTheCatalogueSays) {
    const std::string library = AVEFFECT_BIN_DIR "/../lib/";
    const std::string ladspa = Shell("analyseplugin " + library + "ladspa/aveffect.so");
    for (const char* line :
         {"\"Volume (%)\" input, control, 0 to 12799, default 100, integer",
          "\"Length (ms)\" input, control, -1 to 2.14748e+09, default -1, integer",
          "\"End gain\" input, control, -1 to 1, default -1\n", "Normal or Hard Real-Time"})
        EXPECT_NE(ladspa.find(line), std::string::npos) << line << "\n" << ladspa;

    const std::string bundle = library + "lv2/aveffect.lv2";
    EXPECT_NE(Shell("lv2_validate " + bundle + "/*.ttl").find("Found 0 errors"), std::string::npos);
    const std::string lv2 = Shell("LV2_PATH=" + library + "lv2 lv2info urn:aveffect:audio_fader");
    for (const char* line :
         {"Name:              Fade sound", "slow-fade-in", "Maximum:     2147483520.000000"})
        EXPECT_NE(lv2.find(line), std::string::npos) << line << "\n" << lv2;
}

} // namespace
