// Every effect of the catalogue, after its first frame.
#include <gtest/gtest.h>

#include <thread>

#include "BaseTools/block_pool.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "aveffect/catalogue.h"
#include "tests/memory/allocation_count.h"
#include "tests/support/plugin.h"

namespace {

using namespace AVBased;

// A host's frame whose clones are recycled in this program.
class Picture {
public:
    explicit Picture(unsigned format)
        : m_Frame(false, format, 96, 64, true)
        , m_Pixels(m_Frame.GetRequireSize()) {
        unsigned char* place = m_Pixels.data();
        for (unsigned i = 0; i < m_Frame.GetBufferCount(); ++i) {
            auto* buffer = m_Frame.GetBuffer(i);
            buffer->pitch = buffer->widthBytes;
            buffer->data = place;
            place += size_t{buffer->pitch} * buffer->rows;
        }
        Fill();
    }
    void Fill() {
        for (size_t i = 0; i < m_Pixels.size(); ++i) m_Pixels[i] = static_cast<unsigned char>(i * i / 7);
    }
    CRawVideoFrame& Frame() { return m_Frame; }
    const std::vector<unsigned char>& Pixels() const { return m_Pixels; }

private:
    CRawVideoFrame m_Frame;
    std::vector<unsigned char> m_Pixels;
};

// What makes effects work that do nothing with their defaults.
constexpr std::pair<std::string_view, const char*> kBusyValues[] = {{"duration", "100"},
                                                                    {"brightness", "10"},
                                                                    {"saturation", "20"},
                                                                    {"mosaic_x2", "90"},
                                                                    {"mosaic_y2", "60"},
                                                                    {"mosaic_step", "3"},
                                                                    {"emboss_level", "2"},
                                                                    {"transparency_scale", "50"},
                                                                    {"filter_scope", "60"},
                                                                    {"spherize_r", "20"},
                                                                    {"spherize_x", "40"},
                                                                    {"spherize_y", "30"},
                                                                    {"spherize_scale", "0.7"},
                                                                    {"rotate_r", "20"},
                                                                    {"rotate_x", "40"},
                                                                    {"rotate_y", "30"},
                                                                    {"rotate_scale", "3"},
                                                                    {"magnifier_r", "20"},
                                                                    {"magnifier_x", "40"},
                                                                    {"magnifier_y", "30"},
                                                                    {"magnifier_scale", "2.7"},
                                                                    {"tensile_vertical", "1"},
                                                                    {"tensile_vertical_y1", "20"},
                                                                    {"tensile_vertical_y2", "50"},
                                                                    {"tensile_vertical_scale", "1.3"},
                                                                    {"tensile_horizontal", "1"},
                                                                    {"tensile_horizontal_x1", "20"},
                                                                    {"tensile_horizontal_x2", "50"},
                                                                    {"tensile_horizontal_scale", "1.3"},
                                                                    {"atomize_ishorizontal", "1"},
                                                                    {"atomize_isvertical", "1"},
                                                                    {"atomize_level", "9"},
                                                                    {"mirror", "1"},
                                                                    {"vertical", "1"},
                                                                    {"Rotate90XDerection", "1"}};

test::VideoProc MakeBusy(const EffectInfo& effect) {
    test::VideoProc proc = test::MakeVideo(effect.name);
    proc->SetProperty("duration", "100");
    for (const PropertyInfo& property : effect.properties)
        for (const auto& [name, value] : kBusyValues)
            if (name == property.name) proc->SetProperty(property.name, value);
    return proc;
}

TEST(SteadyState, NothingIsAllocatedAfterTheFirstFrame) {
    const BaseTool::BlockKeeper keeper;
    for (const EffectInfo& effect : kVideoEffects)
        for (const unsigned format : {BGRA, YUV420P, YUVA444P}) {
            if (format == YUVA444P && test::ReportsOtherFormats(effect.name)) continue;
            const test::VideoProc proc = MakeBusy(effect);
            Picture picture(format);
            ImagePostion position{};
            const auto frame = [&] {
                proc->ProcFrameInPlace(&position, 50, &picture.Frame());
                EXPECT_NE(proc->ProcFrame(&position, 50, &picture.Frame()), nullptr);
            };
            frame();
            const size_t before = test::Allocations();
            for (int i = 0; i < 3; ++i) frame();
            EXPECT_EQ(test::Allocations(), before) << effect.name << ", format " << format;
        }
}

TEST(SteadyState, ProcessorsLeaveNothingBehind) {
    const auto live = [](const EffectInfo& effect) {
        const test::VideoProc proc = MakeBusy(effect);
        Picture picture(BGRA);
        ImagePostion position{};
        proc->ProcFrame(&position, 50, &picture.Frame());
    };
    live(kVideoEffects[0]); // loads the library and this program's tables
    for (const EffectInfo& effect : kVideoEffects) {
        const size_t before = test::LiveBlocks();
        live(effect);
        EXPECT_EQ(test::LiveBlocks(), before) << effect.name;
    }
}

TEST(SteadyState, ThreadsWithAProcessorEachComputeTheSame) {
    for (const EffectInfo& effect : kVideoEffects) {
        if (effect.traits & kDrawsRandom) continue; // the generator is the process's
        const auto render = [&](unsigned format) {
            const test::VideoProc proc = MakeBusy(effect);
            Picture picture(format);
            for (int time = 0; time < 20; ++time) test::Run(*proc, picture.Frame(), time);
            return picture.Pixels();
        };
        for (const unsigned format : {BGRA, YUV420P}) {
            const auto expected = render(format);
            std::vector<std::vector<unsigned char>> results(4);
            {
                std::vector<std::jthread> threads;
                for (auto& result : results) threads.emplace_back([&] { result = render(format); });
            }
            for (const auto& result : results) EXPECT_EQ(result, expected) << effect.name;
        }
    }
}

} // namespace
