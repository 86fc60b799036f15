// Two views as one picture, and anaglyphs of one picture.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/stereo.h"

namespace {

using namespace AVBased;
using namespace test;

constexpr char kName[] = "EffectName3DRenderEffect";

Setting Mode(int mode, bool swap = false) {
    return {kName, {{"render_3d_mode", std::to_string(mode)}, {"render_3d_swtich", swap ? "1" : "0"}}};
}

unsigned WidthOf(HostFrame& frame) {
    unsigned width = 0;
    frame.GetDimension(&width, nullptr);
    return width;
}

// The view that a picture gives of itself.
HostFrame ViewOf(HostFrame frame, bool right) {
    const unsigned width = WidthOf(frame), unit = frame.GetPixelFormat() == BGRA ? 4 : 1;
    const double ratio = (width - std::floor(width / 4)) / width;
    HostFrame view = frame;
    for (size_t i = 0; i < frame.planes.size() && i < 3; ++i) {
        auto& plane = view.planes[i];
        const bool half = i > 0 && frame.GetPixelFormat() != YUVA444P;
        const unsigned offset = right ? (half ? width / 4 / 2 : width / 4) : 0;
        for (unsigned y = 0; y < plane.rows; ++y)
            for (unsigned x = 0; x < plane.width / unit; ++x) {
                const auto from = std::min(offset + static_cast<unsigned>(x * ratio), plane.width / unit - 1);
                for (unsigned n = 0; n < unit; ++n)
                    plane.At(x * unit + n, y) = frame.planes[i].At(from * unit + n, y);
            }
    }
    return view;
}

// A view's plane as an output plane's layout shows it, or, where it is smaller, as it is.
ViewSamples SeenFrom(HostFrame::Plane& out, HostFrame::Plane& view) {
    if (view.width < out.width || view.rows < out.rows || out.rows == 0)
        return {view.Data(), view.width, view.pitch, view.rows};
    size_t rows = 0;
    const size_t end = size_t{view.rows - 1} * view.pitch + view.width;
    while (rows < out.rows && rows * out.pitch + out.width <= end) ++rows;
    return {view.Data(), out.width, out.pitch, rows};
}

void Draw(HostFrame& out, HostFrame left, HostFrame right, int mode) {
    const unsigned unit = out.GetPixelFormat() == BGRA ? 4 : 1;
    for (size_t i = 0; i < out.planes.size(); ++i) {
        auto& plane = out.planes[i];
        const auto draw = [&](size_t x, size_t y, unsigned char value) {
            plane.At(static_cast<unsigned>(x), static_cast<unsigned>(y)) = value;
        };
        if (plane.width == 0) continue; // nor is its padding copied
        if (mode == 0) std::copy_n(left.planes[i].Data(), size_t{plane.pitch} * plane.rows, plane.Data());
        if (mode < 3 || i == 3) continue;
        const ViewSamples l = SeenFrom(plane, left.planes[i]), r = SeenFrom(plane, right.planes[i]);
        if (mode == 3)
            SideBySide(plane.width, plane.rows, unit, l, r, draw);
        else
            TopAndBottom(plane.width, plane.rows, l, r, draw);
    }
}

std::vector<unsigned> AllFormats() { return {kEffectFormats.begin(), kEffectFormats.end()}; }

// Sizes and formats change from frame to frame.
TEST(Stereo, MakesBothViewsOfOnePicture) {
    for (const int mode : {0, 3, 4, 9})
        for (const bool swap : {false, true})
            ASSERT_NO_FATAL_FAILURE(ExpectComputes(Mode(mode, swap), AllFormats(), [=](HostFrame& frame) {
                const HostFrame left = ViewOf(frame, swap), right = ViewOf(frame, !swap);
                Draw(frame, left, right, mode == 9 ? 0 : mode); // never set: the first one
            })) << mode;
}

TEST(Stereo, DrawsTheSecondView) {
    unsigned seed = 0;
    ForLevels([&] {
        for (const int mode : {0, 3, 4})
            for (const bool swap : {false, true}) {
                const auto proc = MakeVideo(Mode(mode, swap));
                for (const unsigned format : AllFormats())
                    for (const Shape& shape : AwkwardShapes(format)) {
                        auto frame = MakeFrame(shape, ++seed), second = MakeFrame(shape, ++seed);
                        frame->subset = second.get();
                        HostFrame expected = *frame;
                        const HostFrame untouched = *second;
                        Draw(expected, swap ? *second : *frame, swap ? *frame : *second, mode);
                        test::Run(*proc, *frame);
                        const std::string what = std::to_string(mode) + (swap ? ", swapped, " : ", ");
                        ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, expected, what + Describe(shape)));
                        ASSERT_NO_FATAL_FAILURE(ExpectSame(*second, untouched, "second view"));
                    }
            }
    });
}

