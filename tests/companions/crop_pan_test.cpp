/// Pictures inside margins.
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "aveffect/base_media.h"
#include "aveffect/errors.h"
#include "tests/companions/results.h"

namespace {

using namespace test;
using namespace AVBased;

using CropPanPtr = std::unique_ptr<IRawVideoFrameCropPan, Releaser>;

CropPanPtr Margins(unsigned left, unsigned top, unsigned right, unsigned bottom) {
    CropPanPtr cropPan(CreateRawVideoFrameCropPan());
    cropPan->SetLeft(left);
    cropPan->SetTop(top);
    cropPan->SetRight(right);
    cropPan->SetBottom(bottom);
    return cropPan;
}

/// One plane of the result: so many bytes in each of so many rows, black but for the source's from an offset
/// on.
struct ExpectedPlane {
    unsigned plane, bytes, rows;
    unsigned atByte, atRow;
    std::vector<unsigned> black; ///< repeats along the row
};

unsigned Value(unsigned plane, unsigned x, unsigned y) { return 30 + plane * 70 + x * 5 + y; }

void ExpectPlaced(unsigned format, unsigned width, unsigned height, IRawVideoFrameCropPan& cropPan,
                  const std::vector<ExpectedPlane>& planes) {
    SCOPED_TRACE(mediabridge::FrameFormatName(format));
    for (const bool bottomUp : {false, true}) {
        HostFrame source({.format = format,
                          .width = width,
                          .height = height,
                          .extraPitch = 3,
                          .roundUp = true,
                          .bottomUp = bottomUp});
        source.Fill(Value);
        const ResultPtr result(cropPan.Process(&source));
        ASSERT_TRUE(result) << GetBaseException()->GetExceptionMsg();
        EXPECT_TRUE(result->IsTopDown());
        for (const ExpectedPlane& expected : planes) {
            const unsigned from = expected.plane;
            for (unsigned y = 0; y < expected.rows; ++y) {
                const std::vector<unsigned> row = Row(*result, from, y);
                ASSERT_EQ(row.size(), expected.bytes);
                for (unsigned x = 0; x < expected.bytes; ++x) {
                    const bool inside = x >= expected.atByte &&
                                        x < expected.atByte + source.planes[from].held &&
                                        y >= expected.atRow && y < expected.atRow + source.planes[from].rows;
                    const unsigned wanted = inside
                                                ? Value(from, x - expected.atByte, y - expected.atRow) & 255
                                                : expected.black[x % expected.black.size()];
                    ASSERT_EQ(row[x], wanted) << "plane " << from << " byte " << x << " row " << y;
                }
            }
        }
    }
}

TEST(CropPan, PlacesThePictureInBlack) {
    const CropPanPtr odd = Margins(3, 1, 2, 4);
    ExpectPlaced(BGRA, 4, 3, *odd, {{0, 36, 8, 12, 1, {0, 0, 0, 255}}});
    ExpectPlaced(ARGB, 4, 3, *odd, {{0, 36, 8, 12, 1, {255, 0, 0, 0}}});
    ExpectPlaced(RGB24, 4, 3, *odd, {{0, 27, 8, 9, 1, {0}}});
    ExpectPlaced(RGB565LE, 4, 3, *odd, {{0, 18, 8, 6, 1, {0}}});
    ExpectPlaced(GRAY8, 4, 3, *odd, {{0, 9, 8, 3, 1, {0}}});
    // Chroma of odd margins: the offset is rounded down, the size up.
    ExpectPlaced(YUV420P, 4, 3, *odd,
                 {{0, 9, 8, 3, 1, {16}}, {1, 5, 4, 1, 0, {128}}, {2, 5, 4, 1, 0, {128}}});
    ExpectPlaced(YUVJ422P, 4, 3, *odd, {{0, 9, 8, 3, 1, {0}}, {1, 5, 8, 1, 1, {128}}});
    ExpectPlaced(YUV410P, 8, 4, *Margins(8, 4, 4, 8), {{0, 20, 16, 8, 4, {16}}, {2, 5, 4, 2, 1, {128}}});
    ExpectPlaced(YUVA420P, 4, 3, *odd, {{1, 5, 4, 1, 0, {128}}, {3, 9, 8, 3, 1, {255}}});
    ExpectPlaced(NV12, 4, 4, *Margins(2, 2, 4, 2), {{0, 10, 8, 2, 2, {16}}, {1, 10, 4, 2, 1, {128}}});
    ExpectPlaced(YUYV422, 4, 3, *Margins(2, 1, 2, 0), {{0, 16, 4, 4, 1, {16, 128}}});
    ExpectPlaced(UYVY422, 4, 3, *Margins(2, 1, 2, 0), {{0, 16, 4, 4, 1, {128, 16}}});
    ExpectPlaced(BGRA, 4, 3, *Margins(0, 0, 0, 0), {{0, 16, 3, 0, 0, {0}}});
}

TEST(CropPan, PlacesPackedPairsAndBitsFromAnyColumn) {
    HostFrame pairs({.format = YUYV422, .width = 4, .height = 1});
    pairs.Fill([](unsigned, unsigned x, unsigned) { return 10 + x; });
    const ResultPtr shifted(Margins(1, 0, 1, 0)->Process(&pairs));
    // Y of the four pixels from the second column on, U and V with the pair that holds it.
    EXPECT_EQ(Row(*shifted, 0, 0), (std::vector<unsigned>{16, 11, 10, 13, 12, 15, 14, 17, 16, 128, 16, 128}));

    HostFrame bits({.format = MONOWHITE, .width = 4, .height = 1});
    bits.Fill([](unsigned, unsigned, unsigned) { return 0x50; });
    const ResultPtr moved(Margins(3, 0, 9, 0)->Process(&bits));
    EXPECT_EQ(Row(*moved, 0, 0), (std::vector<unsigned>{0xEB, 0xFF}));
}

TEST(CropPan, TenBitBlackAndProperties) {
    HostFrame source({.format = YUV420P10LE, .width = 4, .height = 4, .roundUp = true});
    source.Fill([](unsigned, unsigned x, unsigned) { return x % 2 ? 3 : 200; });
    source.SetTimeStamp(12);
    const ResultPtr result(Margins(2, 2, 0, 0)->Process(&source));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->GetTimeStamp(), 12);
    unsigned bytes = 0, pitch = 0, rows = 0;
    const unsigned char* luma = result->GetBuffer(0, &bytes, &pitch, &rows);
    EXPECT_EQ(luma[0] | luma[1] << 8, 64);
    EXPECT_EQ(luma[2 * pitch + 4] | luma[2 * pitch + 5] << 8, 3 << 8 | 200);
    const unsigned char* chroma = result->GetBuffer(1, &bytes, &pitch, &rows);
    EXPECT_EQ(chroma[0] | chroma[1] << 8, 512);
    EXPECT_EQ(chroma[pitch + 2] | chroma[pitch + 3] << 8, 3 << 8 | 200);
}

TEST(CropPan, RefusesWithAReason) {
    GetBaseException()->Clear();
    HostFrame source({.format = BGRA, .width = 4, .height = 4});
    source.Fill(Value);
    EXPECT_EQ(Margins(0, 0, 0, 0)->Process(nullptr), nullptr);
    EXPECT_EQ(TakeCode(), kBadPointer);
    EXPECT_EQ(Margins(0xFFFFFFFF, 0, 1, 0)->Process(&source), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);
    HostFrame palette({.format = PAL8, .width = 4, .height = 4});
    EXPECT_EQ(Margins(1, 1, 1, 1)->Process(&palette), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);
}

} // namespace
