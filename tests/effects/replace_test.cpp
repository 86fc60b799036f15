// Replaced sound, through a manager whose files are written down here. Sound of the frames' own kind passes
// the resampler unchanged, so every byte is known.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

#include "tests/support/host_manager.h"
#include "tests/support/host_sound.h"
#include "tests/support/plugin.h"
#include "tests/support/record.h"

namespace {

using namespace AVBased;
using namespace test;
using Bytes = GuardedBytes;

/// What a file holds, in order.
struct Item {
    enum class Kind { Sound, Video, NoObject, NoBuffer, Failure } kind = Kind::Sound;
    unsigned samples = 0;
    int format = sfSigned16;
    unsigned rate = 48000;
};

struct File {
    std::vector<Item> items;
    unsigned duration = 1000;
    bool endless = false; ///< the items again and again, without an end
    bool seekable = true;
    int failsFirst = 0; ///< reads that fail, before any
};

class Replace : public testing::Test {
protected:
    AudioProc Open(const char* loop) {
        GetBaseException()->Clear();
        m_Manager.sought.clear();
        m_Manager.sources["file"] = {
            .make = [this](AVItem& item, size_t number) { return Make(item, number); },
            .seekable = m_File.seekable,
            .duration = m_File.duration};
        return MakeAudio("audio_replace", {{"audio_replace_loop", loop}, {"audio_replace_path", "file"}},
                         &m_Manager);
    }
    /// The sound of so many samples in one frame.
    static std::vector<uint16_t> Take(IAudioProc& proc, unsigned samples) {
        HostSound sound({.samples = samples});
        sound.Randomise(samples);
        proc.ProcFrameInPlace(&sound);
        std::vector<uint16_t> values(samples * 2);
        std::memcpy(values.data(), sound.buffers[0].data(), values.size() * 2);
        return values;
    }
    /// Frames of many sizes hold the numbers below, in turns when the file loops, then silence.
    static void ExpectCounts(IAudioProc& proc, unsigned samplesOfFile, bool loops) {
        unsigned at = 0;
        for (const unsigned samples : {1u, 5u, 1024u, 3u, 700u, 2000u, 4u, 1u})
            for (const uint16_t value : Take(proc, samples)) {
                const bool silent = !loops && at >= samplesOfFile * 2;
                ASSERT_EQ(value, silent ? 0 : at % (samplesOfFile * 2)) << "number " << at;
                ++at;
            }
    }

    /// Each sample of a file is its number, so that nothing can be taken for something else.
    bool Make(AVItem& item, size_t number) {
        if (number == 0) m_Next = m_Sample = 0;
        if (m_File.failsFirst > 0 && m_File.failsFirst--) return false;
        if (m_Next == m_File.items.size() && m_File.endless) m_Next = 0;
        if (m_Next == m_File.items.size()) return false;
        const Item& next = m_File.items[m_Next++];
        if (next.kind == Item::Kind::Failure) return false;
        item.kind = next.kind == Item::Kind::Video ? 1 : 2;
        if (next.kind == Item::Kind::NoObject) return true;
        m_Sound = std::make_unique<HostSound>(
            SoundShape{.format = next.format, .rate = next.rate, .samples = next.samples});
        m_Sound->hasBuffers = next.kind != Item::Kind::NoBuffer;
        if (next.format == sfSigned16) {
            std::vector<uint16_t> values(next.samples * 2);
            std::iota(values.begin(), values.end(), static_cast<uint16_t>(m_Sample * 2));
            if (!values.empty()) std::memcpy(m_Sound->buffers[0].data(), values.data(), values.size() * 2);
            m_Sample += next.samples;
        }
        item.object = static_cast<IRawAudioFrame*>(m_Sound.get());
        return true;
    }

