// Each effect through the loaded plug-in, in place and on a copy, with the settings that make it work
// hardest.
#include <algorithm>
#include <map>
#include <span>

#include "aveffect/catalogue.h"
#include "bench/copy_time.h"
#include "tests/support/host_manager.h"
#include "tests/support/plugin.h"
#include "tests/support/recycled_frame.h"

namespace bench {

namespace {

/// What an effect is set to, under a name of its own where an effect has several.
struct Settings {
    std::string name;
    std::vector<std::pair<const char*, const char*>> properties;
    bool secondView = false; ///< whether the frames have one
};

// Stand for the picture's own size in settings.
constexpr char kWidth[] = "width";
constexpr char kHeight[] = "height";
constexpr char kHalfWidth[] = "width/2";
constexpr char kHalfHeight[] = "height/2";

// A circle as large as the picture's height.
Settings Circle(const std::string& name, const char* radius, const char* x, const char* y, const char* scale,
                const char* value) {
    return {name, {{radius, kHalfHeight}, {x, kHalfWidth}, {y, kHalfHeight}, {scale, value}}};
}

Settings Tensile(const std::string& name, const char* vertical, const char* horizontal) {
    return {name,
            {{"tensile_vertical", vertical},
             {"tensile_vertical_y1", "400"},
             {"tensile_vertical_y2", "800"},
             {"tensile_vertical_scale", "1.5"},
             {"tensile_horizontal", horizontal},
             {"tensile_horizontal_x1", "700"},
             {"tensile_horizontal_x2", "1200"},
             {"tensile_horizontal_scale", "1.8"}}};
}

Settings Magnifier(const std::string& name, const char* scale) {
    return Circle(name, "magnifier_r", "magnifier_x", "magnifier_y", "magnifier_scale", scale);
}

// Of what transitions read: two pictures as large as the frame.
constexpr char kFirst[] = "first";
constexpr char kSecond[] = "second";

Settings Transition(const std::string& name, const char* end) {
    return {name,
            {{"EffectPropSourceDur", end}, {"EffectPropVFPath1", kFirst}, {"EffectPropVFPath2", kSecond}}};
}

// Effects that do nothing, or too little, with their defaults.
std::vector<Settings> SettingsOf(const std::string& effect) {
    static const std::map<std::string, std::vector<Settings>> kSettings = {
        {"brightness_contrast",
         {{"", {{"brightness", "10"}, {"contrast", "20"}}},
          {" with saturation", {{"brightness", "10"}, {"contrast", "20"}, {"saturation", "30"}}}}},
        {"fadein", {{"", {{"duration", "100"}}}}},
        {"fadeout", {{"", {{"duration", "100"}}}}},
        {"directfadein", {{"", {{"duration", "100"}, {"fadein_color", "8421504"}}}}},
        {"directfadeout", {{"", {{"duration", "100"}, {"fadeout_color", "8421504"}}}}},
        {"reverse",
         {{" mirror", {{"mirror", "1"}}},
          {" flip", {{"vertical", "1"}}},
          {" both", {{"mirror", "1"}, {"vertical", "1"}}}}},
        {"spherize", {Circle("", "spherize_r", "spherize_x", "spherize_y", "spherize_scale", "0.7")}},
        {"rotate", {Circle("", "rotate_r", "rotate_x", "rotate_y", "rotate_scale", "3")}},
        {"magnifier", {Magnifier(" nearest", "1.5"), Magnifier(" blended", "3")}},
        {"tensile",
         {Tensile(" vertical", "1", "0"), Tensile(" horizontal", "0", "1"), Tensile(" both", "1", "1")}},
        {"emboss", {{"", {{"emboss_level", "2"}}}}},
        {"mosaic", {{"", {{"mosaic_x2", kWidth}, {"mosaic_y2", kHeight}, {"mosaic_step", "4"}}}}},
        {"transparency", {{"", {{"transparency_scale", "50"}}}}},
        {"colorfilter", {{"", {{"filter_scope", "40"}, {"filter_color", "8421504"}}}}},
        {"atomize",
         {{"", {{"atomize_ishorizontal", "1"}, {"atomize_isvertical", "1"}, {"atomize_level", "16"}}}}},
        {"addnoise", {{"", {{"addnoise_level", "-12"}}}}},
        {"tilereflect",
         {{"", {{"tilereflect_angle", "30"}, {"tilereflect_size", "60"}, {"tilereflect_curvature", "8"}}}}},
        {"edgelight", {{"", {}}, {" by 20", {{"edgelight_level", "20"}}}}},
        {"spotlight",
         {{"", {{"spotlight_x", kHalfWidth}, {"spotlight_y", kHalfHeight}, {"spotlight_r", kHalfHeight}}}}},
        {"radiate", {{"", {{"radiate_x", kHalfWidth}, {"radiate_y", kHalfHeight}}}}},
        {"EffectName3DRenderEffect",
         {{" side by side", {{"render_3d_mode", "3"}}},
          {" side by side of two", {{"render_3d_mode", "3"}}, true},
          {" top and bottom of two", {{"render_3d_mode", "4"}}, true},
          {" red-cyan", {{"render_3d_mode", "1"}}}}},
        {"EffectNameRotate90X",
         {{" quarter", {{"Rotate90XDerection", "1"}}}, {" half", {{"Rotate90XDerection", "2"}}}}},
    };
    if (effect.starts_with("EffectNameMk")) return {Transition(" 1/4", "200"), Transition(" 5/7", "70")};
    const auto found = kSettings.find(effect);
    return found == kSettings.end() ? std::vector<Settings>{{}} : found->second;
}

struct Picture {
    unsigned format;
    const char* name;
    unsigned width, height;
};

using BenchFrame = test::InOneBlock<test::RecycledFrame>;

// "duration", where it is set, is 100: half way through the span.
constexpr int kTime = 50;

enum class Way { InPlace, OnCopy, FirstFrame };

test::VideoProc MakeProc(const std::string& effect, const Settings& settings, const Picture& picture,
                         AVBased::IAVManager& manager) {
    test::VideoProc proc = test::MakeVideo(effect, {}, &manager);
    for (const auto& [name, value] : settings.properties) {
        const unsigned size = value == kWidth        ? picture.width
                              : value == kHeight     ? picture.height
                              : value == kHalfWidth  ? picture.width / 2
                              : value == kHalfHeight ? picture.height / 2
                                                     : 0;
        proc->SetProperty(name, size ? std::to_string(size).c_str() : value);
    }
    return proc;
}

void RunEffect(benchmark::State& state, const std::string& effect, const Settings& settings,
               const Picture& picture, Way way) {
    const Picture still = {AVBased::BGRA, "", picture.width, picture.height};
    const auto make = [](const Picture& of) { return BenchFrame(of.format, of.width, of.height); };
    BenchFrame first = make(still), second = make(still), frame = make(picture);
    std::ranges::reverse(second.Pixels()); // two pictures that differ
    test::HostManager manager;
    manager.sources = {{kFirst, {&first.Frame()}}, {kSecond, {&second.Frame()}}};
    test::VideoProc proc = MakeProc(effect, settings, picture, manager);
    if (settings.secondView) frame.Frame().CopySubsetFrame(&frame.Frame());
    AVBased::ImagePostion position{};
    const auto run = [&] {
        if (way == Way::OnCopy)
            proc->ProcFrame(&position, kTime, &frame.Frame());
        else
            proc->ProcFrameInPlace(&position, kTime, &frame.Frame());
    };
    std::function<void()> prepare;
    if (way == Way::FirstFrame) prepare = [&] { proc = MakeProc(effect, settings, picture, manager); };
    TimeAgainstCopy(state, frame.Pixels().size(), run, prepare);
}

// Effects that keep something from frame to frame make it on the first.
std::vector<std::pair<Way, const char*>> WaysOf(const AVBased::EffectInfo& effect) {
    std::vector<std::pair<Way, const char*>> ways = {{Way::InPlace, ""}, {Way::OnCopy, ", ProcFrame"}};
    if (effect.traits & AVBased::kKeepsState) ways.emplace_back(Way::FirstFrame, ", first frame");
    return ways;
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
                for (const auto& [way, suffix] : WaysOf(effect)) {
                    const std::string name = effect.name + settings.name + ", " + picture.name + " " +
                                             std::to_string(picture.height) + "p" + suffix;
                    benchmark::RegisterBenchmark(name.c_str(), [=, effectName = std::string(effect.name),
                                                                how = way](benchmark::State& state) {
                        RunEffect(state, effectName, settings, picture, how);
                    })->UseManualTime();
                }
}

} // namespace bench
