#include "host/settings/settings_at_time.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "aveffect/base_media.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/value_text.h"
#include "host/support/error.h"

namespace aveffect {

using AVBased::EffectInfo;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

/// Light of an sRGB value 0 to 255, 0 to 1 (IEC 61966-2-1).
double Light(double value) {
    const double share = value / 255;
    return share <= 0.04045 ? share / 12.92 : AVBasedPower((share + 0.055) / 1.055, 2.4);
}

/// The value whose light is nearest to that, measured in values.
unsigned ValueOfLight(double light) {
    unsigned value = 0;
    while (value < 255 && light >= Light(value + 0.5)) ++value;
    return value;
}

constexpr int kRedShift = 16, kShiftStep = 8;

[[noreturn]] void RefuseSpan(const EffectInfo& effect, const char* name, const std::string& complaint) {
    throw Error(ErrorKind::Usage,
                std::string(name) + " of " + std::string(effect.shortName) + " " + complaint);
}

const PropertySetting* Find(const EffectSpec& effect, const char* name) {
    const auto found = std::ranges::find(effect.reach, name, &PropertySetting::name);
    return found == effect.reach.end() ? nullptr : &*found;
}

/// The time that was written, whose form has been checked.
std::optional<SettingTime> TimeOf(const EffectInfo& info, const EffectSpec& effect, const char* name,
                                  const TimeSpan& span) {
    const PropertySetting* const setting = Find(effect, name);
    if (!setting) return std::nullopt;
    const SettingTime time = *ParseSettingTime(setting->value);
    if (const std::string_view missing = MissingFor(time, span); !missing.empty())
        RefuseSpan(info, name, "can't be " + setting->value + ": " + std::string(missing));
    return time;
}

std::string Seconds(int64_t ms) { return NumberText(static_cast<double>(ms) / 1000) + " s"; }

const PropertyInfo& ReachProperty(const char* name) {
    const std::span<const PropertyInfo> all = ReachProperties(false);
    return *std::ranges::find_if(
        all, [&](const PropertyInfo& property) { return std::string_view(property.name) == name; });
}

} // namespace

SettingAtTime::SettingAtTime(const EffectInfo& effect, const PropertyInfo& property,
                             const PropertySetting& setting, const TimeSpan& span)
    : m_effect(&effect)
    , m_property(&property)
    , m_keyframes(setting.keyframes) {
    if (!m_keyframes) {
        m_values.push_back({setting.value, setting.percentage});
        MakeCurves();
        return;
    }
    for (const Keyframe& key : m_keyframes->keys) {
        const auto percentage = ParsePercentage(property, key.value);
        m_values.push_back(
            {percentage ? std::string() : TranslateValue(effect, property, key.value), percentage});
    }
    m_moments = MomentsOf(*m_keyframes, span);
    if (!NeedsPictureSize()) MakeCurves();
}

bool SettingAtTime::NeedsPictureSize() const {
    return std::ranges::any_of(m_values, [](const Value& value) { return value.percentage.has_value(); });
}

void SettingAtTime::FitTo(unsigned width, unsigned height) {
    if (!NeedsPictureSize()) return;
    for (Value& value : m_values)
        if (value.percentage)
            value.text = PixelsOfPercentage(*m_effect, *m_property, *value.percentage, width, height);
    MakeCurves();
}

void SettingAtTime::MakeCurves() {
    if (!Moves()) {
        m_number = ParseReal(m_values.front().text).value_or(0);
        return;
    }
    const auto add = [&](auto numberOf) {
        std::vector<double> numbers;
        for (const Value& value : m_values) numbers.push_back(numberOf(*ParseReal(value.text)));
        m_curves.emplace_back(*m_keyframes, m_moments, std::move(numbers));
    };
    m_curves.clear();
    if (m_property->kind == ValueKind::Number) add([](double number) { return number; });
    if (m_property->kind != ValueKind::Colour) return;
    for (int shift = kRedShift; shift >= 0; shift -= kShiftStep)
        add([shift](double number) { return Light((static_cast<unsigned>(number) >> shift) & 0xFF); });
}

double SettingAtTime::NumberAt(double ms) const {
    return m_curves.empty() ? m_number : m_curves.front().At(ms);
}

std::string SettingAtTime::ColourAt(double ms) const {
    unsigned colour = 0;
    for (const Curve& curve : m_curves) colour = colour << kShiftStep | ValueOfLight(curve.At(ms));
    return std::to_string(colour);
}

