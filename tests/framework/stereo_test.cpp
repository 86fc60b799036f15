// The stereo renderer and the maker of anaglyphs, without an effect around them.
#include <gtest/gtest.h>

#include "AVEffect/CMK3DRenderEffect.h"
#include "BaseTools/CBaseException.h"
#include "tests/support/effect_cases.h"
#include "tests/support/stereo.h"

namespace {

using namespace AVBased;
using namespace test;

ViewSamples Now(HostFrame& frame, unsigned plane) {
    auto& p = frame.planes[plane];
    return {p.Data(), p.width, p.pitch, p.rows};
}

// The anaglyph of two views as it is defined, on a frame that may be one of them.
void Anaglyph(HostFrame& out, HostFrame left, HostFrame right) {
    auto& luma = out.planes[0];
    const ViewSamples l = Now(left, 0), r = Now(right, 0);
    if (out.GetPixelFormat() == BGRA) {
        for (unsigned y = 0; y < luma.rows; ++y)
            for (unsigned x = 0; x < luma.width; ++x)
                if (x % 4 != 3 && l.Has(x, y) && r.Has(x, y)) luma.At(x, y) = (x % 4 == 2 ? l : r).At(x, y);
        return;
    }
    const ViewSamples leftV = Now(left, 2), rightU = Now(right, 1), rightV = Now(right, 2);
    for (unsigned y = 0; y < luma.rows; ++y)
        for (unsigned x = 0; x < luma.width; ++x) {
            if (!l.Has(x, y) || !r.Has(x, y)) continue;
            const unsigned cx = x / 2, cy = y / 2;
            const AnaglyphYuv pixel(l.At(x, y), leftV.Nearest(cx, cy), r.At(x, y), rightU.Nearest(cx, cy),
                                    rightV.Nearest(cx, cy));
            luma.At(x, y) = pixel.y;
            if (x % 2 || y % 2 || cx >= out.planes[1].width || cy >= out.planes[1].rows) continue;
            out.planes[1].At(cx, cy) = pixel.u;
            out.planes[2].At(cx, cy) = pixel.v;
        }
}

TEST(StereoRenderer, DrawsAnaglyphs) {
    unsigned seed = 0;
    ForLevels([&] {
        for (const unsigned format : kEffectFormats)
            for (const Shape& shape : AwkwardShapes(format))
                for (const int over :
                     {0, 1, 2, 3}) { // a frame of its own, the left view, the right, both less
                    CAVBase3DRender renderer;
                    renderer.SetRenderMode(kRenderRedCyan);
                    Shape padded = shape, views = shape;
                    (seed % 2 ? padded : views).extraPitch += 7; // each frame has its own pitch
                    if (over == 3) views.width -= shape.width / 3;
                    if (over == 3) padded.height -= shape.height / 2;
                    auto left = MakeFrame(views, ++seed), right = MakeFrame(padded, ++seed),
                         own = MakeFrame(shape, ++seed);
                    HostFrame& out = over == 1 ? *left : over == 2 ? *right : *own;
                    HostFrame expected = out;
                    Anaglyph(expected, *left, *right);
                    EXPECT_EQ(renderer.Render(left.get(), right.get(), &out), &out);
                    ASSERT_NO_FATAL_FAILURE(
                        ExpectSame(out, expected, Describe(shape) + std::to_string(over)));
                }
    });
}

// Grey left, black right: 130 red, nothing else.
TEST(StereoRenderer, AnaglyphByHand) {
    auto left = MakeFrame({YUV420P, 2, 2}), right = MakeFrame({YUV420P, 2, 2});
    for (size_t i = 0; i < 3; ++i) {
        std::fill(left->planes[i].bytes.begin(), left->planes[i].bytes.end(), 128);
        std::fill(right->planes[i].bytes.begin(), right->planes[i].bytes.end(), i ? 128 : 16);
    }
    CAVBase3DRender renderer;
    renderer.SetRenderMode(kRenderRedCyan);
    auto* out = static_cast<HostFrame*>(renderer.Render(left.get(), right.get(), nullptr));
    EXPECT_EQ(out->planes[0].bytes, (GuardedBytes(4, 50)));  // 66 * 130 + 128 >> 8, + 16
    EXPECT_EQ(out->planes[1].bytes, (GuardedBytes(1, 109))); // -38 * 130 + 128 >> 8, + 128
    EXPECT_EQ(out->planes[2].bytes, (GuardedBytes(1, 185))); // 112 * 130 + 128 >> 8, + 128
}

// The kept output is a clone of the first left view, for good.
TEST(StereoRenderer, KeepsItsOutputFrame) {
    CAVBase3DRender renderer;
    auto big = MakeFrame({BGRA, 40, 8}, 1), bigRight = MakeFrame({BGRA, 40, 8}, 2);
    big->SetTimeStamp(70);
    auto* out = static_cast<HostFrame*>(renderer.Render(big.get(), bigRight.get(), nullptr));
    EXPECT_EQ(out->GetTimeStamp(), 70);
    ExpectSame(*out, *big, "left view alone");

    auto small = MakeFrame({BGRA, 20, 3}, 3), smallRight = MakeFrame({BGRA, 20, 3}, 4);
    small->SetTimeStamp(71);
    GetBaseException()->Clear();
    HostFrame expected = *out;
    EXPECT_EQ(renderer.Render(small.get(), smallRight.get(), nullptr), out) << "a copy would have its size";
    EXPECT_EQ(Code(), 10021008);
    EXPECT_EQ(out->GetTimeStamp(), 71);
    ExpectSame(*out, expected, "unchanged");

    GetBaseException()->Clear();
    renderer.SetRenderMode(kRenderRedCyan);
    Anaglyph(expected, *small, *smallRight);
    EXPECT_EQ(renderer.Render(small.get(), smallRight.get(), nullptr), out);
    ExpectSame(*out, expected, "in its corner");
    EXPECT_EQ(Code(), 0);

    auto other = MakeFrame({YUV420P, 40, 8});
    EXPECT_EQ(renderer.Render(other.get(), other.get(), nullptr), out);
    EXPECT_EQ(Code(), 10021008);
    ExpectSame(*out, expected, "another format");
}

TEST(StereoRenderer, MapsAndConvertsInItsOwnWay) {
    CAVBase3DRender renderer;
    int x = -1, y = -1;
    const auto left = [&](int column, int width) {
        EXPECT_TRUE(renderer.MapResultVFFromLeft(column, 9, width, x, y));
        EXPECT_EQ(y, 9);
        return x;
    };
    const auto right = [&](int column, int width) {
        EXPECT_TRUE(renderer.MapResultVFFromRight(column, 9, width, x, 3));
        return x;
    };
    EXPECT_EQ(left(33, 1920), 33);
    EXPECT_TRUE(renderer.SetDepth(16));
    EXPECT_TRUE(renderer.SetDepth(0));
    EXPECT_TRUE(renderer.SetDepth(-5));
    EXPECT_EQ(left(1920, 1920), 1904);
    EXPECT_EQ(left(-100, 1920), -99); // -99.17
    EXPECT_EQ(right(0, 1920), 16);
    EXPECT_EQ(right(1000, 1920), 1007); // 991.67
    left(5, 0);                         // no number, but no trap either
    right(5, 0);

    int a = 0, b = 0, c = 0;
    EXPECT_TRUE(renderer.ConvertRGB2YUV(255, 0, 0, a, b, c));
    EXPECT_EQ((std::vector{a, b, c}), (std::vector{82, 90, 240}));
    EXPECT_TRUE(renderer.ConvertRGB2YUV(-300, 500, 0, a, b, c));
    EXPECT_EQ((std::vector{a, b, c}), (std::vector{191, 28, -187}));
    EXPECT_TRUE(renderer.ConvertYUV2RGB(100, 90, 240, a, b, c));
    EXPECT_EQ((std::vector{a, b, c}), (std::vector{277, -76, -77}));
}

TEST(StereoRendererDeathTest, InsistsOnViewsAndAMode) {
    CAVBase3DRender renderer;
    auto frame = MakeFrame({YUV420P, 8, 4});
    EXPECT_DEATH(renderer.Render(nullptr, frame.get(), nullptr), "Render.*L != NULL");
    EXPECT_DEATH(renderer.Render(frame.get(), nullptr, nullptr), "Render.*R != NULL");
    renderer.SetRenderMode(kRenderReserved);
    EXPECT_DEATH(renderer.Render(frame.get(), frame.get(), nullptr), "ProcessYUV.*Assertion `0' failed");
    EXPECT_TRUE(renderer.SetRenderMode(static_cast<Render3DMode>(5)));
    EXPECT_DEATH(renderer.Render(frame.get(), frame.get(), nullptr), "ProcessYUV");
    auto other = MakeFrame({RGB24, 8, 4});
    EXPECT_NE(renderer.Render(other.get(), other.get(), other.get()), nullptr) << "draws no such format";
}

TEST(Trans2D3D, RoundsDepthsAndTellsShifts) {
    CTrans2D3D converter;
    for (const auto& [asked, kept] :
         {std::pair{5, 20}, {20, 20}, {47, 40}, {99, 90}, {100, 100}, {250, 100}, {-7, 20}})
        EXPECT_EQ(converter.SetProperty(1, asked), kept);
    unsigned shift = 9;
    EXPECT_TRUE(converter.GetParamByIndex(40, &shift));
    EXPECT_EQ(shift, 0u) << "nothing is made yet";
    EXPECT_TRUE(converter.Init(1920, 2));
    EXPECT_TRUE(converter.GetParamByIndex(40, &shift));
    EXPECT_EQ(shift, 12u);
    EXPECT_TRUE(converter.GetParamByIndex(140, &shift));
    EXPECT_EQ(static_cast<int>(shift), -48);
    EXPECT_FALSE(converter.GetParamByIndex(120, &shift));
}

TEST(Trans2D3D, SaysWhatItCantMake) {
    CMK3DRenderEffect effect;
    effect.SetProperty("render_3d_mode", "1");
    ImagePostion position{};
    const auto run = [&](unsigned width, unsigned height) {
        GetBaseException()->Clear();
        CRawVideoFrame frame(false, BGRA, width, height, true);
        effect.ProcFrameInPlace(&position, 0, &frame);
        return std::pair(Code(), std::string(GetBaseException()->GetExceptionMsg()));
    };
    EXPECT_EQ(run(0, 4), (std::pair(10021008, std::string("invalid param"))));
    EXPECT_EQ(run(4, 0), (std::pair(10021008, std::string("invalid param"))));
    // Widened, it has more columns than a converter can make; and again, with what is left of the first try.
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(run(0x7FFFFFFF, 1), (std::pair(10021003, std::string("Bad pointer"))));
    auto frame = MakeFrame({BGRA, 300, 4});
    GetBaseException()->Clear();
    effect.ProcFrameInPlace(&position, 0, frame.get());
    EXPECT_EQ(Code(), 0) << "serves again";

    CTrans2D3D cleaned;
    cleaned.Set3DType(1);
    EXPECT_NE(cleaned.ProcessBGRA(frame.get()), nullptr);
    cleaned.CleanUp();
    EXPECT_THROW(cleaned.ProcessYV(frame.get()), CBaseException) << "not made anew for the same size";
    cleaned.Init(300, 4);
    cleaned.Set3DType(3);
    EXPECT_DEATH(cleaned.ProcessYV(frame.get()), "Assertion `0' failed");
}

// Views are clones that are used again; what is not stretched follows each frame.
TEST(StereoEffect, PreparedViewsFollowTheFrame) {
    CMK3DRenderEffect effect;
    ImagePostion position{};
    auto first = MakeFrame({YUVA420P, 40, 6}, 1), second = MakeFrame({YUVA420P, 40, 6}, 2);
    effect.ProcFrameInPlace(&position, 0, first.get());
    auto* view = static_cast<HostFrame*>(effect.PrepareLV(first.get()));
    second->SetTimeStamp(33);
    second->SetInterlaced(true);
    second->SetTopFieldFirst(true);
    EXPECT_EQ(effect.PrepareLV(second.get()), view);
    EXPECT_EQ(view->planes[3].bytes, second->planes[3].bytes);
    EXPECT_EQ(view->GetTimeStamp(), 33);
    EXPECT_TRUE(view->IsInterlaced() && view->IsTopFieldFirst());
    auto other = MakeFrame({YUVA444P, 40, 6}, 3);
    EXPECT_EQ(effect.PrepareRV(other.get())->GetPixelFormat(), YUVA444P + 0u);
}

} // namespace
