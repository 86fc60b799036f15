// How transitions read, fit and convert their pictures, and what they make of hosts that fail.
#include <gtest/gtest.h>

#include "tests/support/converted.h"
#include "tests/support/effect_cases.h"
#include "tests/support/host_manager.h"

namespace {

using namespace AVBased;
using namespace test;

// A transition between two pictures that begins at 100, so that before it shows the first one as it is.
class TransitionBase : public testing::Test {
protected:
    TransitionBase() { GetBaseException()->Clear(); }

    VideoProc Make(IAVManager* with, const char* effect = "EffectNameMkCloseDoor") {
        return MakeVideo(effect,
                         {{"EffectPropVFPath1", "first"},
                          {"EffectPropVFPath2", "second"},
                          {"EffectPropStartTime", "100"},
                          {"EffectPropSourceDur", "200"}},
                         with);
    }
    void Show(HostFrame* first, HostFrame* second) {
        manager.sources = {{"first", {first}}, {"second", {second}}};
    }
    // Runs a frame that must stay as it is, with that record.
    void ExpectFails(IVideoProc& proc, int code, const std::string& message, int time = 0) {
        for (const unsigned format : {BGRA, YUV420P}) {
            GetBaseException()->Clear();
            auto frame = MakeFrame({format, 12, 8, 4});
            const HostFrame original = *frame;
            test::Run(proc, *frame, time);
            ExpectSame(*frame, original, message);
            EXPECT_EQ(Code(), code) << message;
            EXPECT_EQ(Message(), message);
        }
        EXPECT_EQ(manager.readers, 0);
    }

