// The program's own parsers: an effect for pictures and for sound in both strictnesses, and a command line,
// one argument a line, with the options made from it.
#include <cstdlib>
#include <vector>

#include "cli/arguments.h"
#include "host/settings/settings_at_time.h"
#include "host/support/error.h"
#include "tests/support/input_bytes.h"

namespace {

// Errors are answers; anything else is not.
template <class Body>
void Answered(Body body) {
    try {
        body();
    } catch (const aveffect::Error&) {
    }
}

// What the effect's settings are before, in and behind a clip.
void Move(const aveffect::EffectSpec& effect) {
    aveffect::SettingsAtTime settings(effect, {0, 10000, 30000, 1001});
    settings.FitTo(320, 240);
    for (const double ms : {-1.0, 0.0, 33.4, 5000.0, 9999.0, 10000.0, 1e9}) {
        const double strength = settings.StrengthAt(ms);
        if (!(strength >= 0 && strength <= 1)) std::abort();
        for (const aveffect::SettingAtTime& setting : settings.Properties()) setting.TextAt(ms);
        if (settings.Area()) settings.Area()->At(ms);
        settings.FeatherAt(ms);
    }
}

void MakeOptions(const aveffect::RenderCommand& render) {
    aveffect::ApplyCpuLevel(render.media.run.cpuLevel);
    aveffect::MakeRenderOptions(render);
}
void MakeOptions(const aveffect::FrameCommand& frame) { aveffect::MakeFrameOptions(frame); }
void MakeOptions(const aveffect::TransitionCommand& transition) {
    aveffect::MakeTransitionOptions(transition);
}
void MakeOptions(const aveffect::JoinCommand& join) { aveffect::MakeJoinOptions(join); }
void MakeOptions(const aveffect::SheetCommand& sheet) { aveffect::MakeSheetOptions(sheet); }
template <class Command>
void MakeOptions(const Command&) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    test::InputBytes input(data, size);
    const uint8_t what = input.Take<uint8_t>() % 3;
    if (what < 2) {
        const std::string text = input.TakeRest();
        for (const auto medium : {aveffect::Medium::Video, aveffect::Medium::Audio})
            Answered([&] { Move(aveffect::ParseEffect(text, what == 1, medium)); });
        return 0;
    }
    std::vector<std::string> words = {"aveffect"};
    while (!input.Empty() && words.size() < 40) words.push_back(input.TakeLine());
    std::vector<const char*> arguments;
    arguments.reserve(words.size());
    for (const std::string& word : words) arguments.push_back(word.c_str());
    Answered([&] {
        std::visit([](const auto& command) { MakeOptions(command); },
                   aveffect::ParseCommandLine(static_cast<int>(arguments.size()), arguments.data()));
    });
    return 0;
}
