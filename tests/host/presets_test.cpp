/// Presets change a photo and a tone, neutral settings don't, and who renders with these is told.
#include <algorithm>
#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include "aveffect/catalogue.h"
#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "host/effects/audio_stage.h"
#include "host/effects/neutral_settings.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"
#include "mediabridge/audio_frame.h"
#include "tests/host/clips.h"

namespace {

using namespace AVBased;
using aveffect::EffectSpec;
using aveffect::Medium;
using clips::Bytes;

constexpr unsigned kWidth = 320, kHeight = 212, kLengthMs = 1000, kTimeMs = 400;

/// A cup on a wooden table, in full colour; its photographer gave it to the public domain.
const Bytes& Photo(unsigned format) {
    const auto read = [](const char* pixels) {
        return clips::Run("ffmpeg -v error -nostdin -i " AVEFFECT_PHOTO " -pix_fmt " + std::string(pixels) +
                          " -f rawvideo -");
    };
    static const Bytes packed = read("bgra"), planar = read("yuva420p");
    return format == BGRA ? packed : planar;
}

/// A packed format and a planar one, with alpha where the effect takes it: the planes before it are the same.
std::array<unsigned, 2> FormatsOf(const EffectInfo& effect) {
    const bool opaque = (effect.traits & kFewFormats) || effect.kind == EffectKind::Stereo;
    return {BGRA, opaque ? YUV420P : YUVA420P};
}

/// Runs the effect on the picture at two fifths of its span.
void Apply(const EffectSpec& effect, unsigned format, Bytes& picture) {
    std::vector<MemoryFrame::Plane> planes = {{picture.data(), kWidth * 4, kWidth * 4, kHeight}};
    if (format != BGRA) {
        unsigned char* at = picture.data();
        planes.clear();
        for (const unsigned shift : {0u, 1u, 1u, 0u}) {
            if (format == YUV420P && planes.size() == 3) break;
            planes.push_back({at, kWidth >> shift, kWidth >> shift, kHeight >> shift});
            at += size_t{kWidth >> shift} * (kHeight >> shift);
        }
    }
    MemoryFrame frame(format, kWidth, kHeight, planes);
    aveffect::EffectChain chain(clips::ThePlugin(), nullptr, {effect}, {0, kLengthMs});
    chain.Process(&frame, kTimeMs);
}

/// Mean absolute difference of the samples, of packed ones as they are seen over black.
double Difference(unsigned format, const Bytes& a, const Bytes& b) {
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        const auto seen = [&](const Bytes& picture) {
            return format == BGRA && i % 4 != 3 ? picture[i] * picture[i | 3] / 255.0 : picture[i];
        };
        sum += std::abs(seen(a) - seen(b));
    }
    return sum / static_cast<double>(a.size());
}

/// A wall of the colour beside what is in the photo, for effects that look for one.
void PaintWall(const EffectSpec& effect, unsigned format, Bytes& picture) {
    for (const auto& setting : effect.properties) {
        if (setting.name != "filter_color") continue;
        Bytes wall(picture.size(), 255);
        Apply({"fade-in-color", {{"fadein_color", setting.value}, {"fadein_max", "0"}}}, format, wall);
        const size_t pixel = format == BGRA ? 4 : 1;
        for (size_t row = 0; row < kHeight; ++row)
            std::copy_n(wall.begin() + static_cast<ptrdiff_t>(row * kWidth * pixel), kWidth * pixel / 4,
                        picture.begin() + static_cast<ptrdiff_t>(row * kWidth * pixel));
        if (format == BGRA) continue;
        for (size_t row = 0; row < kHeight; ++row) { // both chroma planes, half as wide
            const auto at = static_cast<ptrdiff_t>(kWidth * kHeight + row * kWidth / 2);
            std::copy_n(wall.begin() + at, kWidth / 8, picture.begin() + at);
        }
    }
}

// Two levels in the mean are as much as a good JPEG loses where one looks for it; whatever is seen at a
// glance (a tenth of the picture 20 levels off, everything a little darker) is more.
TEST(Presets, ChangeAPhotoVisibly) {
    constexpr double kVisible = 2;
    for (const EffectInfo& effect : kVideoEffects) {
        EXPECT_NE(effect.presets.empty(), effect.noPresets.empty()) << effect.name;
        for (const EffectPreset& preset : effect.presets) {
            const EffectSpec spec = aveffect::ParseEffect(aveffect::PresetName(effect, preset), false);
            for (const unsigned format : FormatsOf(effect)) {
                Bytes before = Photo(format);
                PaintWall(spec, format, before);
                Bytes after = before;
                Apply(spec, format, after);
                EXPECT_GE(Difference(format, before, after), kVisible)
                    << aveffect::PresetName(effect, preset) << " format " << format;
            }
        }
    }
}

