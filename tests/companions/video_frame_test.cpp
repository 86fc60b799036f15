/// The frame table and frames over the media libraries' pictures.
#include <cstring>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "aveffect/pixel_format.h"
#include "mediabridge/audio_frame.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"
#include "mediabridge/video_frame.h"

namespace {

using namespace mediabridge;
using namespace AVBased;

struct TableRow {
    unsigned format;
    AVPixelFormat library;
    unsigned planes;
    PlaneSize first, second; ///< of 13 x 7
};

/// Of the second plane of 13 x 7, as pictures have it.
constexpr std::pair<unsigned, PlaneSize> kRoundedUp[] = {
    {YUV420P, {7, 4}}, {YUV422P, {7, 7}},  {YUV410P, {4, 2}},  {YUV411P, {4, 7}},
    {NV12, {14, 4}},   {YUV440P, {13, 4}}, {YUVA420P, {7, 4}}, {YUVA444P, {13, 7}},
};

TEST(FrameTable, CountsAsHostsAndPlugInAgreed) {
    const TableRow rows[] = {
        {0, AV_PIX_FMT_YUV420P, 3, {13, 7}, {6, 3}},      {12, AV_PIX_FMT_YUVJ420P, 3, {13, 7}, {6, 3}},
        {64, AV_PIX_FMT_YUV420P10LE, 3, {13, 7}, {6, 3}}, {66, AV_PIX_FMT_YUV422P10LE, 3, {13, 7}, {6, 7}},
        {1, AV_PIX_FMT_YUYV422, 1, {26, 7}, {0, 0}},      {6, AV_PIX_FMT_YUV410P, 3, {13, 7}, {3, 1}},
        {7, AV_PIX_FMT_YUV411P, 3, {13, 7}, {3, 7}},      {9, AV_PIX_FMT_MONOWHITE, 1, {1, 7}, {0, 0}},
        {11, AV_PIX_FMT_PAL8, 1, {13, 7}, {0, 0}},        {16, AV_PIX_FMT_UYYVYY411, 1, {19, 7}, {0, 0}},
        {23, AV_PIX_FMT_NV12, 2, {13, 7}, {13, 3}},       {28, AV_PIX_FMT_BGRA, 1, {52, 7}, {0, 0}},
        {31, AV_PIX_FMT_YUV440P, 3, {13, 7}, {13, 3}},    {33, AV_PIX_FMT_YUVA420P, 4, {13, 7}, {6, 3}},
        {37, AV_PIX_FMT_RGB565LE, 1, {26, 7}, {0, 0}},    {42, AV_PIX_FMT_BGR555BE, 1, {26, 7}, {0, 0}},
        {81, AV_PIX_FMT_YUVA444P, 4, {13, 7}, {13, 7}},   {101, AV_PIX_FMT_XYZ12LE, 1, {78, 7}, {0, 0}},
    };
    for (const TableRow& row : rows) {
        SCOPED_TRACE(FrameFormatName(row.format));
        EXPECT_EQ(LibraryFormat(row.format), row.library);
        EXPECT_EQ(FrameFormat(row.library, AVCOL_RANGE_MPEG), row.format);
        EXPECT_EQ(TablePlaneCount(row.format), row.planes);
        const PlaneSize first = TablePlaneSize(row.format, 0, 13, 7);
        const PlaneSize second = TablePlaneSize(row.format, 1, 13, 7);
        EXPECT_EQ(first.widthBytes, row.first.widthBytes);
        EXPECT_EQ(first.rows, row.first.rows);
        EXPECT_EQ(second.widthBytes, row.second.widthBytes);
        EXPECT_EQ(second.rows, row.second.rows);
    }
    for (const auto& [format, size] : kRoundedUp) {
        EXPECT_EQ(PicturePlaneSize(format, 1, 13, 7).widthBytes, size.widthBytes) << format;
        EXPECT_EQ(PicturePlaneSize(format, 1, 13, 7).rows, size.rows) << format;
    }
    EXPECT_EQ(FrameFormat(AV_PIX_FMT_YUV422P, AVCOL_RANGE_JPEG), 13u);
    EXPECT_EQ(FrameFormat(AV_PIX_FMT_NV12, AVCOL_RANGE_JPEG), 23u);
    EXPECT_FALSE(FrameFormat(AV_PIX_FMT_YUV444P10LE, AVCOL_RANGE_MPEG));
    EXPECT_FALSE(FrameFormatByName("nonsense"));
    EXPECT_EQ(FrameFormatByName("bgra"), 28u);
    for (const unsigned unknown : {17u, 24u, 32u, 62u, 65u, 100u, 0xFFFFFFFFu}) {
        EXPECT_EQ(LibraryFormat(unknown), AV_PIX_FMT_NONE);
        EXPECT_EQ(TablePlaneCount(unknown), 0u);
    }
}

/// Every byte of every plane tells where it is.
AVFramePtr Numbered(AVPixelFormat format, int width, int height) {
    AVFramePtr picture = AllocatePicture(format, width, height);
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < (plane ? (height + 1) / 2 : height); ++y)
            for (int x = 0; x < (plane ? (width + 1) / 2 : width); ++x)
                picture->data[plane][picture->linesize[plane] * y + x] =
                    static_cast<unsigned char>(plane * 80 + y * 10 + x);
    return picture;
}

