#include "timeline/otio/effect_words.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "aveffect/catalogue/transitions.h"
#include "host/media/source_request.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/value_text.h"
#include "timeline/otio/fields.h"

namespace aveffect {

namespace {

using AVBased::EffectInfo;
using AVBased::PropertyInfo;

enum class Form { Time, Share, File, Plain };

/// A member of metadata.aveffect that is a setting which every effect has.
struct ReachWord {
    const char* member;
    const char* setting;
    Form form;
};
constexpr std::array<ReachWord, 9> kReachWords = {{{"from", reach::kFrom, Form::Time},
                                                   {"to", reach::kTo, Form::Time},
                                                   {"fade_in", reach::kFadeIn, Form::Time},
                                                   {"fade_out", reach::kFadeOut, Form::Time},
                                                   {"mix", reach::kMix, Form::Share},
                                                   {"mask", reach::kMask, Form::File},
                                                   {"mask_invert", reach::kMaskInvert, Form::Plain},
                                                   {"mask_feather", reach::kMaskFeather, Form::Plain},
                                                   {"area", reach::kArea, Form::Plain}}};

const ReachWord* FindReach(const std::string& name) {
    const auto found = std::ranges::find_if(
        kReachWords, [&](const ReachWord& word) { return name == word.member || name == word.setting; });
    return found == kReachWords.end() ? nullptr : &*found;
}

struct EasingWord {
    const char* name;
    const char* mark; ///< between time and value
};
constexpr std::array<EasingWord, 6> kEasings = {{{"linear", "="},
                                                 {"hold", "|="},
                                                 {"smooth", "~="},
                                                 {"ease-in", "[ease-in]="},
                                                 {"ease-out", "[ease-out]="},
                                                 {"ease-in-out", "[ease-in-out]="}}};

/// Seconds, a text as on the command line, or a RationalTime.
std::string TimeText(const std::string& name, const OtioJson& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number()) return NumberText(value.get<double>());
    if (value.is_object()) return NumberText(TimeOf(OtioJson{{name, value}}, name.c_str())->Seconds());
    Refuse(name + " is " + Shown(value) +
           ", but should be a time: seconds, a text such as \"25f\" or \"50%\", or a RationalTime");
}

/// A value that stands still.
std::string ValueText(const std::string& name, const OtioJson& value, Form form, const MediaTerms& terms) {
    if (form == Form::Time) return TimeText(name, value);
    if (form == Form::Share && value.is_number() && (value.get<double>() < 0 || value.get<double>() > 1))
        Refuse(name + " is " + Shown(value) + ", but should be from 0 to 1, or a text such as \"50%\"");
    if (value.is_number())
        return NumberText(form == Form::Share ? value.get<double>() * 100 : value.get<double>());
    if (value.is_boolean()) return value.get<bool>() ? "on" : "off";
    if (!value.is_string())
        Refuse(name + " is " + Shown(value) + ", but should be a number, a text, true or false");
    return form == Form::File ? MediaPlace(value.get<std::string>(), terms) : value.get<std::string>();
}

std::string NearestOf(const std::string& name, const std::vector<std::string_view>& known) {
    const std::string guess = DidYouMean({NearestName(name, known)});
    if (!guess.empty()) return "; " + guess;
    std::string list;
    for (const std::string_view one : known) list.append(list.empty() ? "" : ", ").append(one);
    return "; there are " + list;
}

void RefuseOthers(const OtioJson& object, const std::string& where,
                  const std::vector<std::string_view>& known, const std::string& place, Findings& findings) {
    for (const auto& [name, value] : object.items())
        if (std::ranges::find(known, name) == known.end())
            findings.Fault(place,
                           (where + " has no member \"").append(name).append("\"") + NearestOf(name, known));
}

/// Turns metadata into texts of the command line, whose parser checks them.
class EffectWords {
public:
    EffectWords(const EffectInfo& effect, const OtioJson& words, const MediaTerms& terms,
                const std::string& place, Findings& findings)
        : m_effect(effect)
        , m_terms(terms)
        , m_place(place)
        , m_findings(findings) {
        Each(words, "settings", [&](const std::string& name, const OtioJson& value) {
            Add(SettingName(name), ValueText(name, value, FormOf(name), m_terms));
        });
        Each(words, "keyframes", [&](const std::string& name, const OtioJson& keys) {
            Add(SettingName(name), KeyframesText(name, keys));
        });
        for (const ReachWord& word : kReachWords)
            if (const OtioJson* const value = Member(words, word.member))
                Try([&] { Add(word.setting, ValueText(word.member, *value, word.form, m_terms)); });
    }

    /// Absent when anything is wrong.
    std::optional<EffectSpec> Parse(const std::string& name) {
        if (m_wrong) {
            ParseEach(name);
            return {};
        }
        try {
            return ParseEffect(Written(name).Text(), false, MediumOf());
        } catch (const Error& wrong) {
            if (!ParseEach(name)) m_findings.Fault(m_place, wrong.what(), wrong.Kind());
        }
        return {};
    }