TEST(Presets, ChangeAToneAudibly) {
    for (const EffectInfo& effect : kAudioEffects)
        for (const EffectPreset& preset : effect.presets) {
            const std::string name = aveffect::PresetName(effect, preset);
            const EffectSpec spec = aveffect::ParseEffect(name, false, Medium::Audio);
            mediabridge::AVFramePtr sound(av_frame_alloc());
            sound->format = AV_SAMPLE_FMT_S16;
            sound->sample_rate = 8000;
            sound->nb_samples = 160;
            av_channel_layout_default(&sound->ch_layout, 1);
            ASSERT_EQ(av_frame_get_buffer(sound.get(), 0), 0);
            auto* const samples = reinterpret_cast<int16_t*>(sound->data[0]);
            std::fill_n(samples, sound->nb_samples, int16_t{10000});
            aveffect::AudioStage stage(clips::ThePlugin(), nullptr, spec, {0, kLengthMs}, sound->sample_rate);
            stage.Process(*sound, 0);
            EXPECT_GT(std::abs(samples[0] - 10000), 3000) << name; // 3 dB
        }
}

/// What the observer is told.
std::vector<std::string> Warnings(const EffectSpec& effect, unsigned width = kWidth) {
    std::vector<std::string> warnings;
    aveffect::RenderObserver observer;
    observer.warning = [&](const std::string& text) { warnings.push_back(text); };
    aveffect::Reporter reporter(observer);
    aveffect::WarnOfNeutral({effect}, width, width ? kHeight : 0, reporter);
    return warnings;
}

/// A value that the condition holds for, at one of its ends.
std::string Meeting(const NeutralCondition& condition, bool most) {
    if (condition.beyond == PixelAxis::None)
        return aveffect::NumberText(most ? condition.most : condition.least);
    const double side = condition.sides * SideLength(condition.beyond, kWidth, kHeight);
    return aveffect::NumberText(std::floor(side) + (most ? 1000 : 1));
}

// Each rule with settings that otherwise show: the first preset's, of both ends of its bounds.
TEST(NeutralSettings, LeaveAPhotoAsItIsAndAreSaid) {
    for (const EffectInfo& effect : kVideoEffects)
        for (const NeutralSettings& rule : effect.neutral)
            for (const bool most : {false, true}) {
                EffectSpec spec =
                    aveffect::ParseEffect(aveffect::PresetName(effect, effect.presets.front()), false);
                std::string said = effect.name;
                for (const NeutralCondition& condition : rule.conditions) {
                    if (!condition.property) continue;
                    const std::string value = Meeting(condition, most);
                    std::erase_if(spec.properties,
                                  [&](const auto& setting) { return setting.name == condition.property; });
                    spec.properties.push_back({condition.property, value});
                    said += std::string(" ") + condition.property + "=" + value;
                }
                for (const unsigned format : FormatsOf(effect)) {
                    Bytes after = Photo(format);
                    Apply(spec, format, after);
                    EXPECT_TRUE(after == Photo(format)) << said;
                }
                EXPECT_EQ(Warnings(spec).size(), 1u) << said;
            }
}

TEST(NeutralSettings, AreTheOnesThatEffectsNeedingSettingsBeginWith) {
    for (const EffectInfo* effect : aveffect::AllEffects()) {
        const bool needs = (effect->traits & kNeedsSettings) != 0;
        EXPECT_EQ(Warnings({effect->name, {}}, 0).size(), needs ? 1u : 0u) << effect->name;
        for (const EffectPreset& preset : effect->presets) {
            const std::string name = aveffect::PresetName(*effect, preset);
            const auto medium = effect->kind == EffectKind::Audio ? Medium::Audio : Medium::Video;
            EXPECT_TRUE(Warnings(aveffect::ParseEffect(name, false, medium)).empty()) << name;
        }
    }
    EXPECT_EQ(Warnings({"spherize", {{"spherize_r", "2"}}}),
              std::vector<std::string>{
                  "spherize with these settings leaves pictures as they are; try spherize/bulge"});
    EXPECT_EQ(Warnings({"volume", {}}),
              std::vector<std::string>{"volume with these settings leaves sound as it is; try volume/half"});
}

} // namespace
