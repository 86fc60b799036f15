#include "adapters/gstreamer/properties.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string_view>
#include <utility>

#include "host/settings/keyframes.h"
#include "host/settings/value_text.h"

namespace aveffect::gst {

using AVBased::EffectInfo;
using AVBased::EffectKind;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

constexpr char kPreset[] = "preset", kStart[] = "start", kDuration[] = "duration", kProgress[] = "progress";

constexpr auto kPlain = static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_MUTABLE_PLAYING);
constexpr auto kControlled = static_cast<GParamFlags>(kPlain | GST_PARAM_CONTROLLABLE);

/// How people write it, with nothing that GLib takes for something else: it keeps names of its own.
struct Words {
    std::string name, title, help;
};

Words WordsOf(const PropertyInfo& property) {
    std::string help(property.help);
    if (property.pixels != AVBased::PixelAxis::None)
        help += " In pixels.";
    else if (!property.unit.empty())
        help += " In " + std::string(property.unit) + ".";
    if (!property.InForceAtFirst()) help += " Until it is set the effect has a value of its own.";
    return {property.name, std::string(property.title), std::move(help)};
}

/// One value of an enumeration. Kept for ever, as types are.
GEnumValue EnumValue(int value, std::string_view nick, std::string_view help) {
    return {value, g_strndup(help.data(), help.size()), g_strndup(nick.data(), nick.size())};
}

GType EnumType(const EffectInfo& effect, const char* property, std::vector<GEnumValue> values) {
    std::string name = "GstAveffect-" + std::string(effect.shortName) + "-" + property;
    const GType known = g_type_from_name(name.c_str());
    if (known) return known;
    values.push_back({0, nullptr, nullptr});
    // GLib makes one class at a time.
    static auto* const kept = new std::deque<std::vector<GEnumValue>>;
    return g_enum_register_static(name.c_str(), kept->emplace_back(std::move(values)).data());
}

GParamSpec* ChoiceSpec(const EffectInfo& effect, const PropertyInfo& property, const Words& words,
                       int initial) {
    std::vector<GEnumValue> values;
    for (const AVBased::PropertyChoice& choice : property.choices)
        values.push_back(EnumValue(choice.value, choice.name, choice.help));
    return g_param_spec_enum(words.name.c_str(), words.title.c_str(), words.help.c_str(),
                             EnumType(effect, property.name, std::move(values)), initial, kControlled);
}

GParamSpec* PresetSpec(const EffectInfo& effect) {
    std::vector<GEnumValue> values = {EnumValue(0, "none", "No preset.")};
    for (const AVBased::EffectPreset& preset : effect.presets)
        values.push_back(EnumValue(static_cast<int>(values.size()), preset.name, preset.help));
    return g_param_spec_enum(kPreset, "Preset", "Settings for all properties that are at their defaults.",
                             EnumType(effect, kPreset, std::move(values)), 0, kPlain);
}

GParamSpec* NumberSpec(const PropertyInfo& property, const Words& words, double initial) {
    const double value = std::clamp(initial, property.minimum, property.maximum);
    if (property.type == AVBased::kDouble)
        return g_param_spec_double(words.name.c_str(), words.title.c_str(), words.help.c_str(),
                                   property.minimum, property.maximum, value, kControlled);
    return g_param_spec_int(words.name.c_str(), words.title.c_str(), words.help.c_str(),
                            static_cast<int>(property.minimum), static_cast<int>(property.maximum),
                            static_cast<int>(value), kControlled);
}

GParamSpec* SpecOf(const EffectInfo& effect, const PropertyInfo& property) {
    const Words words = WordsOf(property);
    const char *const name = words.name.c_str(), *const title = words.title.c_str();
    const char* const inForce = property.InForceAtFirst();
    const double initial = inForce ? std::strtod(inForce, nullptr) : 0;
    switch (property.kind) {
    case ValueKind::Number:
        return NumberSpec(property, words, initial);
    case ValueKind::Switch:
        return g_param_spec_boolean(name, title, words.help.c_str(), initial != 0, kControlled);
    case ValueKind::Choice:
        return ChoiceSpec(effect, property, words, static_cast<int>(initial));
    case ValueKind::Colour:
        return g_param_spec_uint(name, title, (words.help + " As 0xRRGGBB.").c_str(), 0, 0xFFFFFF,
                                 static_cast<guint>(initial), kControlled);
    case ValueKind::Path:
    case ValueKind::Text:
        break;
    }
    return g_param_spec_string(name, title, words.help.c_str(), inForce ? inForce : "", kPlain);
}

GParamSpec* TimeSpec(const char* name, const char* title, const char* help, GstClockTime initial) {
    return g_param_spec_uint64(name, title, help, 0, G_MAXUINT64, initial, kPlain);
}

void AddTimes(std::vector<GParamSpec*>& specs, bool transition) {
    specs.push_back(TimeSpec(kStart, "Start",
                             "Stream time at which it begins, where it goes by time. In nanoseconds.", 0));
    specs.push_back(TimeSpec(kDuration, "Duration",
                             transition
                                 ? "What it lasts, in nanoseconds; if not set, progress says how far it is."
                                 : "What it lasts, in nanoseconds; if not set, as long as what plays.",
                             GST_CLOCK_TIME_NONE));
    if (transition)
        specs.push_back(g_param_spec_double(kProgress, "Progress",
                                            "How far the transition has come, unless it has a duration.", 0,
                                            1, 0, kControlled));
}

