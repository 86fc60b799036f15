#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "aveffect/base_tools.h"

namespace {

using namespace AVBased;
using Sizes = std::vector<std::pair<unsigned, unsigned>>; // bytes a row, rows

Sizes PlaneSizes(unsigned format, unsigned width, unsigned height) {
    const ImageParameters parameters = GetImageParameters(format, width, height);
    Sizes sizes;
    for (unsigned i = 0; i < parameters.planeCount; ++i)
        sizes.emplace_back(parameters.planes[i].widthBytes, parameters.planes[i].rows);
    return sizes;
}

TEST(PixelFormats, PlaneSizesRoundDown) {
    const Sizes full3 = {{7, 5}, {7, 5}, {7, 5}};
    for (const unsigned format : {0u, 12u, 64u})
        EXPECT_EQ(PlaneSizes(format, 7, 5), (Sizes{{7, 5}, {3, 2}, {3, 2}}));
    for (const unsigned format : {4u, 13u, 66u})
        EXPECT_EQ(PlaneSizes(format, 7, 5), (Sizes{{7, 5}, {3, 5}, {3, 5}}));
    for (const unsigned format : {5u, 14u}) EXPECT_EQ(PlaneSizes(format, 7, 5), full3);
    EXPECT_EQ(PlaneSizes(6, 7, 5), (Sizes{{7, 5}, {1, 1}, {1, 1}}));
    EXPECT_EQ(PlaneSizes(7, 7, 5), (Sizes{{7, 5}, {1, 5}, {1, 5}}));
    EXPECT_EQ(PlaneSizes(31, 7, 5), (Sizes{{7, 5}, {7, 2}, {7, 2}}));
    EXPECT_EQ(PlaneSizes(33, 7, 5), (Sizes{{7, 5}, {3, 2}, {3, 2}, {7, 5}}));
    EXPECT_EQ(PlaneSizes(81, 7, 5), (Sizes{{7, 5}, {7, 5}, {7, 5}, {7, 5}}));
    EXPECT_EQ(PlaneSizes(23, 7, 5), (Sizes{{7, 5}, {7, 2}}));
    EXPECT_EQ(PlaneSizes(16, 7, 5), (Sizes{{10, 5}})) << "14 bytes times 3, a quarter of it";
    EXPECT_EQ(PlaneSizes(9, 17, 5), (Sizes{{2, 5}}));
    EXPECT_EQ(PlaneSizes(11, 7, 5), (Sizes{{7, 5}}));
    for (const unsigned format : {25u, 26u, 27u, 28u}) EXPECT_EQ(PlaneSizes(format, 7, 5), (Sizes{{28, 5}}));
    for (const unsigned format : {34u, 35u, 101u}) EXPECT_EQ(PlaneSizes(format, 7, 5), (Sizes{{42, 5}}));
    for (unsigned format = 36; format <= 43; ++format) EXPECT_EQ(PlaneSizes(format, 7, 5), (Sizes{{14, 5}}));
}

TEST(PixelFormats, CodesDivisorsAndCounts) {
    const ImageParameters yuv = GetImageParameters(YUV420P, 8, 8);
    EXPECT_FALSE(yuv.packed);
    EXPECT_EQ(yuv.components, 3u);
    EXPECT_EQ(yuv.planes[1].horizontalCode, 0x00020001u);
    EXPECT_EQ(yuv.planes[1].verticalDivisor, 2u);
    EXPECT_EQ(GetImageParameters(YUYV422, 8, 8).planes[0].horizontalCode, 0x00020004u);
    EXPECT_EQ(GetImageParameters(YUV410P, 8, 8).planes[2].verticalDivisor, 4u);
    const ImageParameters nv12 = GetImageParameters(NV12, 8, 8);
    EXPECT_EQ(nv12.planes[1].horizontalCode, 0x00020001u);
    EXPECT_EQ(nv12.planes[1].verticalDivisor, 1u);
    EXPECT_TRUE(GetImageParameters(BGRA, 8, 8).packed);
    EXPECT_EQ(GetImageParameters(BGRA, 8, 8).components, 4u);
    EXPECT_FALSE(GetImageParameters(PAL8, 8, 8).packed);
    EXPECT_EQ(GetImageParameters(PAL8, 8, 8).components, 2u);
}

TEST(PixelFormats, OnlyTheTablesIdsAreServed) {
    for (unsigned format = 0; format < 110; ++format) {
        const bool served = format <= 16 || format == 23 || (format >= 25 && format <= 28) || format == 31 ||
                            (format >= 33 && format <= 43) || format == 64 || format == 66 || format == 81 ||
                            format == 101;
        if (served) {
            EXPECT_GT(GetImageParameters(format, 8, 8).planeCount, 0u) << format;
        }
    }
    for (const unsigned format : {17u, 24u, 32u, 65u, 82u})
        EXPECT_DEATH(GetImageParameters(format, 8, 8), "`0' failed");
}

// A frame over memory that the test provides, each byte different from its neighbours.
struct OwnedFrame {
    OwnedFrame(unsigned format, unsigned width, unsigned height, bool topDown, unsigned extraPitch)
        : frame(false, format, width, height, topDown) {
        for (unsigned i = 0; i < frame.GetBufferCount(); ++i) {
            CRawVideoFrame::FrameBuffer* buffer = frame.GetBuffer(i);
            buffer->pitch = buffer->widthBytes + extraPitch;
            memory.emplace_back(size_t{buffer->pitch} * buffer->rows);
            for (size_t n = 0; n < memory.back().size(); ++n)
                memory.back()[n] = static_cast<unsigned char>(n * 7 + i);
            buffer->data = memory.back().data();
        }
    }
    CRawVideoFrame frame;
    std::vector<std::vector<unsigned char>> memory;
};

struct Plane {
    unsigned char* data;
    unsigned width, pitch, rows;
};
Plane PlaneOf(IRawVideoFrame& frame, unsigned index) {
    Plane plane{};
    plane.data = frame.GetBuffer(index, &plane.width, &plane.pitch, &plane.rows);
    return plane;
}

TEST(RawFrame, CropsHideColumnsAndRows) {
    OwnedFrame bottomUp(BGRA, 6, 5, false, 3);
    EXPECT_FALSE(bottomUp.frame.CropRightAndBottom(6, 0));
    EXPECT_FALSE(bottomUp.frame.CropRightAndBottom(0, 5));
    EXPECT_TRUE(bottomUp.frame.CropRightAndBottom(5, 4));
    EXPECT_TRUE(bottomUp.frame.CropRightAndBottom(1, 2)) << "crops replace each other";
    Plane plane = PlaneOf(bottomUp.frame, 0);
    EXPECT_EQ(plane.width, 20u);
    EXPECT_EQ(plane.rows, 3u);
    EXPECT_EQ(plane.data, bottomUp.memory[0].data() + 2 * 27);
    unsigned width = 0, height = 0;
    bottomUp.frame.GetDimension(&width, nullptr);
    bottomUp.frame.GetDimension(nullptr, &height);
    EXPECT_EQ(width, 5u);
    EXPECT_EQ(height, 3u);

    OwnedFrame topDown(YUV420P, 8, 8, true, 0);
    EXPECT_TRUE(topDown.frame.CropRightAndBottom(3, 2));
    plane = PlaneOf(topDown.frame, 1);
    EXPECT_EQ(plane.width, 3u) << "3 pixels of two a byte";
    EXPECT_EQ(plane.rows, 2u) << "the same rows from every plane";
    EXPECT_EQ(plane.data, topDown.memory[1].data());
    EXPECT_TRUE(topDown.frame.CropRightAndBottom(0, 7));
    EXPECT_EQ(PlaneOf(topDown.frame, 1).rows, 0u);
    EXPECT_DEATH(PlaneOf(topDown.frame, 3), "index < m_Buffers.size\\(\\)");
}

// Of a picture that is too small for chroma, either way up.
TEST(RawFrame, PlanesWithoutAByteAreCroppedAndCopied) {
    for (const bool topDown : {true, false}) {
        OwnedFrame owned(YUV410P, 3, 3, topDown, 0);
        EXPECT_TRUE(owned.frame.CropRightAndBottom(1, 1));
        IRawVideoFrame* const copy = owned.frame.Clone();
        IRawVideoFrame* const second = copy->Clone();
        EXPECT_EQ(PlaneOf(*second, 0).rows, 2u);
        EXPECT_EQ(PlaneOf(*second, 1).rows, 0u);
        copy->Free();
        second->Free();
    }
}

TEST(RawFrame, SetSizeMeasuresAnewAndKeepsTheBottomCrop) {
    OwnedFrame owned(YUV420P, 8, 8, true, 2);
    owned.frame.CropRightAndBottom(2, 1);
    owned.frame.SetSize(8, 8);
    EXPECT_EQ(PlaneOf(owned.frame, 0).width, 8u);
    EXPECT_EQ(PlaneOf(owned.frame, 0).rows, 7u);
    owned.frame.SetSize(4, 6);
    EXPECT_EQ(PlaneOf(owned.frame, 1).width, 2u);
    EXPECT_EQ(PlaneOf(owned.frame, 1).rows, 2u);
    EXPECT_EQ(PlaneOf(owned.frame, 1).pitch, 6u);
    EXPECT_EQ(PlaneOf(owned.frame, 1).data, owned.memory[1].data());
    EXPECT_EQ(owned.frame.GetRequireSize(), 4u * 6 + 2 * 3 * 2);
    EXPECT_EQ(owned.frame.GetTotalSize(), 10u * 6 + 6 * 3 * 2);
}

TEST(RawFrame, CloneCopiesWholeRowsIntoOneAlignedBlock) {
    OwnedFrame owned(YUVA420P, 7, 5, true, 5);
    CRawVideoFrame& frame = owned.frame;
    frame.SetTimeStamp(-9);
    frame.SetDuration(40);
    frame.SetDuplicatedCount(3, 4);
    frame.SetInterlaced(true);
    frame.SetTopFieldFirst(true);
    frame.SetCanBeModified(false);
    frame.SetDAR(1.5);
    frame.SetViewID(2);
    frame.CropRightAndBottom(1, 1);
    char border[] = "border";
    frame.SetBorderData(border, 6);
    border[0] = 'x';
    OwnedFrame second(BGRA, 2, 2, true, 0);
    frame.CopySubsetFrame(&second.frame);

    IRawVideoFrame* copy = frame.Clone();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetTimeStamp(), -9);
    EXPECT_EQ(copy->GetDuration(), 40u);
    unsigned extra = 0;
    EXPECT_EQ(copy->GetDuplicatedCount(&extra), 3u);
    EXPECT_EQ(extra, 4u);
    EXPECT_TRUE(copy->IsInterlaced() && copy->IsTopFieldFirst() && copy->CanBeModified() &&
                copy->IsTopDown());
    EXPECT_EQ(copy->GetDAR(), 1.5);
    auto* view = static_cast<IMVCRawVideoFrame*>(copy->GetInterface("RawVideoInterfaceMVC"));
    EXPECT_EQ(view->GetViewID(), 2);
    void* data = nullptr;
    int bytes = 0;
    copy->GetBorderData(&data, &bytes);
    EXPECT_EQ(std::string(static_cast<char*>(data), static_cast<size_t>(bytes)), "border");
    EXPECT_EQ(copy->GetInterface("RawVideoInterfaceRawVideo"), static_cast<void*>(copy));
    auto* subset = static_cast<IRawVideoFrame*>(copy->GetInterface("ISubSetRawFrame"));
    ASSERT_NE(subset, nullptr);
    EXPECT_NE(subset, frame.GetInterface("ISubSetRawFrame"));
    EXPECT_EQ(copy->GetInterface("IVideoProc"), nullptr);
    EXPECT_EQ(copy->GetInterface(nullptr), nullptr);