    /// As the command line has it.
    EffectWording Written(const std::string& name) const {
        EffectWording text = SplitEffect(name);
        text.settings = m_settings;
        return text;
    }

private:
    using Setting = std::pair<std::string, std::string>; ///< name and value

    Medium MediumOf() const {
        return m_effect.kind == AVBased::EffectKind::Audio ? Medium::Audio : Medium::Video;
    }

    template <typename Work>
    void Try(Work work) {
        if (!m_findings.Try(m_place, work)) m_wrong = true;
    }

    template <typename Take>
    void Each(const OtioJson& words, const char* member, Take take) {
        Try([&] {
            for (const auto& [name, value] : ObjectOf(words, member).items())
                Try([&, &name = name, &value = value] { take(name, value); });
        });
    }

    /// The effect's own names come first.
    std::string SettingName(const std::string& name) const {
        const ReachWord* const word = FindReach(name);
        if (word && !AVBased::FindProperty(m_effect, name)) return word->setting;
        RequireProperty(m_effect, name);
        return name;
    }

    Form FormOf(const std::string& name) const {
        const PropertyInfo* const property = AVBased::FindProperty(m_effect, name);
        if (property) return property->kind == AVBased::ValueKind::Path ? Form::File : Form::Plain;
        const ReachWord* const word = FindReach(name);
        return word ? word->form : Form::Plain;
    }

    void Add(const std::string& name, const std::string& value) {
        if (std::ranges::find(m_settings, name, &Setting::first) != m_settings.end())
            Refuse(name + " is set twice: among settings, keyframes and the members beside them");
        m_settings.emplace_back(name, value);
    }

    std::string KeyframesText(const std::string& name, const OtioJson& keys) const {
        if (FormOf(name) == Form::File) Refuse(name + " is a file and has no keyframes");
        if (!keys.is_array() || keys.empty())
            Refuse("keyframes of " + name + " are " + Shown(keys) +
                   ", but should be a list of {\"time\": ..., \"value\": ...}");
        std::string text;
        for (const OtioJson& key : keys) text.append(text.empty() ? "" : ";").append(KeyText(name, key));
        return text;
    }

    std::string KeyText(const std::string& name, const OtioJson& key) const {
        const OtioJson* const time = Member(key, "time");
        const OtioJson* const value = Member(key, "value");
        if (!time || !value) Refuse("a keyframe of " + name + " is " + Shown(key) + " without time or value");
        const std::string easing = TextOf(key, "easing", "linear");
        const auto word =
            std::ranges::find_if(kEasings, [&](const EasingWord& one) { return easing == one.name; });
        std::vector<std::string_view> known;
        known.reserve(kEasings.size());
        for (const EasingWord& one : kEasings) known.emplace_back(one.name);
        if (word == kEasings.end())
            Refuse("a keyframe of " + name + " has no easing \"" + easing + "\"" + NearestOf(easing, known));
        for (const auto& [member, unused] : key.items())
            if (member != "time" && member != "value" && member != "easing")
                Refuse(("a keyframe of " + name + " has no member \"").append(member) +
                       "\"; there are time, value, easing");
        const std::string shown = ValueText(name, *value, FormOf(name), m_terms);
        if (shown.find_first_of(";=") != std::string::npos)
            Refuse("a keyframe of " + name + " has the value '" + shown + "', in which no ; and = may stand");
        return TimeText("time", *time) + word->mark + shown;
    }

    /// Whether settings are wrong for themselves, each of which is a fault then.
    bool ParseEach(const std::string& name) {
        bool wrong = false;
        for (const Setting& setting : m_settings) {
            if (setting.first == reach::kMaskInvert || setting.first == reach::kMaskFeather) continue;
            EffectWording alone = SplitEffect(name);
            alone.settings = {setting};
            try {
                ParseEffect(alone.Text(), false, MediumOf());
            } catch (const Error& fault) {
                m_findings.Fault(m_place, fault.what(), fault.Kind());
                wrong = true;
            }
        }
        return wrong;
    }

    const EffectInfo& m_effect;
    const MediaTerms& m_terms;
    const std::string& m_place;
    Findings& m_findings;
    std::vector<Setting> m_settings;
    bool m_wrong = false;
};

const EffectInfo* FindEffect(const std::string& name, const std::string& place, Findings& findings) {
    const EffectInfo* effect = nullptr;
    findings.Try(place, [&] { effect = &RequireEffect(name); });
    return effect;
}

} // namespace

std::string OwnEffectName(const std::string& effectName) {
    constexpr std::string_view kOurs = "aveffect.";
    return effectName.starts_with(kOurs) ? effectName.substr(kOurs.size()) : "";
}

