/// Image converters on any host's frames.
#include <cmath>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "aveffect/base_media.h"
#include "aveffect/errors.h"
#include "aveffect/memory_frame.h"
#include "tests/companions/results.h"

namespace {

using namespace test;
using namespace AVBased;

using ConverterPtr = std::unique_ptr<IImageConverter, Releaser>;

ResultPtr ConvertTo(unsigned format, IRawVideoFrame& source, unsigned quality = 4, unsigned width = 0,
                    unsigned height = 0) {
    const ConverterPtr converter(CreateImageConverterEx(format, width, height, quality));
    if (!converter) throw std::runtime_error(GetBaseException()->GetExceptionMsg());
    ResultPtr result(converter->Convert(&source));
    if (!result) throw std::runtime_error(GetBaseException()->GetExceptionMsg());
    return result;
}

/// Every id of the frame table but PAL8 (its palette is no part of a frame) and UYYVYY411 (which libswscale
/// lacks).
std::vector<unsigned> ServedFormats() {
    std::vector<unsigned> formats;
    for (unsigned id = 0; id <= 101; ++id)
        if (mediabridge::TablePlaneCount(id) && id != PAL8 && id != UYYVYY411) formats.push_back(id);
    return formats;
}

bool IsBitmap(unsigned format) { return format == MONOWHITE || format == MONOBLACK; }

class ConverterTest : public testing::Test {
protected:
    void SetUp() override {
        GetBaseException()->Clear();
        testing::internal::CaptureStderr();
    }
    /// The media libraries talk on standard error by default; ours must not make them.
    void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }
};

TEST_F(ConverterTest, ColoursAreThoseOfBT601) {
    struct Known {
        unsigned bgr[3], yuv[3];
    };
    const Known colours[] = {{{255, 255, 255}, {235, 128, 128}},
                             {{0, 0, 0}, {16, 128, 128}},
                             {{0, 0, 255}, {81, 90, 240}},
                             {{0, 255, 0}, {145, 54, 34}},
                             {{255, 0, 0}, {41, 240, 110}}};
    for (const unsigned quality : {0u, 1u, 4u})
        for (const Known& known : colours) {
            HostFrame frame({.format = BGRA, .width = 16, .height = 8});
            frame.Fill([&](unsigned, unsigned x, unsigned) { return x % 4 == 3 ? 255 : known.bgr[x % 4]; });
            const ResultPtr yuv = ConvertTo(YUV420P, frame, quality);
            ASSERT_EQ(yuv->GetPixelFormat(), YUV420P);
            for (unsigned plane = 0; plane < 3; ++plane)
                EXPECT_NEAR(Row(*yuv, plane, 2)[3], known.yuv[plane], 1.01);
            const ResultPtr back = ConvertTo(BGRA, *yuv, quality);
            for (unsigned i = 0; i < 3; ++i) EXPECT_NEAR(Row(*back, 0, 3)[8 + i], known.bgr[i], 4);
            EXPECT_EQ(Row(*back, 0, 3)[11], 255u);
        }
    HostFrame white({.format = BGRA, .width = 4, .height = 4});
    white.Fill([](unsigned, unsigned, unsigned) { return 255; });
    EXPECT_NEAR(Row(*ConvertTo(YUVJ420P, white), 0, 0)[0], 255, 1);
    EXPECT_NEAR(Row(*ConvertTo(GRAY8, white), 0, 0)[0], 255, 1);
}