std::string SettingAtTime::TextAt(double ms) const {
    if (!Moves()) return m_values.front().text;
    if (m_property->kind == ValueKind::Colour) return ColourAt(ms);
    if (m_property->kind != ValueKind::Number)
        return m_values[FindBetween(MotionsOf(*m_keyframes), m_moments, ms).first].text;
    const double number = m_curves.front().At(ms);
    return m_property->type == AVBased::kDouble ? NumberText(number) : std::to_string(std::llround(number));
}

namespace {

AreaShape ParseShape(const std::string& text) {
    constexpr size_t kFields = 5; // the shape's name and four numbers
    constexpr double kFarthest = 10000;
    std::vector<std::string> fields(1);
    for (const char letter : text) {
        if (letter == ',')
            fields.emplace_back();
        else if (letter != ' ')
            fields.back() += letter;
    }
    const auto refuse = [&] {
        throw Error(ErrorKind::Usage, "an area is rectangle,x,y,w,h or ellipse,x,y,w,h: left, top, width and "
                                      "height in percent of the picture; not '" +
                                          text + "'");
    };
    AreaShape shape;
    if (fields.size() != kFields || (fields[0] != "rectangle" && fields[0] != "ellipse")) refuse();
    if (fields[0] == "ellipse") shape.kind = AreaShape::Kind::Ellipse;
    double* const numbers[] = {&shape.left, &shape.top, &shape.width, &shape.height};
    for (size_t index = 1; index < kFields; ++index) {
        std::string_view field = fields[index];
        if (field.ends_with('%')) field.remove_suffix(1);
        const auto number = ParseReal(field);
        if (!number || std::abs(*number) > kFarthest) refuse();
        *numbers[index - 1] = *number;
    }
    if (shape.width < 0 || shape.height < 0) refuse();
    return shape;
}

} // namespace

void CheckArea(const EffectInfo& effect, const PropertySetting& setting) {
    const std::string owner = setting.name + " of " + std::string(effect.shortName) + ": ";
    try {
        if (!setting.keyframes) ParseShape(setting.value);
    } catch (const Error& wrong) {
        throw Error(wrong.Kind(), owner + wrong.what());
    }
    if (!setting.keyframes) return;
    const Keyframes& keyframes = *setting.keyframes;
    for (const Keyframe& key : keyframes.keys) {
        try {
            if (ParseShape(key.value).kind == ParseShape(keyframes.keys.front().value).kind) continue;
        } catch (const Error& wrong) {
            RefuseAt(keyframes, wrong.what(), key.place, key.length);
        }
        RefuseAt(keyframes, "an area keeps its shape", key.place, key.length);
    }
}

AreaAtTime::AreaAtTime(const PropertySetting& setting, const TimeSpan& span)
    : m_first(ParseShape(setting.keyframes ? setting.keyframes->keys.front().value : setting.value)) {
    if (!setting.keyframes) return;
    const std::vector<int64_t> moments = MomentsOf(*setting.keyframes, span);
    for (const auto member : {&AreaShape::left, &AreaShape::top, &AreaShape::width, &AreaShape::height}) {
        std::vector<double> numbers;
        for (const Keyframe& key : setting.keyframes->keys) numbers.push_back(ParseShape(key.value).*member);
        m_curves.emplace_back(*setting.keyframes, moments, std::move(numbers));
    }
}

AreaShape AreaAtTime::At(double ms) const {
    if (m_curves.empty()) return m_first;
    return {m_first.kind, m_curves[0].At(ms), m_curves[1].At(ms), m_curves[2].At(ms), m_curves[3].At(ms)};
}

SettingsAtTime::SettingsAtTime(const EffectSpec& effect, const TimeSpan& clip)
    : m_span(clip) {
    const EffectInfo& info = RequireEffect(effect.name);
    TakeSpan(info, effect, clip);
    TakeReach(info, effect);
    for (const PropertySetting& setting : effect.properties)
        m_properties.emplace_back(info, RequireProperty(info, setting.name), setting, m_span);
}