    unsigned char* expectedPlace = PlaneOf(*copy, 0).data;
    for (unsigned i = 0; i < 4; ++i) {
        const Plane plane = PlaneOf(*copy, i);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(plane.data) % 16, 0u);
        EXPECT_EQ(plane.data, expectedPlace) << "planes follow each other";
        EXPECT_EQ(std::memcmp(plane.data, owned.memory[i].data(), owned.memory[i].size()), 0)
            << "padding included";
        EXPECT_NE(plane.data, owned.memory[i].data());
        expectedPlace += (owned.memory[i].size() + 15) / 16 * 16;
    }
    copy->Free();
    frame.Free(); // not self-owned: stays
    EXPECT_EQ(frame.GetDuration(), 40u);
}

TEST(RawFrame, CopyBetweenFrames) {
    GetBaseException()->Clear();
    OwnedFrame from(YUV422P, 6, 4, true, 2), to(YUV422P, 6, 4, true, 2);
    for (auto& memory : to.memory) std::fill(memory.begin(), memory.end(), static_cast<unsigned char>(0));
    from.frame.SetTimeStamp(11);
    from.frame.SetInterlaced(true);
    from.frame.SetTopFieldFirst(true);
    from.frame.SetDuration(99);
    from.frame.SetViewID(3);
    EXPECT_TRUE(CopyVideoFrame(&to.frame, &from.frame));
    EXPECT_EQ(to.memory, from.memory);
    EXPECT_EQ(to.frame.GetTimeStamp(), 11);
    EXPECT_TRUE(to.frame.IsInterlaced());
    EXPECT_FALSE(to.frame.IsTopFieldFirst());
    EXPECT_EQ(to.frame.GetDuration(), 1u);
    EXPECT_EQ(to.frame.GetViewID(), 3);

    EXPECT_FALSE(CopyVideoFrame(nullptr, &from.frame));
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), 10021003);
    OwnedFrame otherFormat(YUV420P, 6, 4, true, 2), otherSize(YUV422P, 6, 5, true, 2),
        otherPitch(YUV422P, 6, 4, true, 3);
    EXPECT_DEATH(CopyVideoFrame(&otherFormat.frame, &from.frame), "`0' failed");
    EXPECT_DEATH(CopyVideoFrame(&otherSize.frame, &from.frame), "`0' failed");
    EXPECT_DEATH(CopyVideoFrame(&otherPitch.frame, &from.frame), "s_lss == d_lss");
}

