#include "adapters/gstreamer/element.h"

#include <cctype>
#include <string>

namespace aveffect::gst {

namespace {

GQuark TableQuark() { return g_quark_from_static_string("aveffect-properties"); }

/// "GstAveffectFadeIn" of "fade-in".
std::string TypeName(std::string_view shortName) {
    std::string name = "GstAveffect";
    bool begins = true;
    for (const char letter : shortName) {
        if (letter != '-') name += begins ? static_cast<char>(std::toupper(letter)) : letter;
        begins = letter == '-';
    }
    return name;
}

} // namespace

void Describe(GstElementClass* of, const AVBased::EffectInfo& effect, const char* kind) {
    std::string help(effect.help);
    if (!effect.note.empty()) help.append(" ").append(effect.note);
    gst_element_class_set_metadata(of, std::string(effect.title).c_str(), kind, help.c_str(),
                                   "The AVEffect developers");
}

void AddPad(GstElementClass* of, const char* name, GstPadDirection direction, GstCaps* caps) {
    gst_element_class_add_pad_template(of, gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
}

void RegisterElement(GstPlugin* plugin, const AVBased::EffectInfo& effect, GType parent,
                     const GTypeInfo& info) {
    const std::string typeName = TypeName(effect.shortName);
    GType type = g_type_from_name(typeName.c_str());
    if (!type) type = g_type_register_static(parent, typeName.c_str(), &info, GTypeFlags{});
    const std::string name = "aveffect-" + std::string(effect.shortName);
    gst_element_register(plugin, name.c_str(), GST_RANK_NONE, type);
}

PropertyTable& MakeTable(GType type, const AVBased::EffectInfo& effect) {
    auto* const table = new PropertyTable{effect}; // for ever, as its type
    g_type_set_qdata(type, TableQuark(), table);
    return *table;
}

PropertyTable& TableOf(gpointer element) {
    return *static_cast<PropertyTable*>(g_type_get_qdata(G_TYPE_FROM_INSTANCE(element), TableQuark()));
}

} // namespace aveffect::gst