    File m_File;
    HostManager m_Manager;
    size_t m_Next = 0, m_Sample = 0;
    std::unique_ptr<HostSound> m_Sound;
};

TEST_F(Replace, PlaysTheFileThenSilenceOrTheFileAgain) {
    using Kind = Item::Kind;
    for (const std::vector<Item>& items :
         std::initializer_list<std::vector<Item>>{{{.samples = 3}},
                                                  {{.samples = 750}, {.samples = 750}, {.samples = 1}},
                                                  {{.kind = Kind::Video},
                                                   {.samples = 400},
                                                   {.kind = Kind::NoObject},
                                                   {.samples = 0},
                                                   {.samples = 2500}},
                                                  {{.samples = 9000}}}) {
        unsigned total = 0;
        for (const Item& item : items) total += item.samples;
        for (const bool loops : {false, true}) {
            SCOPED_TRACE(std::to_string(total) + (loops ? " samples, again and again" : " samples, once"));
            m_File = {.items = items};
            const AudioProc proc = Open(loops ? "1" : "0");
            ASSERT_NO_FATAL_FAILURE(ExpectCounts(*proc, total, loops));
            EXPECT_EQ(m_Manager.sought.empty(), !loops || total > 3738);
            EXPECT_EQ(Code(), 0);
        }
    }
}

TEST_F(Replace, EndsWhereReadingFailsOrGivesNoSound) {
    using Kind = Item::Kind;
    // A failure in the middle is an end.
    m_File.items = {{.samples = 30}, {.kind = Kind::Failure}, {.samples = 30}};
    ASSERT_NO_FATAL_FAILURE(ExpectCounts(*Open("1"), 30, true));
    // When the very first read fails, the file may still have a beginning.
    m_File = {.items = {{.samples = 30}}, .failsFirst = 1};
    ASSERT_NO_FATAL_FAILURE(ExpectCounts(*Open("1"), 30, true));
    EXPECT_EQ(m_Manager.sought.front(), 0u);
    // Nothing to hear from one beginning to the next, whatever kind of nothing: silence, and no end of
    // seeking.
    for (const std::vector<Item>& items : std::initializer_list<std::vector<Item>>{
             {},
             {{.kind = Kind::Video}, {.samples = 0}, {.kind = Kind::NoObject}},
             {{.samples = 100, .format = 5}},
             {{.kind = Kind::NoBuffer, .samples = 10}}}) {
        m_File = {.items = items};
        const AudioProc proc = Open("1");
        EXPECT_TRUE(proc->Seek(0));
        EXPECT_EQ(Take(*proc, 50), std::vector<uint16_t>(100));
        EXPECT_EQ(Take(*proc, 60), std::vector<uint16_t>(120));
        EXPECT_LE(m_Manager.sought.size(), 2u);
    }
    // A file that cannot be begun again has ended.
    m_File = {.items = {{.samples = 30}}, .seekable = false};
    ASSERT_NO_FATAL_FAILURE(ExpectCounts(*Open("1"), 30, false));
    // Pictures for a while are none of these; for ever they are.
    m_File = {.items = std::vector<Item>(70000, {.kind = Kind::NoObject})};
    m_File.items.push_back({.samples = 30});
    ASSERT_NO_FATAL_FAILURE(ExpectCounts(*Open("1"), 30, true));
    m_File = {.items = {{.kind = Kind::NoObject}}, .endless = true};
    const AudioProc barren = Open("0");
    GetBaseException()->Clear();
    EXPECT_EQ(Take(*barren, 10), std::vector<uint16_t>(20));
    EXPECT_EQ(Take(*barren, 10), std::vector<uint16_t>(20)) << "without another such search";
    // Nor does sound come of pieces shorter than the filter that each makes the resampler build.
    m_File = {.items = {{.samples = 1, .rate = 44100}, {.samples = 1, .rate = 8000}}, .endless = true};
    EXPECT_EQ(Take(*Open("0"), 10), std::vector<uint16_t>(20));
    EXPECT_LT(m_Sample, 100u);
    EXPECT_EQ(Code(), 0);
}

// A resampler holds back more than such a file has.
TEST_F(Replace, RepeatsTheShortestFilesAtAnotherRate) {
    for (const unsigned samples : {4u, 17u, 60u})
        for (const unsigned rate : {8000u, 44100u, 192000u}) {
            m_File = {.items = {{.samples = samples, .rate = rate}}};
            const AudioProc proc = Open("1");
            for (int i = 0; i < 3; ++i) {
                const std::vector<uint16_t> sound = Take(*proc, 1000);
                EXPECT_GT(
                    std::count_if(sound.begin(), sound.end(), [](uint16_t value) { return value != 0; }),
                    1500)
                    << samples << " samples at " << rate;
            }
            EXPECT_EQ(Code(), 0);
        }
}

TEST_F(Replace, SeeksInTheFileAndForgetsWhatIsQueued) {
    m_File.items = {{.samples = 100}, {.samples = 100}};
    EXPECT_FALSE(MakeAudio("audio_replace")->Seek(0)) << "no file";
    const AudioProc proc = Open("0");
    Take(*proc, 30);
    EXPECT_TRUE(proc->Seek(12'345'678));
    EXPECT_EQ(Take(*proc, 1)[0], 0) << "the rest of the first hundred is gone";
    proc->Seek(25'000'000);
    proc->SetProperty("audio_replace_loop", "1");
    proc->Seek(25'000'000); // 2500 ms of 1000
    proc->Seek(9'999);      // beyond 1000, counted as it is: 0 ms
    proc->Seek(1000);
    proc->Seek(-10'000);
    m_Manager.sources["file"].seekable = false;
    EXPECT_FALSE(proc->Seek(40'000'000'000'000)); // 4000000000 ms
    EXPECT_EQ(m_Manager.sought, (std::vector<unsigned>{1234, 2500, 500, 0, 0, 0xFFFFFFFF, 0}));
    m_File = {.items = {}, .duration = 0};
    Open("1")->Seek(25'000'000);
    EXPECT_EQ(m_Manager.sought, std::vector<unsigned>{2500});
}

TEST_F(Replace, FollowsTheFramesKindAndKeepsWhatIsConverted) {
    m_File.items = {{.samples = 10}, {.samples = 10}};
    const AudioProc proc = Open("0");
    Take(*proc, 8); // four values of the first ten samples stay queued
    HostSound wide({.format = sfSigned32, .samples = 4});
    proc->ProcFrameInPlace(&wide);
    int32_t values[8];
    std::memcpy(values, wide.buffers[0].data(), sizeof values);
    // Two numbers of 16 bits make one of 32; then those of the next ten samples, in 32 bits.
    const int32_t expected[] = {16 | 17 << 16, 18 | 19 << 16, 20 << 16, 21 << 16,
                                22 << 16,      23 << 16,      24 << 16, 25 << 16};
    EXPECT_TRUE(std::equal(values, values + 8, expected));

    // One buffer a channel: the first is filled.
    m_File.items = {{.samples = 4}};
    const AudioProc planar = Open("1");
    HostSound apart({.interleaved = false, .samples = 4});
    apart.Randomise(9);
    const Bytes second = apart.buffers[1];
    planar->ProcFrameInPlace(&apart);
    EXPECT_EQ(apart.buffers[0], (Bytes{0, 0, 2, 0, 4, 0, 6, 0}));
    EXPECT_EQ(apart.buffers[1], second);
}

TEST_F(Replace, RecordsWhyAFrameStaysAsItIs) {
    m_File.items = {{.samples = 10}};
    const auto refused = [&](IAudioProc& proc, HostSound sound) {
        sound.Randomise(2);
        const auto original = sound.buffers;
        GetBaseException()->Clear();
        EXPECT_EQ(proc.ProcFrame(&sound), nullptr);
        EXPECT_EQ(Code(), 10021008);
        proc.ProcFrameInPlace(&sound);
        EXPECT_EQ(sound.buffers, original);
        return Message();
    };
    EXPECT_NE(refused(*MakeAudio("audio_replace"), HostSound({.samples = 10})).find("audio_replace_path"),
              std::string::npos);
    const AudioProc proc = Open("0");
    HostSound without({.samples = 10});
    without.hasBuffers = false;
    EXPECT_EQ(refused(*proc, without), "get audio buffer error.");
    EXPECT_EQ(refused(*proc, HostSound({.samples = 0})), "get audio buffer error.");
    HostSound unserved({.samples = 10});
    unserved.shape.format = 5;
    EXPECT_NE(refused(*proc, unserved), "");
    EXPECT_EQ(Take(*proc, 1)[0], 0) << "none of these took sound";
}

TEST_F(Replace, OwnsItsFileAndInsistsOnOne) {
    {
        const AudioProc proc = Open("0");
        EXPECT_EQ(m_Manager.opened.size(), 1u);
        proc->SetProperty("audio_replace_path", "file");
        EXPECT_EQ(m_Manager.opened.size(), 2u);
        EXPECT_EQ(m_Manager.readers, 1);
        EXPECT_STREQ(proc->GetProperty("audio_replace_path", nullptr), "file");
        EXPECT_DEATH(proc->SetProperty("audio_replace_path", "missing"), "Assertion .m_pSource. failed");
    }
    EXPECT_EQ(m_Manager.readers, 0);
    EXPECT_DEATH(MakeAudio("audio_replace")->SetProperty("audio_replace_path", "file"), "m_pSource");
}

} // namespace
