#include "host/effects/effect_chain.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "aveffect/base_tools.h"
#include "host/effects/catalogue_lookup.h"
#include "host/effects/value_text.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

/// Cuts at colons that no backslash protects. The escapes stay in the parts, for names have none.
std::vector<std::string> SplitAtColons(const std::string& text) {
    std::vector<std::string> parts(1);
    for (size_t index = 0; index < text.size(); ++index) {
        if (text[index] == ':') {
            parts.emplace_back();
            continue;
        }
        parts.back() += text[index];
        if (text[index] == '\\' && index + 1 < text.size()) parts.back() += text[++index];
    }
    return parts;
}

/// "\:" and "\\" lose their backslash; a backslash before anything else is meant.
std::string Unescape(const std::string& text) {
    std::string result;
    for (size_t index = 0; index < text.size(); ++index) {
        const bool escape = text[index] == '\\' && index + 1 < text.size();
        if (escape && (text[index + 1] == ':' || text[index + 1] == '\\')) ++index;
        result += text[index];
    }
    return result;
}

PropertySetting Translate(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                          const std::string& value) {
    if (const auto percentage = ParsePercentage(property, value)) return {property.name, {}, percentage};
    return {property.name, TranslateValue(effect, property, value)};
}

std::vector<PropertySetting> SettingsOf(const AVBased::EffectPreset& preset) {
    std::vector<PropertySetting> settings;
    for (const AVBased::PresetSetting& setting : preset.Settings())
        settings.push_back(setting.percentage ? PropertySetting{setting.property, {}, setting.value}
                                              : PropertySetting{setting.property, NumberText(setting.value)});
    return settings;
}

/// "property=value"; whole is what it is a part of.
PropertySetting ParseSetting(const AVBased::EffectInfo& effect, const std::string& setting,
                             const std::string& whole, bool lenient) {
    const size_t equals = setting.find('=');
    const std::string name = setting.substr(0, equals);
    if (name.empty())
        throw Error(ErrorKind::Usage, "a setting in '" + whole + "' has no name; write property=value");
    const AVBased::PropertyInfo& property = RequireProperty(effect, name);
    if (equals == std::string::npos)
        throw Error(ErrorKind::Usage,
                    name + " of " + std::string(effect.shortName) + " has no value; write property=value");
    const std::string value = Unescape(setting.substr(equals + 1));
    return lenient ? PropertySetting{name, value} : Translate(effect, property, value);
}

/// Settings that are added take the place of those of the same properties.
void Override(std::vector<PropertySetting>& settings, std::vector<PropertySetting> added) {
    std::erase_if(settings, [&](const PropertySetting& setting) {
        return std::ranges::find(added, setting.name, &PropertySetting::name) != added.end();
    });
    std::ranges::move(added, std::back_inserter(settings));
}

bool NeedsPictureSize(const EffectSpec& effect) {
    return std::any_of(effect.properties.begin(), effect.properties.end(),
                       [](const PropertySetting& setting) { return setting.percentage.has_value(); });
}

bool NeedsOrder(const EffectSpec& effect) {
    return AVBased::OrderOf(RequireEffect(effect.name).traits) == AVBased::FrameOrder::InOrder;
}

} // namespace

EffectSpec ParseEffect(const std::string& text, bool lenient, Medium medium) {
    const auto parts = SplitAtColons(text);
    if (parts.front().empty())
        throw Error(ErrorKind::Usage,
                    "'" + text + "' names no effect; write NAME[/PRESET][:property=value...]");
    const size_t slash = parts.front().find('/');
    const AVBased::EffectInfo& effect = RequireEffect(parts.front().substr(0, slash));
    const bool forSound = effect.kind == AVBased::EffectKind::Audio;
    if (forSound != (medium == Medium::Audio))
        throw Error(ErrorKind::Usage, std::string(effect.shortName) +
                                          (forSound ? " works on sound: name it with -a, not with -e"
                                                    : " works on pictures: name it with -e, not with -a"));

    EffectSpec spec{effect.name, {}};
    if (slash != std::string::npos)
        spec.properties = SettingsOf(RequirePreset(effect, parts.front().substr(slash + 1)));
    std::vector<PropertySetting> written;
    for (size_t index = 1; index < parts.size(); ++index)
        written.push_back(ParseSetting(effect, parts[index], text, lenient));
    Override(spec.properties, std::move(written));
    return spec;
}

