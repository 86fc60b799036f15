/// The media access that processors read files through.
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "aveffect/base_tools.h"
#include "aveffect/pixel_format.h"
#include "host/media/media_manager.h"
#include "host/support/error.h"
#include "tests/host/clips.h"

namespace {

struct ReleaseReader {
    void operator()(AVBased::IAVReader* reader) const { reader->Release(); }
};
using Reader = std::unique_ptr<AVBased::IAVReader, ReleaseReader>;

class MediaManager : public testing::Test {
protected:
    MediaManager()
        : m_input(clips::Make(m_directory / "in.mkv", "64x48", 25, 2,
                              "-c:v libx264rgb -qp 0 -g 50 -c:a pcm_s16le", true)) {}
    Reader Open(const std::string& url) {
        return Reader(m_manager.OpenSource(url.c_str(), "", nullptr, nullptr, nullptr, nullptr));
    }

    clips::TemporaryDirectory m_directory;
    std::string m_input;
    aveffect::MediaManager m_manager;
};

TEST_F(MediaManager, TellsWhatTheSourceIs) {
    unsigned streams = 0, width = 0, height = 0, duration = 0;
    const Reader reader(m_manager.OpenSource(m_input.c_str(), nullptr, &streams, &width, &height, &duration));
    ASSERT_TRUE(reader);
    EXPECT_EQ(streams, 2u);
    EXPECT_EQ(width, 64u);
    EXPECT_EQ(height, 48u);
    EXPECT_NEAR(duration, 2000, 30);
    EXPECT_EQ(reader->GetDuration(), duration);
}

TEST_F(MediaManager, ReadsAllPicturesAndSamples) {
    const Reader reader = Open(m_input);
    ASSERT_TRUE(reader);
    const clips::Bytes pictures =
        clips::Run("ffmpeg -v error -nostdin -i " + m_input + " -pix_fmt bgra -f rawvideo -");
    const clips::Bytes sound =
        clips::Run("ffmpeg -v error -nostdin -i " + m_input + " -f s16le -c:a pcm_s16le -");
    size_t pixel = 0, sample = 0;
    AVBased::AVItem item{};
    while (reader->ReadItem(&item, 1, 0)) {
        if (item.kind == 1) {
            auto* frame = static_cast<AVBased::IRawVideoFrame*>(item.object);
            ASSERT_EQ(frame->GetPixelFormat(), static_cast<unsigned>(AVBased::BGRA));
            EXPECT_EQ(item.position, static_cast<int64_t>(pixel / (64 * 48 * 4)) * 40);
            EXPECT_EQ(item.length, 40u);
            for (unsigned plane = 0; plane < frame->GetBufferCount(); ++plane) {
                unsigned bytes = 0, pitch = 0, rows = 0;
                const unsigned char* data = frame->GetBuffer(plane, &bytes, &pitch, &rows);
                for (unsigned row = 0; row < rows; ++row, pixel += bytes)
                    ASSERT_EQ(std::memcmp(data + size_t{row} * pitch, &pictures[pixel], bytes), 0);
            }
        } else {
            ASSERT_EQ(item.kind, 2u);
            unsigned bytes = 0;
            const unsigned char* data =
                static_cast<AVBased::IRawAudioFrame*>(item.object)->GetBuffer(0, &bytes);
            ASSERT_LE(sample + bytes, sound.size());
            ASSERT_EQ(std::memcmp(data, &sound[sample], bytes), 0);
            sample += bytes;
        }
    }
    EXPECT_EQ(pixel, pictures.size());
    EXPECT_EQ(sample, sound.size());
}

TEST_F(MediaManager, SeeksToTheItemShownThen) {
    const Reader reader = Open(m_input);
    ASSERT_TRUE(reader);
    AVBased::AVItem item{};
    while (reader->ReadItem(&item, 1, 0)) {
    }
    for (const unsigned target : {1500u, 0u, 610u}) {
        ASSERT_TRUE(reader->Seek(target));
        do ASSERT_TRUE(reader->ReadItem(&item, 1, 0));
        while (item.kind != 1);
        EXPECT_EQ(item.position, target / 40 * 40);
    }
}

TEST_F(MediaManager, LeavesPicturesOutAndSelectsStreams) {
    Reader reader = Open(m_input);
    ASSERT_TRUE(reader);
    AVBased::AVItem item{};
    int sounds = 0;
    for (; reader->ReadItem(&item, 0, 1000); ++sounds) ASSERT_EQ(item.kind, 2u);
    EXPECT_GT(sounds, 0);

    clips::Run("ffmpeg -v error -nostdin -f lavfi -i color=s=32x32:d=0.2 -f lavfi -i color=s=48x48:d=0.2 "
               "-map 0 -map 1 "
               "-c:v ffv1 -pix_fmt yuv422p12le " +
               (m_directory / "two.mkv"));
    const std::string flagged = std::to_string((1u << 29) | 0u);
    reader = Open((m_directory / "two.mkv") + "?vstreamid=" + flagged + "&other=1");
    ASSERT_TRUE(reader);
    ASSERT_TRUE(reader->ReadItem(&item, 1, 0));
    EXPECT_EQ(item.stream, 0u);
    auto* frame = static_cast<AVBased::IRawVideoFrame*>(item.object);
    unsigned width = 0;
    frame->GetDimension(&width, nullptr);
    EXPECT_EQ(width, 32u);
    EXPECT_EQ(frame->GetPixelFormat(), static_cast<unsigned>(AVBased::BGRA));
}

TEST_F(MediaManager, ThrowsWhyNothingOpens) {
    for (const std::string& url :
         {m_directory / "missing.mp4", m_input + "?vstreamid=7", m_input + "?astreamid=x"}) {
        try {
            Open(url);
            ADD_FAILURE() << url;
        } catch (const aveffect::Error& error) {
            EXPECT_NE(std::string(error.what()).find(m_directory / ""), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(m_manager.OpenSource(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), AVBased::kBadPointer);
}

} // namespace