void SettingsAtTime::TakeSpan(const EffectInfo& info, const EffectSpec& effect, const TimeSpan& clip) {
    const auto from = TimeOf(info, effect, reach::kFrom, clip), to = TimeOf(info, effect, reach::kTo, clip);
    const auto moment = [&](const SettingTime& time, const char* name) {
        const int64_t ms = MomentIn(time, clip);
        const std::string is = "is " + Find(effect, name)->value;
        if (ms < clip.beginMs) RefuseSpan(info, name, is + ", before the clip's begin");
        if (clip.endMs && ms > *clip.endMs)
            RefuseSpan(info, name, is + ", beyond the clip's end at " + Seconds(*clip.endMs - clip.beginMs));
        return ms;
    };
    if (from) m_span.beginMs = moment(*from, reach::kFrom);
    if (to) m_span.endMs = moment(*to, reach::kTo);
    m_begins = from.has_value();
    m_ends = to.has_value();
    if (to && *m_span.endMs <= m_span.beginMs)
        RefuseSpan(info, reach::kTo,
                   "must lie after @from: it ends at " + Seconds(*m_span.endMs - clip.beginMs) +
                       ", but begins at " + Seconds(m_span.beginMs - clip.beginMs));
}

void SettingsAtTime::TakeReach(const EffectInfo& info, const EffectSpec& effect) {
    const auto length = [&](const char* name) -> int64_t {
        const auto time = TimeOf(info, effect, name, m_span);
        if (!time) return 0;
        const int64_t ms = LengthIn(*time, m_span);
        if (m_span.endMs && ms > *m_span.endMs - m_span.beginMs)
            RefuseSpan(info, name,
                       "is longer than the effect, which lasts " + Seconds(*m_span.endMs - m_span.beginMs));
        return ms;
    };
    m_fadeInMs = length(reach::kFadeIn);
    m_fadeOutMs = length(reach::kFadeOut);
    if (m_fadeOutMs > 0 && !m_span.endMs)
        RefuseSpan(info, reach::kFadeOut, "needs the effect's end: the clip does not tell its length");
    const auto number = [&](const char* name) {
        const PropertySetting* const setting = Find(effect, name);
        return setting ? std::optional(SettingAtTime(info, ReachProperty(name), *setting, m_span))
                       : std::nullopt;
    };
    m_mix = number(reach::kMix);
    m_feather = number(reach::kMaskFeather);
    if (const PropertySetting* const area = Find(effect, reach::kArea)) m_area.emplace(*area, m_span);
    if (const PropertySetting* const mask = Find(effect, reach::kMask)) m_mask = mask->value;
    if (const auto inverted = number(reach::kMaskInvert)) m_maskInverted = inverted->TextAt(0) == "1";
    if (!m_mask.empty() && m_feather && m_feather->Moves())
        RefuseSpan(info, reach::kMaskFeather, "stands still for a mask from a file; of an @area it moves");
}

std::optional<int64_t> SettingsAtTime::LengthMs() const {
    return m_span.endMs ? std::optional(*m_span.endMs - m_span.beginMs) : std::nullopt;
}

bool SettingsAtTime::Move() const { return std::ranges::any_of(m_properties, &SettingAtTime::Moves); }

bool SettingsAtTime::NeedPictureSize() const {
    return std::ranges::any_of(m_properties, &SettingAtTime::NeedsPictureSize) ||
           (m_feather && m_feather->NeedsPictureSize());
}

void SettingsAtTime::FitTo(unsigned width, unsigned height) {
    for (SettingAtTime& setting : m_properties) setting.FitTo(width, height);
    if (m_feather) m_feather->FitTo(width, height);
}

bool SettingsAtTime::Cover(double ms) const {
    return (!m_begins || ms >= static_cast<double>(m_span.beginMs)) &&
           (!m_ends || ms < static_cast<double>(*m_span.endMs));
}

bool SettingsAtTime::StrengthMatters() const { return m_mix || m_fadeInMs > 0 || m_fadeOutMs > 0; }

double SettingsAtTime::StrengthAt(double ms) const {
    if (!Cover(ms)) return 0;
    double strength = m_mix ? m_mix->NumberAt(ms) / 100 : 1;
    const auto within = [&](double gone, int64_t length) {
        if (length > 0) strength *= std::clamp(gone / static_cast<double>(length), 0.0, 1.0);
    };
    within(ms - static_cast<double>(m_span.beginMs), m_fadeInMs);
    if (m_fadeOutMs > 0) within(static_cast<double>(*m_span.endMs) - ms, m_fadeOutMs);
    return strength;
}

} // namespace aveffect