TEST(VideoFrame, CloneHasEverySampleAndProperty) {
    const AVFramePtr picture = Numbered(AV_PIX_FMT_YUV420P, 7, 5);
    picture->sample_aspect_ratio = {4, 3};
    VideoFrame::Ptr frame = VideoFrame::Wrap(picture.get(), 40, 20);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->Picture()->data[0], picture->data[0]) << "wrapping copies nothing";
    char border[] = {1, 2, 3};
    frame->SetBorderData(border, 3);
    frame->SetInterlaced(true);
    frame->SetTopFieldFirst(true);
    frame->SetDuplicatedCount(4, 5);
    frame->SetViewID(2);
    frame->SetSubsetFrame(VideoFrame::Allocate(YUV420P, 2, 2));
    ASSERT_TRUE(frame->CropRightAndBottom(3, 2));

    const VideoFrame::Ptr clone(static_cast<VideoFrame*>(frame->Clone()));
    ASSERT_TRUE(clone);
    frame.reset();
    unsigned width = 0, height = 0, bytes = 0, pitch = 0, rows = 0, extra = 0;
    clone->GetDimension(&width, &height);
    EXPECT_EQ(width, 4u);
    EXPECT_EQ(height, 3u);
    clone->GetBuffer(1, &bytes, &pitch, &rows);
    EXPECT_EQ(bytes, 4u - 3u / 2u);
    EXPECT_EQ(rows, 3u - 2u) << "the cropped rows are taken from every plane alike";
    EXPECT_FALSE(clone->CropRightAndBottom(7, 0));
    EXPECT_FALSE(clone->CropRightAndBottom(0, 5));
    ASSERT_TRUE(clone->CropRightAndBottom(0, 0));
    unsigned char* chroma = clone->GetBuffer(1, &bytes, &pitch, &rows);
    EXPECT_EQ(bytes, 4u);
    EXPECT_EQ(rows, 3u);
    EXPECT_NE(chroma, picture->data[1]);
    for (unsigned y = 0; y < 3; ++y)
        EXPECT_EQ(
            std::memcmp(chroma + pitch * y, picture->data[1] + picture->linesize[1] * static_cast<int>(y), 4),
            0)
            << "row " << y << " lost samples";

    EXPECT_EQ(clone->GetTimeStamp(), 40);
    EXPECT_EQ(clone->GetDuration(), 20u);
    EXPECT_TRUE(clone->IsInterlaced() && clone->IsTopFieldFirst() && clone->IsTopDown() &&
                !clone->IsPacked());
    EXPECT_EQ(clone->GetDuplicatedCount(&extra), 4u);
    EXPECT_EQ(extra, 5u);
    EXPECT_NEAR(clone->GetDAR(), 7.0 * 4 / (5 * 3), 1e-9);
    void* data = nullptr;
    int size = 0;
    clone->GetBorderData(&data, &size);
    ASSERT_EQ(size, 3);
    EXPECT_EQ(std::memcmp(data, border, 3), 0);
    auto* views = static_cast<IMVCRawVideoFrame*>(clone->GetInterface("RawVideoInterfaceMVC"));
    ASSERT_TRUE(views);
    EXPECT_EQ(views->GetViewID(), 2);
    EXPECT_NE(clone->GetInterface("ISubSetRawFrame"), nullptr);
    EXPECT_EQ(clone->GetInterface("RawVideoInterfaceRawVideo"), static_cast<IRawVideoFrame*>(clone.get()));
    EXPECT_EQ(clone->GetInterface("RawVideoInterface"), nullptr);
    EXPECT_EQ(clone->GetInterface(nullptr), nullptr);
}

