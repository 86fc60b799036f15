// Replaced sound of real files, through the real media manager.
#include <algorithm>

#include <gtest/gtest.h>

#include "host/media/media_manager.h"
#include "tests/host/clips.h"
#include "tests/support/host_sound.h"
#include "tests/support/plugin.h"

namespace {

using clips::Bytes;

class ReplacedSound : public testing::Test {
protected:
    test::AudioProc Open(const std::string& path, const char* loop) {
        return test::MakeAudio("audio_replace",
                               {{"audio_replace_path", path.c_str()}, {"audio_replace_loop", loop}},
                               &m_manager);
    }
    /// The sound of so many bytes, in frames of a size that divides nothing.
    static Bytes Play(AVBased::IAudioProc& proc, size_t bytes) {
        Bytes all;
        while (all.size() < bytes) {
            test::HostSound frame({.samples = 1001});
            frame.Randomise(1);
            proc.ProcFrameInPlace(&frame);
            all.insert(all.end(), frame.buffers[0].begin(), frame.buffers[0].end());
        }
        all.resize(bytes);
        return all;
    }

    clips::TemporaryDirectory m_directory;
    aveffect::MediaManager m_manager;
};

TEST_F(ReplacedSound, IsTheFilesSampleBySample) {
    // What a change of rate still holds back at the file's end is not asked for: some 20 samples.
    constexpr size_t kHeldBack = 20 * 4;
    struct Case {
        const char *name, *options;
        size_t unsure = 0;
    };
    const Case files[] = {
        {"same.wav", "-c:a pcm_s16le"},
        {"packed.flac", "-c:a flac -sample_fmt s16"},
        {"float.wav", "-c:a pcm_f32le"},
        {"apart.mka", "-c:a aac"},
        {"mono.wav", "-c:a pcm_s16le -ac 1"},
        {"slow.wav", "-c:a pcm_s16le -ar 44100", kHeldBack},
        {"fast.flac", "-c:a flac -sample_fmt s32 -ar 96000", kHeldBack},
        {"picture.mkv", "-f lavfi -i testsrc2=s=64x48:r=25:d=0.7 -c:v libx264 -c:a pcm_s16le"},
    };
    for (const auto& [name, options, unsure] : files) {
        SCOPED_TRACE(name);
        const std::string path = clips::MakeSound(m_directory / name, options);
        const Bytes expected = clips::DecodeSound(path);
        ASSERT_GT(expected.size(), 120000u);
        const Bytes actual = Play(*Open(path, "0"), expected.size() + 50000);
        const size_t sure = expected.size() - unsure;
        const auto difference = std::mismatch(expected.begin(), expected.end(), actual.begin());
        EXPECT_GE(difference.first - expected.begin(), static_cast<ptrdiff_t>(sure));
        EXPECT_EQ(std::count(actual.begin() + static_cast<ptrdiff_t>(expected.size()), actual.end(), 0),
                  50000);
    }
}

TEST_F(ReplacedSound, LoopsAndSeeks) {
    const std::string path = clips::MakeSound(m_directory / "same.wav", "-c:a pcm_s16le");
    const Bytes once = clips::DecodeSound(path);
    const Bytes looped = Play(*Open(path, "1"), 3 * once.size());
    for (size_t at = 0; at < looped.size(); ++at) ASSERT_EQ(looped[at], once[at % once.size()]) << at;

    // The item that holds the moment is heard from its beginning.
    for (const char* loop : {"0", "1"}) {
        const test::AudioProc proc = Open(path, loop);
        Play(*proc, 5000);
        constexpr size_t kBytesAMillisecond = 48 * 4;
        ASSERT_TRUE(proc->Seek(loop[0] == '0' ? 4'000'000 : 4'000'000 + 7'000'000)); // 400 ms
        const Bytes rest = Play(*proc, 20000);
        const auto found = std::search(once.begin(), once.end(), rest.begin(), rest.end());
        ASSERT_NE(found, once.end());
        const auto place = static_cast<size_t>(found - once.begin());
        EXPECT_LE(place, 400 * kBytesAMillisecond);
        EXPECT_GT(place, 300 * kBytesAMillisecond);
    }
}

} // namespace
