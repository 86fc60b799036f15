#include "timeline/otio/named_media.h"

#include <filesystem>

#include "host/settings/catalogue_lookup.h"
#include "host/support/error.h"
#include "timeline/otio/document.h"

namespace aveffect {

namespace {

/// Members of the format, of what is this program's own, and the effects' properties.
bool NamesFile(const std::string& member) {
    if (member == "target_url" || member == "mask") return true;
    for (const AVBased::EffectInfo* effect : AllEffects())
        for (const AVBased::PropertyInfo& property : effect->properties)
            if (property.kind == AVBased::ValueKind::Path && member == property.name) return true;
    return false;
}

void Collect(const OtioJson& json, const MediaTerms& terms, NamedMedia& media) {
    for (const auto& [name, value] : json.items()) {
        if (value.is_structured()) {
            Collect(value, terms, media);
            continue;
        }
        if (!value.is_string()) continue;
        const auto& text = value.get_ref<const std::string&>();
        try {
            if (name == "target_url_base")
                media.folders.push_back(NumberedPlace(text, "", terms));
            else if (NamesFile(name))
                media.urls.push_back(MediaPlace(text, terms));
        } catch (const Error&) {
            continue;
        }
    }
}

} // namespace

NamedMedia MediaNamedIn(const std::string& film, MediaTerms terms) {
    NamedMedia media;
    terms.folder = std::filesystem::path(film).parent_path();
    const std::string bytes = DocumentBytes(film);
    try {
        Collect(ParseDocument(bytes), terms, media);
    } catch (const Error&) {
        return media;
    }
    return media;
}

} // namespace aveffect