void SetProperty(AVBased::IAVProc& proc, const std::string& name, const std::string& value) {
    GetBaseException()->Clear();
    if (proc.SetProperty(name.c_str(), value.c_str())) return;
    std::string message = std::string(proc.GetName()) + " does not take " + name + "='" + value + "'";
    const std::string reason = GetBaseException()->GetExceptionMsg();
    if (!reason.empty()) message += ": " + reason;
    throw Error(ErrorKind::Usage, message);
}

void SetDuration(AVBased::IAVProc& proc, uint32_t durationMs) {
    const uint32_t longest = std::numeric_limits<int32_t>::max();
    SetProperty(proc, AVBased::PROP_NAME_DURATION, std::to_string(std::min(durationMs, longest)));
}

void RequireNoRecord(AVBased::IAVProc& proc) {
    IBaseException* const record = GetBaseException();
    if (record->GetExceptionCode() != AVBased::kNoError)
        throw Error(ErrorKind::Effect,
                    "effect " + std::string(proc.GetName()) + " failed: " + record->GetExceptionMsg());
}

EffectChain::EffectChain(const Plugin& plugin, AVBased::IAVManager* manager,
                         const std::vector<EffectSpec>& effects, uint32_t durationMs)
    : m_plugin(plugin)
    , m_manager(manager)
    , m_durationMs(durationMs)
    , m_first(*this)
    , m_effects(effects) {
    for (const EffectSpec& effect : m_effects) {
        Make(effect);
        const bool inOrder = NeedsOrder(effect);
        if (m_segments.empty() || inOrder != (m_segments.back().gate != nullptr))
            m_segments.push_back({0, inOrder ? std::make_unique<Turnstile>() : nullptr});
        m_segments.back().end = m_procs.size();
    }
}

EffectChain::EffectChain(EffectChain* first)
    : m_plugin(first->m_plugin)
    , m_manager(first->m_manager)
    , m_durationMs(first->m_durationMs)
    , m_first(*first)
    , m_effects(first->m_effects) {
    for (const EffectSpec& effect : m_effects) {
        if (NeedsOrder(effect))
            m_procs.emplace_back();
        else
            Make(effect);
    }
}

void EffectChain::Make(const EffectSpec& effect) {
    const AVBased::EffectInfo& info = RequireEffect(effect.name);
    m_procs.push_back(m_plugin.MakeVideo(m_manager, info.name));
    m_traits |= info.traits;
    if (info.kind == AVBased::EffectKind::Transition) m_transitions = true;
    AVBased::IVideoProc& proc = *m_procs.back();
    if (IsStereoEffect(proc)) {
        m_stereo = &proc;
        m_mixesViews = false;
    } else if (info.traits & AVBased::kMovesPixels) {
        m_mixesViews = true;
    }
    SetDuration(proc, m_durationMs);
    if (NeedsPictureSize(effect)) {
        m_waiting.emplace_back(&proc, effect);
        return;
    }
    for (const PropertySetting& setting : effect.properties) SetProperty(proc, setting.name, setting.value);
}

void EffectChain::SetWaiting(AVBased::IRawVideoFrame& frame) {
    unsigned width = 0, height = 0;
    frame.GetDimension(&width, &height);
    for (const auto& [proc, spec] : m_waiting) {
        const AVBased::EffectInfo& effect = RequireEffect(spec.name);
        for (const auto& [name, value, percentage] : spec.properties)
            SetProperty(*proc, name,
                        percentage ? PixelsOfPercentage(effect, RequireProperty(effect, name), *percentage,
                                                        width, height)
                                   : value);
    }
    m_waiting.clear();
}

void EffectChain::Run(size_t begin, size_t end, AVBased::IRawVideoFrame& frame, int timeMs) {
    AVBased::ImagePostion position{};
    for (size_t index = begin; index < end; ++index) {
        AVBased::IVideoProc& proc = *m_procs[index];
        if (DrawInPlaceOf(proc, frame)) continue;
        GetBaseException()->Clear();
        proc.ProcFrameInPlace(&position, timeMs, &frame);
        RequireNoRecord(proc);
    }
}

void EffectChain::Process(AVBased::IRawVideoFrame* frame, int timeMs, std::optional<int64_t> number) {
    if (!m_waiting.empty()) SetWaiting(*frame);
    const bool further = &m_first != this;
    size_t begin = 0;
    for (const Segment& segment : m_first.m_segments) {
        if (segment.gate && number)
            segment.gate->Pass(*number, [&] { m_first.Run(begin, segment.end, *frame, timeMs); });
        else if (!segment.gate || !further)
            Run(begin, segment.end, *frame, timeMs);
        begin = segment.end;
    }
}

void EffectChain::Stop() {
    for (const Segment& segment : m_segments)
        if (segment.gate) segment.gate->Stop();
}

} // namespace aveffect
