#include <array>
#include <cstdlib>
#include <iterator>

#include "host/settings/settings_at_time.h"
#include "host/settings/value_text.h"
#include "tests/ledger/ledger.h"

namespace ledger {

using namespace AVBased;

namespace {

// One whose rows, chroma too, are whole registers and cache lines: programs have them without padding, behind
// which some effects look. And one that is odd in every way.
constexpr std::pair<unsigned, unsigned> kSizes[] = {{256, 64}, {97, 61}};

// The plug-in's texts of settings that people write.
Settings Resolved(const std::string& spoken, aveffect::Medium medium, unsigned width, unsigned height) {
    aveffect::SettingsAtTime settings(aveffect::ParseEffect(spoken, false, medium), {0, kSpanMs});
    if (settings.NeedPictureSize()) settings.FitTo(width, height);
    Settings texts;
    for (const auto& setting : settings.Properties())
        texts.emplace_back(setting.Property().name, setting.TextAt(0));
    return texts;
}

// The effect as it starts, and with each of its presets.
std::vector<std::string> Spoken(const EffectInfo& effect) {
    std::vector<std::string> all = {std::string(effect.shortName)};
    for (const EffectPreset& preset : effect.presets) all.push_back(aveffect::PresetName(effect, preset));
    return all;
}

// How the two views are shown, either way round: made of one picture or from a frame that has both.
void AddStereo(std::vector<PictureCase>& all, const PictureCase& like) {
    for (const int mode : {0, 1, 2, 3, 4})
        for (const bool swap : {false, true})
            for (const bool right : {false, true}) {
                const bool anaglyph = mode == 1 || mode == 2; // of three planes or none, and of one view
                if (anaglyph && (right || swap || (like.format != BGRA && like.format != YUV420P))) continue;
                PictureCase made = like;
                made.settings = {{"render_3d_mode", std::to_string(mode)},
                                 {"render_3d_swtich", swap ? "1" : "0"}};
                made.spoken +=
                    ":render_3d_mode=" + std::to_string(mode) + ":render_3d_swtich=" + std::to_string(swap);
                made.right = right;
                all.push_back(made);
            }
}

void AddPictures(std::vector<PictureCase>& all, PictureCase like) {
    const unsigned traits = like.effect->traits;
    if (like.effect->kind == EffectKind::Stereo) return AddStereo(all, like);
    for (const std::string& spoken : Spoken(*like.effect)) {
        like.spoken = spoken;
        like.settings = like.effect->kind == EffectKind::Transition
                            ? Settings{{"EffectPropVFPath1", "first"},
                                       {"EffectPropVFPath2", "second"},
                                       {"EffectPropStartTime", "0"},
                                       {"EffectPropSourceDur", std::to_string(kSpanMs)}}
                            : Resolved(spoken, aveffect::Medium::Video, like.width, like.height);
        const bool moves = traits & kFollowsTime;
        for (const int time : {0, 100, 400, 900}) {
            if (!moves && time > 0) continue;
            like.time = time;
            all.push_back(like);
        }
        if (!(traits & kKeepsState) || like.effect->kind == EffectKind::Transition) continue;
        all.push_back(like);
        all.back().again = true;
    }
}

const char* NameOf(int sampleFormat) {
    constexpr std::array kNames = {"", "s8", "u8", "s16", "u16", "", "", "s32", "u32", "f32", "f64"};
    return kNames.at(static_cast<size_t>(sampleFormat));
}

} // namespace

std::string Subject::Text(const std::string& property) const {
    for (const auto& [name, text] : settings)
        if (name == property) return text;
    const char* const start = FindProperty(*effect, property)->InForceAtFirst();
    return start ? start : "";
}
int Subject::Int(const std::string& property) const { return std::atoi(Text(property).c_str()); }
double Subject::Number(const std::string& property) const { return std::atof(Text(property).c_str()); }

std::string PictureCase::Key() const {
    std::string what = spoken;
    if (effect->traits & kFollowsTime) what += "@" + std::to_string(time) + "ms";
    if (again) what += "#2";
    if (right) what += "+right";
    return what + " " + FindPixelFormat(format)->name + " " + std::to_string(width) + "x" +
           std::to_string(height);
}

std::string SoundCase::Key() const {
    return spoken + " " + NameOf(shape.format) + (shape.interleaved ? " " : "p ") +
           std::to_string(shape.channels) + "x" + std::to_string(shape.samples);
}

std::vector<PictureCase> PictureCases() {
    std::vector<PictureCase> all;
    for (const EffectInfo& effect : kVideoEffects)
        for (const unsigned format : kEffectFormats) {
            if (effect.traits & kFewFormats && format != BGRA && format != YUV420P) continue;
            for (const auto& [width, height] : kSizes) {
                PictureCase like;
                like.effect = &effect;
                like.spoken = effect.shortName;
                like.format = format;
                like.width = width;
                like.height = height;
                AddPictures(all, like);
            }
        }
    return all;
}

std::vector<SoundCase> SoundCases() {
    std::vector<SoundCase> all;
    for (const EffectInfo& effect : kAudioEffects)
        for (const std::string& spoken : Spoken(effect))
            for (const int format : {1, 2, 3, 4, 7, 8, 9, 10})
                for (const bool interleaved : {true, false}) {
                    const bool fades = effect.name == std::string_view(effectNameAudioFader);
                    if (!fades && (format != sfSigned16 || !interleaved)) continue; // all that they take
                    SoundCase made;
                    made.effect = &effect;
                    made.spoken = spoken;
                    // Fades that end within the pieces.
                    if (fades && spoken.find('/') != std::string::npos) made.spoken += ":fader_duration=50";
                    made.settings = Resolved(made.spoken, aveffect::Medium::Audio, 0, 0);
                    if (effect.name == std::string_view(effectNameAudioReplace))
                        made.settings = {{"audio_replace_path", "sound"}, {"audio_replace_loop", "1"}};
                    made.shape = {format, kSoundRate, 2, interleaved, true, kPieceSamples};
                    all.push_back(made);
                }
    return all;
}

} // namespace ledger