/// A smooth picture in which every corner has another colour comes back through every format: ids that were
/// taken for each other, swapped components, and wrong ranges all show.
TEST_F(ConverterTest, EveryFormatThereAndBack) {
    constexpr unsigned kSide = 64;
    HostFrame picture({.format = BGRA, .width = kSide, .height = kSide});
    HostFrame grey({.format = BGRA, .width = kSide, .height = kSide});
    picture.Fill([](unsigned, unsigned x, unsigned y) {
        const unsigned ramps[] = {40 + 2 * y, 60 + x / 4 * 2, 200 - y - x / 4, 255};
        return ramps[x % 4];
    });
    grey.Fill([](unsigned, unsigned x, unsigned y) { return x % 4 == 3 ? 255 : 30 + x / 4 * 2 + y; });
    for (const unsigned format : ServedFormats()) {
        if (IsBitmap(format)) continue; // see OneBitPictures
        SCOPED_TRACE(mediabridge::FrameFormatName(format));
        HostFrame& source = format == GRAY8 ? grey : picture;
        const ResultPtr there = ConvertTo(format, source);
        EXPECT_EQ(there->GetPixelFormat(), format);
        const ResultPtr back = ConvertTo(BGRA, *there);
        const std::vector<unsigned> before = Pixels(source), after = Pixels(*back);
        ASSERT_EQ(before.size(), after.size());
        double sum = 0;
        for (std::size_t i = 0; i < before.size(); ++i)
            sum += std::abs(static_cast<int>(before[i]) - static_cast<int>(after[i]));
        // Five bits a component alone cost two on average.
        EXPECT_LT(sum / static_cast<double>(before.size()), 3.2);
    }
}

TEST_F(ConverterTest, OneBitPictures) {
    HostFrame halves({.format = BGRA, .width = 18, .height = 2});
    halves.Fill([](unsigned, unsigned x, unsigned) { return x % 4 == 3 || x / 4 >= 8 ? 255 : 0; });
    EXPECT_EQ(Row(*ConvertTo(MONOBLACK, halves), 0, 0), (std::vector<unsigned>{0x00, 0xFF}));
    EXPECT_EQ(Row(*ConvertTo(MONOWHITE, halves), 0, 0), (std::vector<unsigned>{0xFF, 0x00}));
    EXPECT_EQ(Pixels(*ConvertTo(BGRA, *ConvertTo(MONOWHITE, halves))), Pixels(halves));
}

/// Whatever the size, the rounding of chroma, the order of rows and the place in memory: nothing outside is
/// read, and the picture is the same.
TEST_F(ConverterTest, ReadsNothingOutsideAndAllInside) {
    const unsigned sizes[][2] = {{1, 1}, {2, 3}, {3, 2}, {5, 1}, {7, 5}, {17, 9}, {33, 31}};
    for (const unsigned format : ServedFormats())
        for (const auto& size : sizes) {
            SCOPED_TRACE(mediabridge::FrameFormatName(format) + " " + std::to_string(size[0]) + "x" +
                         std::to_string(size[1]));
            std::vector<std::vector<unsigned>> results;
            for (unsigned variant = 0; variant < 8; ++variant) {
                HostFrame frame({.format = format,
                                 .width = size[0],
                                 .height = size[1],
                                 .extraPitch = variant & 4 ? 5u : 0u,
                                 .flush = variant & 2 ? Flush::End : Flush::Start,
                                 .bottomUp = (variant & 1) != 0});
                frame.Fill([](unsigned plane, unsigned x, unsigned y) { return plane * 50 + x * 7 + y * 3; });
                results.push_back(Pixels(*ConvertTo(BGRA, frame)));
                EXPECT_EQ(results.back().size(), std::size_t{size[0]} * size[1] * 4);
                EXPECT_EQ(results.back(), results.front()) << "variant " << variant;
            }
        }
}

/// Rows that begin within those before them are read as they are, into the same format too.
TEST_F(ConverterTest, RowsThatOverlap) {
    std::vector<unsigned char> memory(20);
    std::iota(memory.begin(), memory.end(), static_cast<unsigned char>(1));
    AVBased::MemoryFrame frame(BGRA, 4, 2, {{memory.data(), 16, 4, 2}});
    const ResultPtr copy = ConvertTo(BGRA, frame);
    for (const unsigned row : {0u, 1u})
        EXPECT_EQ(Row(*copy, 0, row),
                  std::vector<unsigned>(memory.begin() + 4 * row, memory.begin() + 4 * row + 16));
}

