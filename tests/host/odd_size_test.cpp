/// Pictures of odd sizes: the last column and row of subsampled chroma meet effects like all others.
#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "aveffect/catalogue.h"
#include "host/effects/memory_pictures.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/video_frame.h"
#include "tests/host/clips.h"
#include "tests/support/busy_settings.h"

namespace {

using mediabridge::AVFramePtr;

constexpr int kOddWidth = 83, kOddHeight = 61;

AVFramePtr Noise(AVPixelFormat format) {
    std::minstd_rand random(7);
    AVFramePtr picture = mediabridge::AllocatePicture(format, kOddWidth, kOddHeight);
    for (auto* byte = picture->buf[0]->data; byte != picture->buf[0]->data + picture->buf[0]->size; ++byte)
        *byte = static_cast<uint8_t>(random());
    return picture;
}

/// What share of a row's or column's samples differ between two planes.
struct Changes {
    const AVFrame &before, &after;
    int plane, width, height;

    bool At(int x, int y) const {
        return before.data[plane][before.linesize[plane] * y + x] !=
               after.data[plane][after.linesize[plane] * y + x];
    }
    double InColumn(int x) const {
        int count = 0;
        for (int y = 0; y < height; ++y) count += At(x, y);
        return static_cast<double>(count) / height;
    }
    double InRow(int y) const {
        int count = 0;
        for (int x = 0; x < width; ++x) count += At(x, y);
        return static_cast<double>(count) / width;
    }
};

TEST(OddSizes, EveryEffectTreatsTheLastChromaColumnAndRowLikeTheirNeighbours) {
    struct Kind {
        AVPixelFormat format;
        int shiftX, shiftY;
    };
    aveffect::MemoryPictures pictures;
    pictures.Show(Noise(AV_PIX_FMT_BGRA), Noise(AV_PIX_FMT_BGRA));
    int changed = 0, tried = 0;
    for (const AVBased::EffectInfo& effect : AVBased::kVideoEffects)
        for (const auto& [format, shiftX, shiftY] : {Kind{AV_PIX_FMT_YUV420P, 1, 1},
                                                     {AV_PIX_FMT_YUV422P, 1, 0},
                                                     {AV_PIX_FMT_YUV411P, 2, 0},
                                                     {AV_PIX_FMT_YUV410P, 2, 2}}) {
            const auto proc = clips::ThePlugin().MakeVideo(&pictures, effect.name);
            test::SetBusy(*proc, effect);
            proc->SetProperty("mosaic_y2", "90");
            proc->SetProperty("EffectPropVFPath1", aveffect::MemoryPictures::kFirst);
            proc->SetProperty("EffectPropVFPath2", aveffect::MemoryPictures::kSecond);
            const AVFramePtr before = Noise(format), after = mediabridge::CopyPicture(before.get());
            const auto frame = mediabridge::VideoFrame::Wrap(after.get(), 50, 40);
            AVBased::ImagePostion position{};
            proc->ProcFrameInPlace(&position, 50, frame.get());
            for (const int plane : {1, 2}) {
                const Changes changes{*before, *after, plane, AV_CEIL_RSHIFT(kOddWidth, shiftX),
                                      AV_CEIL_RSHIFT(kOddHeight, shiftY)};
                const int x = changes.width - 1, y = changes.height - 1;
                const std::string what = std::string(effect.name) + ", format " + std::to_string(format);
                // Some leave the picture's border alone, at all its sides.
                EXPECT_GE(changes.InColumn(x), std::min(changes.InColumn(0), changes.InColumn(x - 1)) / 2)
                    << what;
                if (std::string_view(effect.name) == "edgelight") continue; // has no row below the last one
                EXPECT_GE(changes.InRow(y), std::min(changes.InRow(0), changes.InRow(y - 1)) / 2) << what;
                ++tried;
                changed += changes.InColumn(x) > 0 && changes.InRow(y) > 0;
            }
        }
    EXPECT_GT(changed, tried / 2) << "of " << tried;
}

TEST(OddSizes, GrayLeavesNoColourInAPhoto) {
    const clips::TemporaryDirectory directory;
    for (const std::string format : {"yuvj420p", "yuvj422p"}) {
        clips::Run("ffmpeg -v error -y -f lavfi -i color=red:s=36x28,format=gbrp,crop=35:27:0:0 -frames:v 1 "
                   "-pix_fmt " +
                   format + " " + (directory / "in.jpg"));
        const std::string output = directory / (format + ".jpg");
        clips::Render(directory / "in.jpg", output, "", {"gray"});
        const auto rgb =
            clips::Run("ffmpeg -v error -nostdin -i " + output + " -pix_fmt rgb24 -f rawvideo -");
        ASSERT_EQ(rgb.size(), 35u * 27 * 3);
        for (size_t at = 0; at < rgb.size(); at += 3) {
            const auto [least, most] = std::minmax({rgb[at], rgb[at + 1], rgb[at + 2]});
            ASSERT_LE(most - least, 4) << format << ", pixel " << at / 3;
        }
    }
}

} // namespace
