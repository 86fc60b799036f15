// Each effect through the loaded plug-in, in place and on a copy, with the settings that make it work
// hardest.
#include <map>

#include "BaseTools/block_pool.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "aveffect/catalogue.h"
#include "bench/copy_time.h"
#include "tests/support/plugin.h"

namespace bench {

namespace {

using Settings = std::vector<std::pair<const char*, const char*>>;

// Stand for the picture's own size in settings.
constexpr char kWidth[] = "width";
constexpr char kHeight[] = "height";
constexpr char kHalfWidth[] = "width/2";
constexpr char kHalfHeight[] = "height/2";

// Effects that do nothing, or too little, with their defaults.
std::vector<Settings> SettingsOf(const std::string& effect) {
    static const std::map<std::string, std::vector<Settings>> kSettings = {
        {"brightness_contrast",
         {{{"brightness", "10"}, {"contrast", "20"}},
          {{"brightness", "10"}, {"contrast", "20"}, {"saturation", "30"}}}},
        {"fadein", {{{"duration", "100"}}}},
        {"fadeout", {{{"duration", "100"}}}},
        {"directfadein", {{{"duration", "100"}, {"fadein_color", "8421504"}}}},
        {"directfadeout", {{{"duration", "100"}, {"fadeout_color", "8421504"}}}},
        {"emboss", {{{"emboss_level", "2"}}}},
        {"spherize",
         {{{"spherize_r", kHalfHeight},
           {"spherize_x", kHalfWidth},
           {"spherize_y", kHalfHeight},
           {"spherize_scale", "0.7"}}}},
        {"rotate",
         {{{"rotate_r", kHalfHeight},
           {"rotate_x", kHalfWidth},
           {"rotate_y", kHalfHeight},
           {"rotate_scale", "3"}}}},
        {"magnifier",
         {{{"magnifier_r", kHalfHeight},
           {"magnifier_x", kHalfWidth},
           {"magnifier_y", kHalfHeight},
           {"magnifier_scale", "1.5"}},
          {{"magnifier_r", kHalfHeight},
           {"magnifier_x", kHalfWidth},
           {"magnifier_y", kHalfHeight},
           {"magnifier_scale", "3"}}}},
        {"tensile",
         {{{"tensile_vertical", "1"},
           {"tensile_vertical_y1", "400"},
           {"tensile_vertical_y2", "800"},
           {"tensile_vertical_scale", "1.5"}},
          {{"tensile_horizontal", "1"},
           {"tensile_horizontal_x1", "700"},
           {"tensile_horizontal_x2", "1200"},
           {"tensile_horizontal_scale", "1.8"}},
          {{"tensile_vertical", "1"},
           {"tensile_vertical_y1", "400"},
           {"tensile_vertical_y2", "800"},
           {"tensile_vertical_scale", "1.5"},
           {"tensile_horizontal", "1"},
           {"tensile_horizontal_x1", "700"},
           {"tensile_horizontal_x2", "1200"},
           {"tensile_horizontal_scale", "1.8"}}}},
        {"atomize", {{{"atomize_ishorizontal", "1"}, {"atomize_isvertical", "1"}, {"atomize_level", "16"}}}},
        {"mosaic", {{{"mosaic_x2", kWidth}, {"mosaic_y2", kHeight}, {"mosaic_step", "4"}}}},
        {"transparency", {{{"transparency_scale", "50"}}}},
        {"colorfilter", {{{"filter_scope", "40"}, {"filter_color", "8421504"}}}},
        {"addnoise", {{{"addnoise_level", "-12"}}}},
    };
    const auto found = kSettings.find(effect);
    return found == kSettings.end() ? std::vector<Settings>{{}} : found->second;
}

struct Picture {
    unsigned format;
    const char* name;
    unsigned width, height;
};

// A picture in one block, rows without padding.
class BenchFrame {
public:
    explicit BenchFrame(const Picture& picture)
        : m_frame(false, picture.format, picture.width, picture.height, true)
        , m_memory(MakeMemory(m_frame.GetRequireSize())) {
        unsigned char* place = m_memory.get();
        for (unsigned i = 0; i < m_frame.GetBufferCount(); ++i) {
            auto* buffer = m_frame.GetBuffer(i);
            buffer->pitch = buffer->widthBytes;
            buffer->data = place;
            place += size_t{buffer->pitch} * buffer->rows;
        }
    }
    AVBased::IRawVideoFrame& Frame() { return m_frame; }
    size_t Bytes() const { return m_frame.GetRequireSize(); }

private:
    AVBased::CRawVideoFrame m_frame;
    Memory m_memory;
};

// "duration", where it is set, is 100: half way through the span.
constexpr int kTime = 50;

void RunEffect(benchmark::State& state, const std::string& effect, const Settings& settings,
               const Picture& picture, bool onCopy) {
    const BaseTool::BlockKeeper keeper; // the frames, and so their clones, are this program's
    const test::VideoProc proc = test::MakeVideo(effect);
    for (const auto& [name, value] : settings) {
        const unsigned size = value == kWidth        ? picture.width
                              : value == kHeight     ? picture.height
                              : value == kHalfWidth  ? picture.width / 2
                              : value == kHalfHeight ? picture.height / 2
                                                     : 0;
        proc->SetProperty(name, size ? std::to_string(size).c_str() : value);
    }
    BenchFrame frame(picture);
    AVBased::ImagePostion position{};
    TimeAgainstCopy(state, frame.Bytes(), [&] {
        if (onCopy)
            proc->ProcFrame(&position, kTime, &frame.Frame());
        else
            proc->ProcFrameInPlace(&position, kTime, &frame.Frame());
    });
}

} // namespace

void RegisterEffectBenchmarks() {
    constexpr Picture kPictures[] = {{AVBased::BGRA, "BGRA", 1920, 1080},
                                     {AVBased::YUV420P, "YUV420P", 1920, 1080},
                                     {AVBased::BGRA, "BGRA", 3840, 2160},
                                     {AVBased::YUV420P, "YUV420P", 3840, 2160}};
    for (const AVBased::EffectInfo& effect : AVBased::kVideoEffects)
        for (const Settings& settings : SettingsOf(effect.name))
            for (const Picture& picture : kPictures)
                for (const bool onCopy : {false, true}) {
                    std::string name = effect.name;
                    for (const auto& [property, value] : settings)
                        name += std::string(" ") + property + "=" + value;
                    name += std::string(", ") + picture.name + " " + std::to_string(picture.height) + "p" +
                            (onCopy ? ", ProcFrame" : "");
                    benchmark::RegisterBenchmark(name.c_str(), [=, effectName = std::string(effect.name)](
                                                                   benchmark::State& state) {
                        RunEffect(state, effectName, settings, picture, onCopy);
                    })->UseManualTime();
                }
}

} // namespace bench