TEST_F(ConverterTest, EveryFormatFromSmallPicturesOnEveryWay) {
    for (const unsigned width : {2u, 4u, 8u, 16u}) {
        HostFrame source({.format = BGRA, .width = width, .height = 3});
        source.Fill([](unsigned, unsigned, unsigned) { return 200; });
        for (const unsigned format : ServedFormats())
            for (const unsigned quality : {0u, 1u, 4u}) {
                const ConverterPtr converter(CreateImageConverterEx(format, 0, 0, quality));
                EXPECT_NE(ResultPtr(converter->Convert(&source)), nullptr) << format << ", " << width;
            }
    }
}

/// The media libraries complain of some pairs and sizes alone, and leave columns out in some.
TEST_F(ConverterTest, EveryFormatToEveryOtherInSilence) {
    const unsigned sizes[][2] = {{18, 12}, {35, 27}};
    for (const auto& size : sizes) {
        HostFrame picture({.format = BGRA, .width = size[0], .height = size[1]});
        picture.Fill([](unsigned, unsigned x, unsigned) { return x % 4 == 3 ? 255 : 40 * (x % 4); });
        for (const unsigned from : ServedFormats()) {
            const ResultPtr source = ConvertTo(from, picture);
            for (const unsigned to : ServedFormats())
                for (const unsigned quality : {0u, 1u, 4u})
                    for (const unsigned width : {0u, 17u}) {
                        const ResultPtr converted = ConvertTo(to, *source, quality, width);
                        if (IsBitmap(to) || IsBitmap(from) || from == GRAY8 || to == GRAY8) continue;
                        const std::vector<unsigned> pixels = Row(*ConvertTo(BGRA, *converted), 0, 5);
                        ASSERT_EQ(pixels.size(), (width ? width : size[0]) * 4);
                        for (unsigned i = 0; i < pixels.size(); ++i)
                            ASSERT_NEAR(pixels[i], i % 4 == 3 ? 255 : 40 * (i % 4), 20)
                                << mediabridge::FrameFormatName(from) << " to "
                                << mediabridge::FrameFormatName(to) << ", quality " << quality << ", "
                                << i / 4 << " of " << size[0] << " to " << width;
                    }
        }
    }
}

TEST_F(ConverterTest, MissingChromaRepeatsAndPresentChromaCounts) {
    for (const unsigned format : {YUV420P, YUV410P, NV12, YUV420P10LE, YUYV422}) {
        SCOPED_TRACE(mediabridge::FrameFormatName(format));
        const unsigned unit = format == NV12 || format == YUV420P10LE ? 2 : format == YUYV422 ? 4 : 1;
        std::vector<unsigned> results[3];
        for (const int kind : {0, 1, 2}) {
            HostFrame frame({.format = format, .width = 13, .height = 13, .roundUp = kind != 0});
            HostFrame rounded({.format = format, .width = 13, .height = 13});
            frame.Fill([&](unsigned plane, unsigned x, unsigned y) {
                const bool tenBitTop = format == YUV420P10LE && x % 2;
                if (tenBitTop) return 1u;
                const bool chroma = plane > 0 || (format == YUYV422 && x % 2);
                const auto& there = rounded.planes[plane];
                if (kind == 1 && chroma) { // what a frame that rounds down is completed to
                    if (x >= there.held) x -= unit;
                    y = std::min(y, there.rows - 1);
                }
                if (kind == 2 && chroma && (x >= there.held || y >= there.rows)) return 250u;
                return 60 + 40 * plane + 3 * (x % unit) + 5 * (x / unit) + 2 * y;
            });
            results[kind] = Pixels(*ConvertTo(BGRA, frame));
        }
        EXPECT_EQ(results[0], results[1]);
        EXPECT_NE(results[0], results[2]);
    }
}