    HostManager manager;
};

TEST_F(TransitionBase, FitsPicturesInsideMargins) {
    struct Fit {
        unsigned width, height, outWidth, outHeight, fittedWidth, fittedHeight, left, top;
    };
    for (const Fit& fit : {Fit{64, 48, 192, 108, 144, 108, 24, 0},
                           {192, 108, 100, 100, 100, 56, 0, 22},
                           {48, 64, 33, 20, 15, 20, 9, 0},
                           {200, 1, 10, 10, 10, 1, 0, 4},
                           {1, 200, 10, 11, 1, 11, 4, 0},
                           {50, 40, 100, 80, 100, 80, 0, 0},
                           {50, 40, 50, 40, 50, 40, 0, 0}})
        for (const unsigned format : {BGRA, YUV420P}) {
            auto picture = MakeFrame({format, fit.width, fit.height, 8}, 3);
            auto second = MakeFrame({BGRA, fit.outWidth, fit.outHeight}, 4);
            Show(picture.get(), second.get());
            auto frame = MakeFrame({BGRA, fit.outWidth, fit.outHeight, 4}, 5);
            HostFrame expected = *frame;
            const ConvertedFrame scaled = Converted(*picture, BGRA, fit.fittedWidth, fit.fittedHeight);
            HostFrame inner({BGRA, fit.fittedWidth, fit.fittedHeight});
            CopyPicture(inner, *scaled);
            ForPixels(expected, [](unsigned char* p) { std::copy_n("\0\0\0\xFF", 4, p); });
            for (unsigned y = 0; y < fit.fittedHeight; ++y)
                std::copy_n(&inner.planes[0].At(0, y), fit.fittedWidth * 4,
                            &expected.planes[0].At(fit.left * 4, fit.top + y));
            const bool asItIs = format == BGRA && fit.width == fit.outWidth;
            if (asItIs) CopyPicture(expected, *picture);
            const VideoProc proc = Make(&manager);
            test::Run(*proc, *frame);
            ExpectSame(*frame, expected, std::to_string(fit.width) + ", " + std::to_string(format));
            EXPECT_EQ(Code(), 0) << Message();
        }
}

TEST_F(TransitionBase, FitsAnewForFramesOfAnotherSizeAndReadsOnce) {
    auto first = MakeFrame({BGRA, 30, 20}, 1), second = MakeFrame({YUV420P, 30, 20}, 2);
    Show(first.get(), second.get());
    const VideoProc proc = Make(&manager);
    for (const unsigned width : {30u, 60u, 30u, 31u}) {
        auto frame = MakeFrame({BGRA, width, 20}, 3);
        const HostFrame original = *frame;
        test::Run(*proc, *frame, 150);
        EXPECT_NE(frame->planes[0].bytes, original.planes[0].bytes);
    }
    proc->SetProperty("EffectPropVFPath1", "another");
    test::Run(*proc, *MakeFrame({BGRA, 30, 20}));
    EXPECT_EQ(manager.opened, (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(manager.readers, 0);
    EXPECT_EQ(Code(), 0) << Message();
}

TEST_F(TransitionBase, ConvertsOtherFormatsThereAndBack) {
    auto first = MakeFrame({BGRA, 33, 17}, 1), second = MakeFrame({BGRA, 33, 17}, 2);
    Show(first.get(), second.get());
    const ConvertedFrame back = Converted(*first, YUV420P);
    const VideoProc proc = Make(&manager);
    // The way back stays that of the first frame's format; only as much as both have is written.
    for (const unsigned format : {YUV420P, YUV444P, YUVA420P, RGB24})
        for (const bool roundUp : {false, true}) {
            auto frame = MakeFrame({format, 33, 17, 5, 1, roundUp}, 3);
            HostFrame expected = *frame;
            CopyPicture(expected, *back);
            test::Run(*proc, *frame, 99);
            ExpectSame(*frame, expected, std::to_string(format));
        }
    EXPECT_EQ(Code(), 0) << Message();
    // What the transition leaves is the frame's own picture, there and back.
    auto frame = MakeFrame({YUV422P, 33, 17}, 3);
    HostFrame expected = *frame;
    CopyPicture(expected, *Converted(*Converted(*frame, BGRA), YUV422P));
    test::Run(*Make(&manager, "EffectNameMkClock"), *frame, 200);
    ExpectSame(*frame, expected, "clock at its end");
}

TEST_F(TransitionBase, TakesTheFramesOwnTime) {
    auto first = MakeFrame({BGRA, 9, 5}, 1), second = MakeFrame({BGRA, 9, 5}, 2);
    Show(first.get(), second.get());
    const VideoProc proc = Make(&manager);
    for (const unsigned format : {BGRA, YUV420P})
        for (const auto& [stamp, shown] : {std::pair{99, first.get()}, {200, second.get()}}) {
            auto frame = MakeFrame({format, 9, 5}, 3);
            frame->SetTimeStamp(stamp);
            HostFrame expected = *frame;
            CopyPicture(expected, format == BGRA ? *shown : *Converted(*shown, format));
            test::Run(*proc, *frame, kTimeFromFrame);
            ExpectSame(*frame, expected, std::to_string(stamp));
        }
}

TEST_F(TransitionBase, PropertiesKeepToTheirNames) {
    const VideoProc proc = Make(nullptr);
    EXPECT_TRUE(proc->SetProperty("duration", "250"));
    EXPECT_EQ(proc->GetDuration(), 1u);
    EXPECT_STREQ(proc->GetProperty("duration", nullptr), "250");
    EXPECT_FALSE(proc->SetProperty("EffectPropVFPath3", "x"));
    EXPECT_STREQ(proc->GetProperty("EffectPropVFPath1", nullptr), "first");
}

TEST_F(TransitionBase, AsksAgainForAsLongAsBothPicturesAreMissing) {
    const VideoProc proc = Make(&manager);
    ExpectFails(*proc, 10021003, "Bad pointer"); // two frames
    EXPECT_EQ(manager.opened.size(), 4u);
    auto picture = MakeFrame({BGRA, 12, 8}, 1);
    Show(picture.get(), nullptr);
    ExpectFails(*proc, 10021003, "Bad pointer");
    EXPECT_EQ(manager.opened.size(), 6u) << "one of them has come";
    manager.opened.clear();
    for (const char* path : {"EffectPropVFPath1", "EffectPropVFPath2"}) {
        const VideoProc pathless = Make(&manager);
        pathless->SetProperty(path, "");
        ExpectFails(*pathless, 10021003, "Bad pointer");
    }
    const VideoProc queried = Make(&manager);
    queried->SetProperty("EffectPropVFPath1", "p://a?x&vstreamid=1&x=");
    ExpectFails(*queried, 10021003, "Bad pointer");
    EXPECT_EQ(manager.opened[manager.opened.size() - 2], "p://a?vstreamid=1");
    ExpectFails(*Make(nullptr), 10021003, "Bad pointer");
}

TEST_F(TransitionBase, LooksForAPictureAmongThirtyItems) {
    auto picture = MakeFrame({BGRA, 12, 8}, 1);
    for (const auto& [sounds, reads] : {std::pair{29, 30}, {30, 30}}) {
        Show(picture.get(), picture.get());
        manager.sources["second"].soundsBefore = sounds;
        manager.reads = 0;
        auto frame = MakeFrame({BGRA, 12, 8}, 2);
        GetBaseException()->Clear();
        test::Run(*Make(&manager), *frame);
        EXPECT_EQ(Code(), sounds < 30 ? 0 : 10021003);
        EXPECT_EQ(manager.reads, 1 + reads);
    }
    manager.sources["second"] = {nullptr, 0, 5}; // ends after five sounds
    manager.reads = 0;
    test::Run(*Make(&manager), *MakeFrame({BGRA, 12, 8}));
    EXPECT_EQ(manager.reads, 1 + 6);
    EXPECT_EQ(manager.readers, 0);
}

TEST_F(TransitionBase, SurvivesHostsThatFail) {
    auto picture = MakeFrame({BGRA, 12, 8}, 1);
    Show(picture.get(), picture.get());
    manager.onOpen = [] { throw std::runtime_error("no access"); };
    ExpectFails(*Make(&manager), 10021015, "no access");
    manager.onOpen = [] { throw 5; };
    ExpectFails(*Make(&manager), 10021008, "Unknown exception");
    manager.onOpen = nullptr;
    manager.sources["first"].throwsOnRead = true;
    ExpectFails(*Make(&manager), 10021015, "broken source");
    manager.sources["first"] = {picture.get()};
    picture->onClone = [](HostFrame&) -> IRawVideoFrame* { return nullptr; };
    ExpectFails(*Make(&manager), 10021003, "Bad pointer");
    // Pictures whose buffers are smaller than they say, and empty ones.
    picture->onClone = [](HostFrame& frame) {
        auto* copy = new HostFrame(frame);
        copy->planes[0].rows = 7;
        return copy;
    };
    ExpectFails(*Make(&manager), 10021008, "a picture is smaller than the frame; the frame is left as it is");
    auto empty = MakeFrame({BGRA, 0, 8});
    Show(empty.get(), empty.get());
    ExpectFails(*Make(&manager), 10021008, "a picture without a pixel can't be fitted");
    // A frame that can't be converted, whatever was recorded before and by the converter.
    GetBaseException()->SetException(10021005, "older", 1, "f");
    picture->onClone = nullptr;
    Show(picture.get(), picture.get());
    HostFrame hollow({YUV420P, 0, 0});
    test::Run(*Make(&manager), hollow);
    EXPECT_EQ(Code(), 10021003);
    EXPECT_STREQ(GetBaseException()->GetExceptionMsg(), "Bad pointer");
}

} // namespace