TEST(YuvMerge, ConvertsThereAndBack) {
    struct Case {
        unsigned char y, u, v, yOut, uOut, vOut;
    };
    // 0,0,0: black. 255,255,255: R, G, B = 255, 255, 255. 100,0,0: grey 100: (22000+128)>>8 = 86, plus 16.
    // 0,100,0: R 0, G -39 -> 0, B 203: Y (5075+128)>>8 = 20 + 16; U (22736+128)>>8 = 89 + 128; V
    // (-3654+128)>>8 = -14 + 128. 0,0,255: R 290 -> 255, G 111, B 0: Y (16830+14319+128)>>8 = 122+16; U
    // (-9690-8214+128)>>8 = -70+128;
    //          V (28560-10434+128)>>8 = 71+128.
    for (const Case& c : {Case{0, 0, 0, 16, 128, 128},
                          {255, 255, 255, 235, 128, 128},
                          {100, 0, 0, 102, 128, 128},
                          {0, 100, 0, 36, 217, 114},
                          {0, 0, 255, 138, 58, 199}}) {
        unsigned char y = 0, u = 0, v = 0;
        MergeYUVRedBlue(c.y, c.u, c.v, 1, 2, 3, &y, &u, &v);
        EXPECT_EQ(y, c.yOut) << int{c.y} << ' ' << int{c.u} << ' ' << int{c.v};
        EXPECT_EQ(u, c.uOut);
        EXPECT_EQ(v, c.vOut);
    }
}

} // namespace
