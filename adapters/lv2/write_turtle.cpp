// Writes the LV2 bundle's description from the catalogue: write_turtle VERSION FOLDER.
//
// manifest.ttl names the plug-ins and presets, by which hosts find them; aveffect.ttl says all about them.
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "adapters/lv2/lv2_interface.h"
#include "adapters/sound/effects.h"

namespace {

using namespace AVBased;

constexpr char kPrefixes[] = R"(@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
)";

constexpr char kProject[] = R"(
<urn:aveffect>
    a doap:Project ;
    doap:name "AVEffect" ;
    doap:maintainer [ foaf:name "The AVEffect developers" ] .
)";

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') quoted += '\\';
        quoted += letter;
    }
    return quoted + '"';
}

std::string UriOf(const EffectInfo& effect) { return std::string(lv2::kUriPrefix) + effect.name; }

std::string UriOf(const EffectInfo& effect, const EffectPreset& preset) {
    return UriOf(effect) + ":" + std::string(preset.name);
}

/// As Turtle writes it, the same with every locale.
std::string Number(double value, bool whole) {
    return whole ? std::to_string(static_cast<long long>(value)) : std::to_string(value);
}

/// A version's minor and micro number, by which hosts choose among bundles: 1.2.3 is 102 and 6. To hosts a
/// minor number of 0 is no release yet, and an odd micro number one under development.
std::string VersionLines(const std::string& version) {
    std::istringstream text(version);
    unsigned major = 0, minor = 0, patch = 0;
    char point = 0;
    if (!(text >> major >> point >> minor >> point >> patch)) throw version + ": not of the form 1.2.3";
    return "    lv2:minorVersion " + std::to_string(100 * major + minor) + " ;\n    lv2:microVersion " +
           std::to_string(2 * patch) + " ;\n";
}

/// What the effect says of itself, and after a blank what surprises people.
std::string CommentOf(const EffectInfo& effect) {
    std::string comment(effect.help);
    if (!effect.note.empty()) comment.append(" ").append(effect.note);
    return comment;
}

std::string UnitLine(std::string_view unit) {
    if (unit == "ms") return "        units:unit units:ms ;\n";
    if (unit == "%") return "        units:unit units:pc ;\n";
    if (unit.empty()) return "";
    throw std::string(unit) + ": a unit without a name in LV2";
}

void WriteAudioPort(std::ostream& to, size_t index, const char* direction, const char* symbol) {
    to << "    lv2:port [\n        a lv2:AudioPort , lv2:" << direction << "Port ;\n        lv2:index "
       << index << " ;\n        lv2:symbol \"" << symbol << "\" ;\n        lv2:name \"" << direction
       << "\" ;\n    ]";
}

void WriteControl(std::ostream& to, size_t index, const PropertyInfo& property) {
    const sound::ControlRange range = sound::RangeOf(property);
    to << " , [\n        a lv2:ControlPort , lv2:InputPort ;\n        lv2:index " << index
       << " ;\n        lv2:symbol \"" << property.name << "\" ;\n        lv2:name " << Quoted(property.title)
       << " ;\n        rdfs:comment " << Quoted(property.help) << " ;\n        lv2:default "
       << property.InForceAtFirst() << " ;\n        lv2:minimum " << Number(range.least, range.whole)
       << " ;\n        lv2:maximum " << Number(range.most, range.whole) << " ;\n"
       << UnitLine(property.unit) << (range.whole ? "        lv2:portProperty lv2:integer ;\n" : "")
       << "    ]";
}

void WriteEffect(std::ostream& to, const EffectInfo& effect, const std::string& versionLines) {
    to << "\n<" << UriOf(effect) << ">\n    a lv2:Plugin , lv2:AmplifierPlugin ;\n    doap:name "
       << Quoted(effect.title)
       << " ;\n    doap:license <https://opensource.org/licenses/MIT> ;\n"
          "    lv2:project <urn:aveffect> ;\n"
       << versionLines << "    rdfs:comment " << Quoted(CommentOf(effect))
       << " ;\n    lv2:optionalFeature lv2:hardRTCapable ;\n";
    WriteAudioPort(to, sound::kInput, "Input", "in");
    to << " ;\n";
    WriteAudioPort(to, sound::kOutput, "Output", "out");
    size_t index = sound::kFirstControl;
    for (const PropertyInfo& property : effect.properties) WriteControl(to, index++, property);
    to << " .\n";
}

void WritePreset(std::ostream& to, const EffectInfo& effect, const EffectPreset& preset) {
    to << "\n<" << UriOf(effect, preset) << ">\n    a pset:Preset ;\n    lv2:appliesTo <" << UriOf(effect)
       << "> ;\n    rdfs:label " << Quoted(preset.name) << " ;\n    rdfs:comment " << Quoted(preset.help);
    const char* before = " ;\n    lv2:port ";
    for (const PresetSetting& setting : preset.Settings()) {
        const bool whole = FindProperty(effect, setting.property)->type == kInt32;
        to << before << "[ lv2:symbol \"" << setting.property << "\" ; pset:value "
           << Number(setting.value, whole) << " ]";
        before = " , ";
    }
    to << " .\n";
}

void WriteManifest(std::ostream& to) {
    to << kPrefixes;
    for (const EffectInfo* effect : sound::kEffects) {
        to << "\n<" << UriOf(*effect)
           << ">\n    a lv2:Plugin ;\n    lv2:binary <aveffect.so> ;\n    rdfs:seeAlso <aveffect.ttl> .\n";
        for (const EffectPreset& preset : effect->presets)
            to << "\n<" << UriOf(*effect, preset) << ">\n    a pset:Preset ;\n    lv2:appliesTo <"
               << UriOf(*effect) << "> ;\n    rdfs:seeAlso <aveffect.ttl> .\n";
    }
}

void WriteEffects(std::ostream& to, const std::string& version) {
    to << kPrefixes << kProject;
    for (const EffectInfo* effect : sound::kEffects) {
        WriteEffect(to, *effect, VersionLines(version));
        for (const EffectPreset& preset : effect->presets) WritePreset(to, *effect, preset);
    }
}

} // namespace

int main(int count, char** arguments) try {
    if (count != 3) throw std::string("write_turtle VERSION FOLDER");
    const std::string folder = arguments[2];
    std::ofstream manifest(folder + "/manifest.ttl"), effects(folder + "/aveffect.ttl");
    WriteManifest(manifest);
    WriteEffects(effects, arguments[1]);
    if (!manifest.flush() || !effects.flush()) throw folder + ": the description can't be written";
    return 0;
} catch (const std::string& what) {
    std::cerr << what << '\n';
    return 1;
}