TEST_F(ConverterTest, ScalesAndKeepsProperties) {
    HostFrame frame({.format = YUV422P, .width = 40, .height = 30});
    frame.Fill([](unsigned plane, unsigned, unsigned) { return plane ? 128 : 100; });
    frame.SetTimeStamp(-5);
    frame.SetDuration(33);
    frame.SetInterlaced(true);
    frame.SetTopFieldFirst(true);
    frame.ratio = 1.5;
    frame.view = 5;
    for (const unsigned quality : {0u, 1u, 4u}) {
        const ResultPtr result = ConvertTo(YUV420P, frame, quality, 21, 0);
        unsigned width = 0, height = 0;
        result->GetDimension(&width, &height);
        EXPECT_EQ(width, 21u);
        EXPECT_EQ(height, 30u);
        EXPECT_EQ(result->GetTimeStamp(), -5);
        EXPECT_EQ(result->GetDuration(), 33u);
        EXPECT_TRUE(result->IsInterlaced() && result->IsTopFieldFirst() && result->IsTopDown());
        EXPECT_NEAR(result->GetDAR(), 1.5, 1e-6);
        auto* views = static_cast<IMVCRawVideoFrame*>(result->GetInterface(kMVCInterface));
        EXPECT_EQ(views->GetViewID(), 5);
        for (const unsigned luma : Row(*result, 0, 15)) EXPECT_NEAR(luma, 100, 1);
    }
    const ResultPtr same = ConvertTo(YUV422P, frame);
    EXPECT_EQ(Pixels(*same), Pixels(frame));
}

TEST_F(ConverterTest, RefusesWithAReason) {
    for (const unsigned format : {unsigned{PAL8}, unsigned{UYYVYY411}, 17u, 62u, 4000000000u}) {
        EXPECT_EQ(CreateImageConverter(format, 0, 0), nullptr);
        EXPECT_NE(std::string(GetBaseException()->GetExceptionMsg()).find(std::to_string(format)),
                  std::string::npos);
        EXPECT_EQ(TakeCode(), kUnknownException);
    }
    const ConverterPtr converter(CreateImageConverter(BGRA, 0, 0));
    EXPECT_EQ(converter->Convert(nullptr), nullptr);
    EXPECT_EQ(TakeCode(), kBadPointer);
    HostFrame palette({.format = PAL8, .width = 4, .height = 4});
    EXPECT_EQ(converter->Convert(&palette), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);
    HostFrame empty({.format = BGRA, .width = 0, .height = 4});
    EXPECT_EQ(converter->Convert(&empty), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);
    HostFrame narrow({.format = BGRA, .width = 4, .height = 4});
    --narrow.planes[0].width;
    EXPECT_EQ(converter->Convert(&narrow), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);
    HostFrame noMemory({.format = BGRA, .width = 4, .height = 4});
    noMemory.hasBuffers = false;
    EXPECT_EQ(converter->Convert(&noMemory), nullptr);
    EXPECT_EQ(TakeCode(), kBadPointer);
    HostFrame tight({.format = YUV420P10LE, .width = 4, .height = 4, .tight = true});
    EXPECT_EQ(converter->Convert(&tight), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);
}

/// A host's frame that throws what no library knows.
class ThrowingFrame final : public MemoryFrame {
public:
    ThrowingFrame()
        : MemoryFrame(BGRA, 2, 2, {{nullptr, 8, 8, 2}}) {}
    unsigned char* GetBuffer(unsigned, unsigned*, unsigned*, unsigned*) override { throw 1; }
};

TEST_F(ConverterTest, LetsNothingThatAFrameThrowsOut) {
    const ConverterPtr converter(CreateImageConverter(YUV420P, 0, 0));
    ThrowingFrame frame;
    EXPECT_EQ(converter->Convert(&frame), nullptr);
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), kUnknownException);
    EXPECT_STREQ(GetBaseException()->GetExceptionMsg(), "Unknown exception");
}

} // namespace