// The views of one frame differ in size or layout; the first picture's own layout counts unless a view is
// smaller. Nothing outside a view is read.
TEST(Stereo, DrawsSecondViewsOfOtherShapes) {
    unsigned seed = 0;
    ForLevels([&] {
        for (const int mode : {3, 4})
            for (const bool swap : {false, true})
                for (const unsigned format : {unsigned{BGRA}, unsigned{YUV420P}, unsigned{YUV411P}})
                    for (const auto& [width, height, padding] :
                         {std::tuple{90u, 9u, 0u}, {133u, 4u, 3u}, {160u, 20u, 1u}, {133u, 9u, 9u}}) {
                        auto frame = MakeFrame({format, 133, 9, 3}, ++seed);
                        auto second = MakeFrame({format, width, height, padding}, ++seed);
                        frame->subset = second.get();
                        HostFrame expected = *frame;
                        Draw(expected, swap ? *second : *frame, swap ? *frame : *second, mode);
                        test::Run(*MakeVideo(Mode(mode, swap)), *frame);
                        ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, expected, std::to_string(width)));
                    }
    });
    // A frame that is its own second view.
    auto frame = MakeFrame({BGRA, 33, 9}, 1);
    frame->subset = frame.get();
    HostFrame expected = *frame;
    Draw(expected, *frame, *frame, 4);
    test::Run(*MakeVideo(Mode(4)), *frame);
    ExpectSame(*frame, expected, "itself");
}

// By hand: a row of eight pixels. Three quarters are six columns: 0 0 1 2 3 3 4 5 from the left, and two
// more each from the right.
TEST(Stereo, ByHand) {
    const auto row = [](int mode) {
        auto frame = MakeFrame({YUVA444P, 8, 1});
        for (auto& plane : frame->planes)
            for (unsigned x = 0; x < 8; ++x) plane.At(x, 0) = static_cast<unsigned char>(x);
        test::Run(*MakeVideo(Mode(mode)), *frame);
        return frame->planes[0].bytes;
    };
    EXPECT_EQ(row(0), (GuardedBytes{0, 0, 1, 2, 3, 3, 4, 5}));
    EXPECT_EQ(row(3), (GuardedBytes{0, 1, 3, 4, 2, 3, 5, 6}));
}

struct Freer {
    void operator()(IRawVideoFrame* frame) const { frame->Free(); }
    void operator()(IImageConverter* converter) const { converter->Release(); }
};

HostFrame InFormat(IRawVideoFrame& frame, unsigned format, unsigned width, unsigned height,
                   unsigned quality = 4) {
    const std::unique_ptr<IImageConverter, Freer> converter(
        CreateImageConverterEx(format, width, height, quality));
    const std::unique_ptr<IRawVideoFrame, Freer> converted(converter->Convert(&frame));
    HostFrame result({format, width, height, 0, 0, true});
    for (unsigned i = 0; i < result.planes.size(); ++i) {
        unsigned bytes = 0, pitch = 0, rows = 0;
        const unsigned char* data = converted->GetBuffer(i, &bytes, &pitch, &rows);
        for (unsigned y = 0; y < rows; ++y)
            std::copy_n(data + size_t{y} * pitch, bytes, &result.planes[i].At(0, y));
    }
    return result;
}

