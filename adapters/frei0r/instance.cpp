#include "adapters/frei0r/instance.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>

#include "adapters/frei0r/notices.h"
#include "adapters/support/progress.h"
#include "adapters/support/shown_pictures.h"
#include "aveffect/catalogue.h"
#include "aveffect/pixel_format.h"

namespace aveffect::frei0r {

using adapters::kWhole;
using adapters::ShownPictures;

namespace {

const AVBased::EffectInfo& EffectOf(std::string_view shortName) {
    return *std::ranges::find(AVBased::kVideoEffects, shortName, &AVBased::EffectInfo::shortName);
}

std::string WordsOf(IBaseException& record) {
    const std::string words = record.GetExceptionMsg();
    return words.empty() ? "no reason given" : words;
}

void Set(AVBased::IVideoProc& proc, const char* property, const std::string& value) {
    IBaseException& record = EffectPlugin::Get()->Record();
    record.Clear();
    if (!proc.SetProperty(property, value.c_str()))
        throw std::runtime_error("the plug-in does not take " + std::string(property) + "='" + value +
                                 "': " + WordsOf(record));
}

} // namespace

const Face& FaceOf(const char* shortName) {
    static std::mutex mutex;
    static auto* const faces = new std::map<std::string, Face, std::less<>>;
    const std::scoped_lock lock(mutex);
    const auto known = faces->find(std::string_view(shortName));
    if (known != faces->end()) return known->second;
    const AVBased::EffectInfo& effect = EffectOf(shortName);
    std::string explanation = std::string(effect.title) + ". " + std::string(effect.help);
    if (!effect.note.empty()) explanation += " " + std::string(effect.note);
    Face face{effect, "AVEffect " + std::string(shortName), std::move(explanation),
              std::string(shortName) + " passes pictures on", ParametersOf(effect)};
    return faces->emplace(shortName, std::move(face)).first->second;
}

Instance::Instance(const Face& face, unsigned width, unsigned height)
    : m_face(face)
    , m_width(width)
    , m_height(height) {
    for (const Parameter& parameter : face.parameters) m_values.push_back(parameter.initial);
}

void Instance::SetParameter(const void* value, int index) {
    if (!Has(index) || !value) return;
    const auto place = static_cast<size_t>(index);
    ParameterValue read = ReadValue(m_face.parameters[place], value);
    if (read == m_values[place]) return;
    m_values[place] = std::move(read);
    m_changed = m_changed || m_face.parameters[place].name != kProgress;
}

void Instance::GetParameter(void* value, int index) const {
    if (!Has(index) || !value) return;
    const auto place = static_cast<size_t>(index);
    WriteValue(m_face.parameters[place], m_values[place], value);
}

int Instance::Time() const {
    if (m_values.empty() || m_face.parameters.front().name != kProgress) return 0;
    return adapters::PartOfWhole(m_values.front().number);
}

VideoProcPtr Instance::Make(AVBased::IAVManager* manager, const Settings& settings) const {
    const EffectPlugin& plugin = *EffectPlugin::Get();
    VideoProcPtr proc = plugin.Make(manager, m_face.effect.name);
    if (!proc) throw std::runtime_error("the plug-in can't make it: " + WordsOf(plugin.Record()));
    Set(*proc, AVBased::PROP_NAME_DURATION, std::to_string(kWhole));
    for (const auto& [property, value] : settings) Set(*proc, property, value);
    return proc;
}

void Instance::Run(AVBased::IVideoProc& proc, uint32_t* picture) const {
    AVBased::MemoryFrame frame = adapters::Bgra(picture, m_width, m_height).Frame();
    AVBased::ImagePostion position{};
    IBaseException& record = EffectPlugin::Get()->Record();
    record.Clear();
    proc.ProcFrameInPlace(&position, Time(), &frame);
    if (record.GetExceptionCode() != AVBased::kNoError) throw std::runtime_error(WordsOf(record));
}

void Instance::Filter(uint32_t* picture) {
    if (m_changed) {
        Settings settings = SettingsFor(m_face.effect, m_face.parameters, m_values, m_width, m_height);
        if (settings != m_settings) m_proc.reset();
        m_settings = std::move(settings);
        m_changed = false;
    }
    // Each set of settings has a processor of its own: some keep what was set before.
    if (!m_proc) m_proc = Make(nullptr, m_settings);
    Run(*m_proc, picture);
}

void Instance::Mix(const uint32_t* first, const uint32_t* second, uint32_t* out) const {
    if (Time() == kWhole) { // it is over; some transitions would show the first picture again
        if (second != out) std::copy_n(second, Count(), out);
        return;
    }
    std::vector<uint32_t> replaced; // by the first picture, which the transition draws over
    if (second == out) {
        replaced.assign(second, second + Count());
        std::copy_n(first, Count(), out);
        second = replaced.data();
    }
    // Nobody writes into pictures that are shown.
    const auto shown = [this](const uint32_t* picture) {
        return adapters::Bgra(const_cast<uint32_t*>(picture), m_width, m_height);
    };
    ShownPictures pictures(shown(first), shown(second), out);
    // A transition reads its pictures once in its life, so each moment has its own.
    const VideoProcPtr proc = Make(&pictures, {{"EffectPropVFPath1", ShownPictures::kFirst},
                                               {"EffectPropVFPath2", ShownPictures::kSecond},
                                               {"EffectPropSourceDur", std::to_string(kWhole)}});
    Run(*proc, out);
}

void Instance::Update(const uint32_t* first, const uint32_t* second, uint32_t* out) noexcept {
    const bool mixes = IsTransition(m_face.effect) && second;
    // The host's picture is not to be changed, so the effect works on the copy that the host wants to have
    // anyway.
    if (first != out && !(mixes && second == out)) std::memcpy(out, first, Count() * sizeof *out);
    if (m_width == 0 || m_height == 0 || IsTransition(m_face.effect) != mixes || !EffectPlugin::Get()) return;
    try {
        mixes ? Mix(first, second, out) : Filter(out);
    } catch (const std::bad_alloc&) {
        SayOnce(m_face.complaint, "there is no memory for it");
    } catch (const std::exception& failure) {
        SayOnce(m_face.complaint, failure.what());
    }
}

} // namespace aveffect::frei0r
