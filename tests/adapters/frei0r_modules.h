#pragma once
/// Modules as a host has them: loaded at run time.
#include <dlfcn.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "adapters/frei0r/frei0r_interface.h"
#include "aveffect/catalogue.h"

namespace test {

/// "aveffect_fade_in" of "fade-in".
inline std::string ModuleName(std::string_view shortName) {
    std::string name = "aveffect_" + std::string(shortName);
    std::ranges::replace(name, '-', '_');
    return name;
}

class Module {
public:
    /// From a folder of modules. Stays loaded.
    explicit Module(const std::string& name, const std::string& folder = AVEFFECT_MODULE_DIR)
        : m_library(dlopen((folder + "/" + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (!m_library) throw std::runtime_error(dlerror());
        Call<decltype(f0r_get_plugin_info)>("f0r_get_plugin_info")(&info);
        for (int i = 0; i < info.num_params; ++i)
            Call<decltype(f0r_get_param_info)>("f0r_get_param_info")(&parameters.emplace_back(), i);
    }
    template <class Function>
    Function* Call(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(m_library, name));
    }
    bool Mixes() const { return info.plugin_type == F0R_PLUGIN_TYPE_MIXER2; }

    f0r_plugin_info_t info{};
    std::vector<f0r_param_info_t> parameters;

private:
    void* m_library;
};

/// An instance of a module.
class Effect {
public:
    Effect(const Module& module, unsigned width, unsigned height)
        : m_module(module)
        , m_instance(module.Call<decltype(f0r_construct)>("f0r_construct")(width, height)) {}
    ~Effect() { m_module.Call<decltype(f0r_destruct)>("f0r_destruct")(m_instance); }
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    /// Values as a person writes them, parted by bars: numbers, y and n, #RRGGBB, texts.
    void Set(std::string values) const {
        for (int index = 0; !values.empty(); ++index) {
            const size_t bar = std::min(values.find('|'), values.size());
            Set(index, values.substr(0, bar));
            values.erase(0, bar + 1);
        }
    }
    void Set(int index, const std::string& value) const {
        const int type = m_module.parameters.at(static_cast<size_t>(index)).type;
        const char* text = value.c_str();
        double number = type == F0R_PARAM_BOOL ? (value == "y" ? 1 : 0) : std::strtod(text, nullptr);
        const auto rgb = value.empty() ? 0 : std::strtoul(text + 1, nullptr, 16);
        const auto part = [&](int shift) { return static_cast<float>(rgb >> shift & 0xFF) / 255; };
        f0r_param_color_t colour = {part(16), part(8), part(0)};
        SetRaw(index, type == F0R_PARAM_STRING  ? static_cast<void*>(&text)
                      : type == F0R_PARAM_COLOR ? static_cast<void*>(&colour)
                                                : &number);
    }
    void SetRaw(int index, void* value) const {
        m_module.Call<decltype(f0r_set_param_value)>("f0r_set_param_value")(m_instance, value, index);
    }
    void GetRaw(int index, void* value) const {
        m_module.Call<decltype(f0r_get_param_value)>("f0r_get_param_value")(m_instance, value, index);
    }
    void Update(const uint32_t* in, uint32_t* out, const uint32_t* second = nullptr,
                double time = -9.2e20) const {
        if (second)
            m_module.Call<decltype(f0r_update2)>("f0r_update2")(m_instance, time, in, second, nullptr, out);
        else
            m_module.Call<decltype(f0r_update)>("f0r_update")(m_instance, time, in, out);
    }
    bool Works() const { return m_instance != nullptr; }

private:
    const Module& m_module;
    f0r_instance_t m_instance;
};

/// What a filter does with some settings: as a module and as the plug-in know them.
struct FilterCase {
    std::string_view effect;
    std::string_view values;     ///< of the parameters, by position, parted by bars
    std::string_view properties; ///< as people write them for aveffect
};

/// Every filter with settings that change a picture; 1 of 0..1 is the range's upper end.
inline constexpr FilterCase kFilterCases[] = {
    {"aged-film", "", ""},
    {"anaglyph", "0.75|0.25", ":render_3d_mode=red-cyan"},
    {"atomize", "y|y|0.1", ":atomize_ishorizontal=on:atomize_isvertical=on:atomize_level=10%"},
    {"blur", "0.00006104", ":blur_count=4"},
    {"brightness-contrast", "0.6|0.55|0.2", ":brightness=20:contrast=10:saturation=-60"},
    {"color-filter", "0.2|#204080", ":filter_scope=51:filter_color=#204080"},
    {"dilate", "", ""},
    {"edge-light", "0.6", ":edgelight_level=51"},
    {"emboss", "0.504", ":emboss_level=2"},
    {"erode", "", ""},
    {"fade-in", "0.25|0.5|0.5", ":FadeMin=128:FadeMax=128"},
    {"fade-in-color", "0.25|0.5|#FF8000|0.5", ":fadein_min=128:fadein_color=#FF8000:fadein_max=128"},
    {"fade-out", "0.25|0.5|0.5", ":FadeMin=128:FadeMax=128"},
    {"fade-out-color", "0.25|0.5|#FF8000|0.5", ":fadeout_min=128:fadeout_color=#FF8000:fadeout_max=128"},
    {"flip-color", "", ""},
    {"gray", "", ""},
    {"invert", "", ""},
    {"magnifier", "0.25|0.5|0.5|0.03", ":magnifier_r=25%:magnifier_x=50%:magnifier_y=50%:magnifier_scale=3"},
    {"mirage", "0.04|0.6", ":mirage_width=40:mirage_alpha=60"},
    {"mirror-invert", "0.6", ":mirrorinvert_amount=200"},
    {"mosaic", "0.1|0.2|0.9|0.8|0.1",
     ":mosaic_x1=10%:mosaic_y1=20%:mosaic_x2=90%:mosaic_y2=80%:mosaic_step=3"},
    {"noise", "0.16129", ":addnoise_level=-14"},
    {"oil-painting", "0.0125|0.25", ":oilpainting_brushsize=1.25%:oilpainting_coarseness=64"},
    {"pop-style", "0.4|#FFE02E", ":popstyle_threshold=102:popstyle_color=#FFE02E"},
    {"portrait", "#FFFFFF|0.125", ":portrait_fillcolor=#FFFFFF:portrait_width=12.5%"},
    {"quarter-turns", "0.34", ":Rotate90XDerection=1"},
    {"radiate", "0.5|0.5|0.1", ":radiate_x=50%:radiate_y=50%:radiate_level=205"},
    {"relief", "0.75", ":relief_angle=180"},
    {"reverse", "y|n", ":mirror=on"},
    {"rotate", "0.4|0.5|0.5|0.525", ":rotate_r=40%:rotate_x=50%:rotate_y=50%:rotate_scale=5"},
    {"sharpen", "0.0000306", ":sharpen_count=2"},
    {"spherize", "0.45|0.5|0.4|0.55", ":spherize_r=45%:spherize_x=50%:spherize_y=40%:spherize_scale=1"},
    {"spotlight", "0.5|0.5|0.3|0.8|#FFC080|0.6",
     ":spotlight_x=50%:spotlight_y=50%:spotlight_r=30%:spotlight_brightness=60:spotlight_color=#FFC080:"
     "spotlight_density=60"},
    {"stroke", "0.96", ":stroke_pressure=80"},
    {"tensile", "y|0.25|0.75|0.0015|n|0|0|0",
     ":tensile_vertical=on:tensile_vertical_y1=25%:tensile_vertical_y2=75%:tensile_vertical_scale=1.5"},
    {"tile-reflect", "0.625|0.1|0.2", ":tilereflect_angle=45:tilereflect_size=10%:tilereflect_curvature=20"},
    {"transparency", "0.5", ":transparency_scale=50"},
    {"video-wall", "0.001001001001|0.001001001001", ":videowall_horiTiles=2:videowall_verTiles=2"},
};

inline const AVBased::EffectInfo& EffectNamed(std::string_view shortName) {
    return *std::ranges::find(AVBased::kVideoEffects, shortName, &AVBased::EffectInfo::shortName);
}
inline bool DrawsRandom(std::string_view shortName) {
    return EffectNamed(shortName).traits & AVBased::kDrawsRandom;
}

} // namespace test