TEST(Stereo, ConvertsASecondViewOfAnotherFormat) {
    const auto proc = MakeVideo(Mode(3));
    for (const unsigned seed : {1u, 2u}) {
        auto frame = MakeFrame({BGRA, 32, 8}, seed), second = MakeFrame({YUV420P, 32, 8}, seed + 5);
        frame->subset = second.get();
        HostFrame expected = *frame;
        Draw(expected, *frame, InFormat(*second, BGRA, 32, 8, 0), 3);
        test::Run(*proc, *frame);
        ExpectSame(*frame, expected, "converted");
    }
    // The converter stays the one to BGRA.
    auto frame = MakeFrame({YUV422P, 32, 8}), second = MakeFrame({YUV420P, 32, 8});
    frame->subset = second.get();
    const HostFrame original = *frame;
    test::Run(*proc, *frame);
    ExpectSame(*frame, original, "not served");
    EXPECT_EQ(Code(), 10021008);
}

// The picture widened for the depth, its colours moved, brought into a format.
HostFrame Anaglyph(HostFrame& frame, int type, unsigned depth, unsigned format) {
    unsigned width = 0, height = 0;
    frame.GetDimension(&width, &height);
    HostFrame wide = InFormat(frame, RGB24, width + width / (120 - depth), height);
    HostFrame rgb({RGB24, width, height});
    const unsigned shift = width / (120 - depth) / 2;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < 3 * width; ++x) {
            const bool moves = x % 3 == 0 || (x % 3 == 2 && type == 2);
            rgb.planes[0].At(x, y) = wide.planes[0].At(moves ? x + 3 * shift : x, y);
        }
    return InFormat(rgb, format, width, height);
}

// Copies what a frame's planes can hold of another's.
void Take(HostFrame& to, HostFrame from) {
    for (size_t i = 0; i < to.planes.size(); ++i)
        for (unsigned y = 0; y < std::min(from.planes[i].rows, to.planes[i].rows); ++y)
            std::copy_n(&from.planes[i].At(0, y), std::min(from.planes[i].width, to.planes[i].width),
                        &to.planes[i].At(0, y));
}

TEST(Stereo, MakesAnaglyphsOfOnePicture) {
    unsigned seed = 0;
    ForLevels([&] {
        for (const int type : {1, 2}) {
            const auto proc = MakeVideo(Mode(type, true)); // exchanging views changes nothing here
            for (const auto& [text, depth] : {std::pair{"5", 20u}, {"47", 40u}, {"100", 100u}, {"250", 100u}})
                for (const unsigned format : {unsigned{BGRA}, unsigned{YUV420P}})
                    for (const auto& [width, height] : {std::pair{640u, 6u}, {130u, 9u}, {3u, 3u}}) {
                        proc->SetProperty("render_3d_depth", text);
                        auto frame = MakeFrame({format, width, height, 5, 1}, ++seed),
                             second = MakeFrame({format, width, height});
                        frame->subset = second.get(); // is not looked at
                        HostFrame expected = *frame;
                        Take(expected, Anaglyph(*frame, type, depth, format));
                        test::Run(*proc, *frame);
                        ASSERT_NO_FATAL_FAILURE(
                            ExpectSame(*frame, expected, std::string(text) + ", " + std::to_string(width)));
                    }
        }
    });
}

// What lies behind the rows comes along where the converter's frame has them as far apart, and only there.
TEST(Stereo, AnaglyphsCopyRowsOfEqualPitchWhole) {
    constexpr unsigned kRowBytes = 50 * 4;
    unsigned width = 0, pitch = 0, rows = 0;
    IImageConverter* const converter = CreateImageConverterEx(BGRA, 50, 4, 4);
    IRawVideoFrame* const like = converter->Convert(MakeFrame({BGRA, 50, 4}).get());
    like->GetBuffer(0, &width, &pitch, &rows);
    like->Free();
    converter->Release();
    ASSERT_GT(pitch, kRowBytes);
    for (const unsigned more : {0u, 4u}) {
        auto frame = MakeFrame({BGRA, 50, 4, pitch - kRowBytes + more});
        const auto padding = [&] {
            const unsigned char* const row = frame->planes[0].Data();
            return std::vector<unsigned char>(row + kRowBytes, row + pitch);
        };
        const auto before = padding();
        test::Run(*MakeVideo(Mode(1)), *frame);
        EXPECT_EQ(padding() == before, more != 0) << more;
    }
}

