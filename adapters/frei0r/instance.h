#pragma once
/// A module's effect for pictures of one size.
#include <cstdint>
#include <vector>

#include "adapters/frei0r/effect_plugin.h"
#include "adapters/frei0r/parameters.h"

namespace aveffect::frei0r {

/// One module, as hosts see it before they use it. Lives as long as the process.
struct Face {
    const AVBased::EffectInfo& effect;
    std::string name;
    std::string explanation;
    std::string complaint; ///< what it does when it fails
    std::vector<Parameter> parameters;
};

inline bool IsTransition(const AVBased::EffectInfo& effect) {
    return effect.kind == AVBased::EffectKind::Transition;
}

/// The face of the effect of that short name, which must be the catalogue's. Safe from any thread.
const Face& FaceOf(const char* shortName);

/// Pictures are BGRA without padding; nothing is asked of their addresses. Whatever fails, the picture is
/// passed on and one line says why. Used by one thread at a time; nothing is thrown but std::bad_alloc by the
/// constructor and by SetParameter.
class Instance {
public:
    Instance(const Face& face, unsigned width, unsigned height);

    /// Indices that there are not are passed over.
    void SetParameter(const void* value, int index);
    void GetParameter(void* value, int index) const;

    /// The first picture through the effect; a transition's way to the second one. Out may be one of them.
    void Update(const uint32_t* first, const uint32_t* second, uint32_t* out) noexcept;

private:
    void Filter(uint32_t* picture);
    void Mix(const uint32_t* first, const uint32_t* second, uint32_t* out) const;
    VideoProcPtr Make(AVBased::IAVManager* manager, const Settings& settings) const;
    void Run(AVBased::IVideoProc& proc, uint32_t* picture) const;
    bool Has(int index) const { return index >= 0 && static_cast<size_t>(index) < m_values.size(); }
    int Time() const;
    size_t Count() const { return size_t{m_width} * m_height; } // of pixels

    const Face& m_face;
    unsigned m_width, m_height;
    std::vector<ParameterValue> m_values;
    bool m_changed = true; // since the settings were made of the values
    Settings m_settings;
    VideoProcPtr m_proc; // of these settings
};

} // namespace aveffect::frei0r