std::string ColourText(guint colour) {
    std::array<char, sizeof "#rrggbb"> text{};
    std::snprintf(text.data(), text.size(), "#%06x", colour & 0xFFFFFFU);
    return text.data();
}

const char* NickOf(const GValue& value) {
    auto* const of = static_cast<GEnumClass*>(g_type_class_ref(G_VALUE_TYPE(&value)));
    const char* const nick = g_enum_get_value(of, g_value_get_enum(&value))->value_nick;
    g_type_class_unref(of);
    return nick;
}

std::string TextOf(const GValue& value) {
    if (G_VALUE_HOLDS_DOUBLE(&value)) return NumberText(g_value_get_double(&value));
    if (G_VALUE_HOLDS_INT(&value)) return std::to_string(g_value_get_int(&value));
    if (G_VALUE_HOLDS_BOOLEAN(&value)) return g_value_get_boolean(&value) ? "on" : "off";
    if (G_VALUE_HOLDS_UINT(&value)) return ColourText(g_value_get_uint(&value));
    if (G_VALUE_HOLDS_ENUM(&value)) return NickOf(value);
    const char* const text = g_value_get_string(&value);
    return text ? EscapedValue(text) : "";
}

} // namespace

void InstallProperties(GObjectClass* of, PropertyTable& table) {
    const EffectInfo& effect = table.effect;
    const bool transition = effect.kind == EffectKind::Transition;
    if (!transition)
        for (const PropertyInfo& property : effect.properties)
            table.specs.push_back(SpecOf(effect, property));
    if (!effect.presets.empty()) table.specs.push_back(PresetSpec(effect));
    // Sound that goes by time has its times among its own properties.
    if ((effect.traits & AVBased::kFollowsTime) && effect.kind != EffectKind::Audio)
        AddTimes(table.specs, transition);
    guint id = 0;
    for (GParamSpec* const spec : table.specs) g_object_class_install_property(of, ++id, spec);
}

Settings::Settings(const PropertyTable& table)
    : m_table(table)
    , m_slots(table.specs.size()) {
    for (size_t index = 0; index < m_slots.size(); ++index) {
        g_value_init(&m_slots[index].value, G_PARAM_SPEC_VALUE_TYPE(table.specs[index]));
        g_param_value_set_default(table.specs[index], &m_slots[index].value);
    }
}

Settings::~Settings() {
    for (Slot& slot : m_slots) g_value_unset(&slot.value);
}

void Settings::Set(guint id, const GValue& value) {
    const std::scoped_lock lock(m_mutex);
    Slot& slot = m_slots.at(id - 1);
    g_value_copy(&value, &slot.value);
    slot.set = true;
}

void Settings::Get(guint id, GValue& value) const {
    const std::scoped_lock lock(m_mutex);
    g_value_copy(&m_slots.at(id - 1).value, &value);
}

std::string Settings::EffectText() const {
    return TextWith([](GParamSpec*, const GValue& value) { return TextOf(value); });
}

std::string Settings::SoundText(GstObject* element, GstClockTime end, int64_t beginMs, int64_t endMs) const {
    const auto at = [](int64_t ms) { return NumberText(static_cast<double>(ms) / 1000) + "="; };
    return TextWith([&](GParamSpec* spec, const GValue& value) {
        std::string now = TextOf(value);
        GValue* const later =
            beginMs < endMs ? gst_object_get_value(element, g_param_spec_get_name(spec), end) : nullptr;
        if (!later) return now; // nothing moves it
        const std::string then = TextOf(*later);
        g_value_unset(later);
        g_free(later);
        return then == now ? now : at(beginMs) + now + ";" + at(endMs) + then;
    });
}

template <typename ValueText>
std::string Settings::TextWith(const ValueText& valueText) const {
    const std::scoped_lock lock(m_mutex);
    const EffectInfo& effect = m_table.effect;
    std::string text(effect.shortName);
    if (!effect.presets.empty()) {
        const GValue& preset = ValueOf(kPreset);
        if (g_value_get_enum(&preset) != 0) text.append("/").append(NickOf(preset));
    }
    for (size_t index = 0; index < effect.properties.size(); ++index) {
        const PropertyInfo& property = effect.properties[index];
        const Slot& slot = m_slots[index];
        const bool said = slot.set && !property.InForceAtFirst();
        const std::string value = valueText(m_table.specs[index], slot.value);
        if (said || IsAnimated(value) || !g_param_value_defaults(m_table.specs[index], &slot.value))
            text.append(":").append(property.name).append("=").append(value);
    }
    return text;
}

GstClockTime Settings::Start() const {
    const std::scoped_lock lock(m_mutex);
    return g_value_get_uint64(&ValueOf(kStart));
}

std::optional<GstClockTime> Settings::Duration() const {
    const std::scoped_lock lock(m_mutex);
    const GstClockTime duration = g_value_get_uint64(&ValueOf(kDuration));
    return GST_CLOCK_TIME_IS_VALID(duration) ? std::optional(duration) : std::nullopt;
}

double Settings::Progress() const {
    const std::scoped_lock lock(m_mutex);
    return g_value_get_double(&ValueOf(kProgress));
}

const GValue& Settings::ValueOf(const char* name) const {
    const auto spec = std::ranges::find(m_table.specs, std::string_view(name), g_param_spec_get_name);
    return m_slots.at(static_cast<size_t>(spec - m_table.specs.begin())).value;
}

} // namespace aveffect::gst
