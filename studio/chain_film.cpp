#include "studio/chain_film.h"

#include <algorithm>
#include <filesystem>

#include "host/settings/catalogue_lookup.h"
#include "host/settings/effect_settings.h"
#include "timeline/jobs/film_check.h"
#include "timeline/jobs/film_new.h"
#include "timeline/otio/effect_words.h"
#include "timeline/otio/fields.h"
#include "timeline/otio/objects.h"

namespace aveffect {

namespace {

/// "@mask-invert" is mask_invert in a film.
std::string MemberOf(const std::string& setting) {
    std::string member = setting.substr(1);
    std::ranges::replace(member, '-', '_');
    return member;
}

OtioJson EffectObject(const StudioEffect& effect, Medium medium, const std::filesystem::path& folder) {
    const EffectSpec spec = ParseEffect(effect.text, false, medium);
    const AVBased::EffectInfo& info = RequireEffect(spec.name);
    if (info.kind == AVBased::EffectKind::Transition || info.kind == AVBased::EffectKind::Stereo)
        throw Error(ErrorKind::Usage,
                    std::string(info.shortName) +
                        " has no place on a film's clip, which shows one picture at a time");
    const EffectWording wording = SplitEffect(effect.text);
    const std::vector<std::string> files = FilesOf(spec);
    OtioJson words = OtioJson::object(), settings = OtioJson::object();
    if (!wording.preset.empty()) words["preset"] = wording.preset;
    for (const auto& [name, value] : wording.settings) {
        const bool file = std::ranges::find(files, value) != files.end();
        (name.starts_with('@') ? words[MemberOf(name)] : settings[name]) =
            file ? MediaName(value, folder) : value;
    }
    if (!settings.empty()) words["settings"] = std::move(settings);
    OtioJson object = MakeEffect(std::string(info.shortName), std::move(words));
    if (!effect.on) object["enabled"] = false;
    return object;
}

/// The track's only clip.
void AddEffects(OtioJson& document, const char* kind, const std::vector<StudioEffect>& effects, Medium medium,
                const std::filesystem::path& folder) {
    for (OtioJson& track : document["tracks"]["children"]) {
        if (track["kind"] != kind) continue;
        for (const StudioEffect& effect : effects)
            track["children"][0]["effects"].push_back(EffectObject(effect, medium, folder));
        return;
    }
    if (!effects.empty()) throw Error(ErrorKind::Usage, "the clip has no sound for the film's effects on it");
}

/// The first clip of the first track of that kind that has one; null where there is none.
const OtioJson* ClipOf(const OtioJson& document, const char* kind) {
    for (const OtioJson& track : document.at("tracks").at("children")) {
        if (track.value("kind", "") != kind) continue;
        for (const OtioJson& child : track.at("children"))
            if (child.value("OTIO_SCHEMA", "").starts_with("Clip.")) return &child;
    }
    return nullptr;
}

std::vector<StudioEffect> EffectsOf(const OtioJson* clip, const MediaTerms& terms) {
    std::vector<StudioEffect> effects;
    if (!clip || !clip->contains("effects") || !(*clip)["effects"].is_array()) return effects;
    for (const OtioJson& effect : (*clip)["effects"]) {
        const std::string name = effect.is_object() ? OwnEffectName(effect.value("effect_name", "")) : "";
        if (name.empty()) continue;
        const OtioJson words =
            effect.value("metadata", OtioJson::object()).value("aveffect", OtioJson::object());
        Findings findings;
        EffectWording written;
        if (ReadEffectWords(name, words, terms, "", findings, &written))
            effects.push_back({written.Text(), effect.value("enabled", true)});
        RequireFaultless(findings.TakeFaults());
    }
    return effects;
}

const FilmItem* FirstClip(const FilmItem& item) {
    if (item.kind == FilmItem::Kind::Clip) return &item;
    for (const FilmItem& child : item.children)
        if (const FilmItem* const found = FirstClip(child)) return found;
    return nullptr;
}

} // namespace

std::string ChainFilmText(const ChainFilm& film, const std::string& place, const std::atomic<bool>& cancel) {
    MediaHeaders headers(&cancel);
    JoinOptions join;
    join.film.output = place;
    join.clips.push_back({film.clip});
    OtioJson document = NewFilm(join, headers);
    const std::filesystem::path folder = std::filesystem::path(place).parent_path();
    AddEffects(document, "Video", film.chain.effects, Medium::Video, folder);
    AddEffects(document, "Audio", film.chain.audioEffects, Medium::Audio, folder);
    std::string text = DocumentText(document);
    OtioTerms terms;
    terms.media.folder = folder;
    const ReadFilm read = ReadOtio(text, terms);
    RequireFaultless(AllFaults(read, CheckFilm(read.film, headers), false));
    return text;
}

ChainFilm ReadChainFilm(const std::string& place, const Roots& roots) {
    OtioTerms terms;
    terms.media.folder = std::filesystem::path(place).parent_path();
    const OtioJson document = ParseDocument(DocumentBytes(place));
    const ReadFilm read = ReadOtioFile(place, terms);
    RequireFaultless(read.faults);
    const FilmItem* const clip = FirstClip(read.film.stack);
    if (!clip || clip->media.kind != FilmMedia::Kind::File)
        throw Error(ErrorKind::Usage, place + " shows no clip from a file");
    ChainFilm film{roots.File(clip->media.url), {}, {}};
    // It has been read as a film, so that its members are what they should be.
    const OtioJson* const heard = ClipOf(document, "Audio");
    film.chain.effects = EffectsOf(ClipOf(document, "Video"), terms.media);
    film.chain.audioEffects = EffectsOf(heard, terms.media);
    if (ClipsOf(read.film.stack).size() > (heard ? 2u : 1u))
        film.notes.emplace_back("of the film's clips the first one is shown; saving keeps no other");
    return film;
}

} // namespace aveffect
