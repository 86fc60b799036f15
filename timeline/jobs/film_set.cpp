#include "timeline/jobs/film_set.h"

#include <algorithm>
#include <filesystem>

#include "host/output/output_file.h"
#include "host/settings/value_text.h"
#include "timeline/jobs/film_check.h"
#include "timeline/jobs/text_file.h"
#include "timeline/otio/document.h"
#include "timeline/otio/effect_words.h"
#include "timeline/otio/fields.h"
#include "timeline/otio/places.h"

namespace aveffect {

namespace {

/// Numbers become numbers; everything else is the text that the command line takes.
OtioJson ValueJson(const std::string& value) {
    if (const auto whole = ParseWhole(value)) return *whole;
    if (const auto real = ParseReal(value)) return *real;
    return value;
}

/// An object member, made where it is missing.
OtioJson& Inner(OtioJson& object, const char* name) {
    OtioJson& inner = object[name];
    if (inner.is_null()) inner = OtioJson::object();
    if (!inner.is_object()) Refuse(std::string(name) + " is " + Shown(inner) + ", but should be an object");
    return inner;
}

bool SwitchValue(const std::string& name, const std::string& value) {
    if (value == "on" || value == "true") return true;
    if (value != "off" && value != "false") Refuse(name + " is on or off, not '" + value + "'");
    return false;
}

void SetOne(OtioJson& object, const std::string& setting) {
    const size_t equals = setting.find('=');
    if (equals == std::string::npos || equals == 0)
        Refuse("'" + setting + "' is no setting; write SETTING=VALUE");
    const std::string name = setting.substr(0, equals), value = setting.substr(equals + 1);
    if (name == "enabled") {
        object["enabled"] = SwitchValue(name, value);
        return;
    }
    OtioJson& words = Inner(Inner(object, "metadata"), "aveffect");
    const bool transition = IsA(object, "Transition");
    if (transition ? name == "effect" : IsEffectMember(name)) {
        words[name] = name == "preset" || name == "effect" ? OtioJson(value) : ValueJson(value);
        return;
    }
    // What is set stands still from now on, unless the value says otherwise.
    for (const char* list : {"settings", "keyframes"})
        if (words.contains(list) && words[list].is_object() && words[list].erase(name) > 0 &&
            words[list].empty())
            words.erase(list);
    Inner(words, "settings")[name] = ValueJson(value);
}

void RequireOurs(const OtioJson& object, const std::string& place) {
    if (IsA(object, "Transition")) return;
    if (!IsA(object, "Effect"))
        Refuse(place + " is a " + SchemaOf(object).name + ", no effect or transition");
    const std::string name = TextOf(object, "effect_name");
    if (OwnEffectName(name).empty())
        Refuse(place + " is an effect '" + name +
               "' of another program; those of this one are called aveffect.NAME");
}

/// Of what was changed alone: the rest may be wrong as it was.
void RequireFaultlessAt(const std::string& path, const ReadFilm& read) {
    std::vector<FilmFault> faults;
    for (const FilmFault& fault : read.faults)
        if (PathIn(fault.place) == path || fault.place.empty()) faults.push_back(fault);
    RequireFaultless(faults);
}

std::string ChangedText(const FilmSetOptions& options) {
    OtioJson document = ParseDocument(DocumentBytes(options.film));
    OtioJson& object = ObjectAt(document, options.place);
    RequireOurs(object, options.place);
    for (const std::string& setting : options.settings) SetOne(object, setting);
    std::string text = DocumentText(document);
    object["enabled"] = true; // what is switched off would not be looked at
    OtioTerms terms = options.terms;
    terms.media.folder = std::filesystem::path(options.film).parent_path();
    RequireFaultlessAt(PathIn(options.place), ReadOtio(DocumentText(document), terms));
    return text;
}

} // namespace

void SetInFilm(const FilmSetOptions& options, const std::atomic<bool>& cancel) {
    const bool inPlace = options.output.empty();
    if (!inPlace) OutputFile::Check(options.output, options.film, options.overwrite);
    const std::string text = ChangedText(options); // documents need memory even to go
    WriteTextFile(inPlace ? options.film : options.output, text, inPlace || options.overwrite, cancel);
}

} // namespace aveffect