// Anaglyphs by the converter that hosts bring.
TEST(Stereo, IsAsInTheLedger) {
    ledger::ExpectInLedger(kName, [](const auto& of, HostFrame& frame) {
        const int mode = of.Int("render_3d_mode");
        if (mode == 1 || mode == 2) return Take(frame, Anaglyph(frame, mode, 80, of.format));
        const bool swap = of.Int("render_3d_swtich");
        HostFrame left = frame, right = frame;
        if (of.right) {
            right = *ledger::MakePicture(of.format, of.width, of.height, 2);
        } else {
            left = ViewOf(frame, false);
            right = ViewOf(frame, true);
        }
        Draw(frame, swap ? right : left, swap ? left : right, mode);
    });
}

// One way back for the process: that of the first such frame.
TEST(Stereo, AnaglyphsOfOtherFormatsShareTheWayBack) {
    GetBaseException()->Clear();
    const auto proc = MakeVideo(Mode(1));
    for (const unsigned seed : {3u, 4u}) {
        auto frame = MakeFrame({YUV422P, 256, 8, 3}, seed);
        HostFrame expected = *frame, bgra = InFormat(*frame, BGRA, 256, 8);
        HostFrame anaglyph = Anaglyph(bgra, 1, 80, BGRA);
        Take(expected, InFormat(anaglyph, YUV422P, 256, 8));
        test::Run(*proc, *frame);
        ExpectSame(*frame, expected, "4:2:2");
    }
    EXPECT_EQ(Code(), 0);
    for (const Shape& shape : {Shape{YUV411P, 256, 8, 3}, {YUV422P, 128, 8, 3}})
        for (const auto& other : {MakeVideo(Mode(1)), MakeVideo(Mode(2))}) ExpectRefuses(*other, shape, "");
}

TEST(StereoDeathTest, AnaglyphsNeedOneOrThreePlanes) {
    const auto proc = MakeVideo(Mode(1));
    auto frame = MakeFrame({YUVA420P, 32, 8});
    EXPECT_DEATH(test::Run(*proc, *frame),
                 "pFrame->GetBufferCount\\(\\) == 3 \\|\\| pFrame->GetBufferCount\\(\\) == 1");
    EXPECT_DEATH(test::Run(*MakeVideo(Mode(-1)), *MakeFrame({BGRA, 8, 2})),
                 "ProcessBGRA.*Assertion `0' failed");
}

// Once views were rendered, the depth is a quarter of their width; here that of the anaglyph that follows.
TEST(Stereo, KeepsDepthSwapAndDurationAsTheyCome) {
    const auto proc = MakeVideo(Mode(3));
    const auto anaglyph = [&](unsigned depth) {
        auto frame = MakeFrame({BGRA, 500, 4, 5}, depth);
        HostFrame expected = *frame;
        Take(expected, Anaglyph(*frame, 1, depth, BGRA));
        test::Run(*proc, *frame);
        ExpectSame(*frame, expected, std::to_string(depth));
    };
    test::Run(*proc, *MakeFrame({BGRA, 200, 4}));
    proc->SetProperty("render_3d_mode", "1");
    anaglyph(50);
    proc->SetProperty("render_3d_depth", "80");
    anaglyph(80);
    proc->SetProperty("duration", "250");
    EXPECT_EQ(proc->GetDuration(), 1u);
    EXPECT_STREQ(proc->GetProperty("duration", nullptr), "250");

    proc->SetProperty("render_3d_mode", "0");
    proc->SetProperty("render_3d_swtich", "1");
    proc->SetProperty("render_3d_swtich", "0");
    auto frame = MakeFrame({BGRA, 40, 4});
    const HostFrame right = ViewOf(*frame, true);
    test::Run(*proc, *frame);
    ExpectSame(*frame, right, "still swapped");
}

TEST(Stereo, ReportsFramesItCantServe) {
    auto frame = MakeFrame({BGRA, 40, 4});
    const HostFrame original = *frame;
    frame->onClone = [](HostFrame&) { return new HostFrame({BGRA, 40, 4, 8}); };
    test::Run(*MakeVideo(Mode(0)), *frame);
    EXPECT_EQ(Code(), 10021008);
    ExpectSame(*frame, original, "clone of another layout");
    frame = MakeFrame({BGRA, 0, 4});
    test::Run(*MakeVideo(Mode(3)), *frame);
    test::Run(*MakeVideo(Mode(1)), *frame);
    EXPECT_EQ(Message(), "invalid param");
}

} // namespace