TEST(VideoFrame, TurnsBottomUpPicturesRound) {
    const AVFramePtr picture = Numbered(AV_PIX_FMT_YUV420P, 6, 4);
    for (int plane = 0; plane < 3; ++plane) {
        picture->data[plane] += picture->linesize[plane] * (plane ? 1 : 3);
        picture->linesize[plane] = -picture->linesize[plane];
    }
    const VideoFrame::Ptr frame = VideoFrame::Wrap(picture.get(), 0, 1);
    ASSERT_TRUE(frame);
    unsigned bytes = 0, pitch = 0, rows = 0;
    const unsigned char* luma = frame->GetBuffer(0, &bytes, &pitch, &rows);
    EXPECT_LT(pitch, 1000u);
    EXPECT_EQ(luma[0], 30) << "the last stored row is the top one";
    EXPECT_EQ(luma[pitch * 3 + 5], 5);
}

TEST(PicturePool, GivesBlocksBackOut) {
    AVFramePtr first = AllocatePicture(AV_PIX_FMT_BGRA, 1231, 77);
    const auto* block = first->data[0];
    first.reset();
    const AVFramePtr second = AllocatePicture(AV_PIX_FMT_BGRA, 1231, 77);
    EXPECT_EQ(second->data[0], block);
    const AVFramePtr third = AllocatePicture(AV_PIX_FMT_BGRA, 1231, 77);
    EXPECT_NE(third->data[0], block);
}

TEST(AudioFrame, CopiesDecodedSoundAndClonesIt) {
    const AVFramePtr sound(av_frame_alloc());
    sound->format = AV_SAMPLE_FMT_S16P;
    sound->sample_rate = 8000;
    sound->nb_samples = 3;
    av_channel_layout_default(&sound->ch_layout, 2);
    ASSERT_EQ(av_frame_get_buffer(sound.get(), 0), 0);
    for (int i = 0; i < 3; ++i)
        reinterpret_cast<short*>(sound->extended_data[1])[i] = static_cast<short>(i - 7);
    const AudioFrame::Ptr frame = AudioFrame::Copy(sound.get(), 90);
    ASSERT_TRUE(frame);
    const AudioFrame::Ptr clone(static_cast<AudioFrame*>(frame->Clone()));
    unsigned size = 0;
    EXPECT_EQ(clone->GetSampleFormat(), 3);
    EXPECT_EQ(clone->GetChannelLayout(), 3u);
    EXPECT_FALSE(clone->IsInterleaved());
    EXPECT_EQ(clone->GetTimeStamp(), 90u);
    const auto* right = reinterpret_cast<short*>(clone->GetBuffer(1, &size));
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(right[2], -5);
    EXPECT_EQ(clone->GetBuffer(2, &size), nullptr);
    EXPECT_EQ(clone->GetBuffer(-1, &size), nullptr);
    sound->format = AV_SAMPLE_FMT_S64;
    EXPECT_FALSE(AudioFrame::Copy(sound.get(), 0));
}

} // namespace