bool IsEffectMember(const std::string& name) {
    return name == "preset" ||
           std::ranges::any_of(kReachWords, [&](const ReachWord& word) { return name == word.member; });
}

std::optional<EffectSpec> ReadEffectWords(const std::string& name, const OtioJson& words,
                                          const MediaTerms& terms, const std::string& place,
                                          Findings& findings, EffectWording* written) {
    const EffectInfo* const effect = FindEffect(name.substr(0, name.find('/')), place, findings);
    if (!effect) return {};
    const std::string reason = effect->kind == AVBased::EffectKind::Transition
                                   ? " is a transition, which stands between clips as a Transition object"
                               : effect->kind == AVBased::EffectKind::Stereo
                                   ? " takes two views, which films don't have"
                                   : "";
    if (!reason.empty()) {
        findings.Fault(place, name + reason);
        return {};
    }
    std::vector<std::string_view> known = {"preset", "settings", "keyframes"};
    for (const ReachWord& word : kReachWords) known.emplace_back(word.member);
    RefuseOthers(words, "metadata.aveffect", known, place, findings);
    std::optional<EffectSpec> spec;
    findings.Try(place, [&] {
        // Of the name no more than effect and preset counts: settings would not be looked at.
        const size_t slash = name.find('/');
        const std::string named = slash == std::string::npos ? "" : name.substr(slash + 1);
        const std::string preset = TextOf(words, "preset", named);
        std::string whole(effect->shortName);
        if (!preset.empty()) whole.append("/").append(RequirePreset(*effect, preset).name);
        EffectWords read(*effect, words, terms, place, findings);
        spec = read.Parse(whole);
        if (written) *written = read.Written(whole);
    });
    return spec;
}

std::optional<EffectSpec> ReadTransitionWords(const OtioJson& words, const MediaTerms& terms,
                                              const std::string& place, Findings& findings) {
    std::optional<EffectSpec> spec;
    findings.Try(place, [&] {
        const std::string name = TextOf(words, "effect", "crossfade");
        const EffectInfo* const effect = FindEffect(name, place, findings);
        if (!effect) return;
        if (effect->kind != AVBased::EffectKind::Transition)
            Refuse(name + " is no transition, but " + std::string(effect->title) +
                   "; `aveffect list` shows those there are");
        RefuseOthers(words, "metadata.aveffect", {"effect", "settings"}, place, findings);
        spec = EffectWords(*effect, words, terms, place, findings).Parse(std::string(effect->shortName));
    });
    const auto fromFilm = [](const PropertySetting& setting) {
        return std::ranges::any_of(AVBased::catalogue::kTransitionProperties,
                                   [&](const PropertyInfo& one) { return setting.name == one.name; });
    };
    if (spec && (std::ranges::any_of(spec->properties, fromFilm) || !spec->reach.empty())) {
        findings.Fault(place, "a transition's pictures and times are the film's, and can't be set");
        spec.reset();
    }
    return spec;
}

FilmWishes ReadWishes(const OtioJson& words, const std::string& place, Findings& findings) {
    FilmWishes wishes;
    constexpr int kMostPixels = 32768;
    const auto side = [&](const char* name, std::optional<int>& wish) {
        const int pixels = WholeOf(words, name, 0);
        if (!Member(words, name)) return;
        if (pixels < 1 || pixels > kMostPixels)
            Refuse(std::string("output.") + name + " is " + std::to_string(pixels) +
                   ", but should be a number of pixels, from 1 to " + std::to_string(kMostPixels));
        wish = pixels;
    };
    findings.Try(place, [&] { side("width", wishes.width); });
    findings.Try(place, [&] { side("height", wishes.height); });
    findings.Try(place, [&] {
        if ((Member(words, "width") == nullptr) != (Member(words, "height") == nullptr))
            Refuse("output has one of width and height; give both or none");
        if (const OtioJson* const rate = Member(words, "rate")) {
            if (rate->is_string()) wishes.rate = ParsePictureRate(rate->get<std::string>());
            if (rate->is_number()) wishes.rate = ParsePictureRate(NumberText(rate->get<double>()));
            if (!wishes.rate)
                Refuse("output.rate is " + Shown(*rate) +
                       ", but should be pictures a second: 25, 29.97 or \"30000/1001\"");
        }
    });
    findings.Try(place, [&] {
        wishes.videoCodec = TextOf(words, "video_codec");
        wishes.audioCodec = TextOf(words, "audio_codec");
        wishes.outputFormat = TextOf(words, "pixel_format");
        if (Member(words, "limiter")) wishes.limiter = SwitchOf(words, "limiter", true);
    });
    RefuseOthers(words, "metadata.aveffect.output",
                 {"width", "height", "rate", "video_codec", "audio_codec", "pixel_format", "limiter"}, place,
                 findings);
    return wishes;
}

} // namespace aveffect
