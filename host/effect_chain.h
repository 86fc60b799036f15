#pragma once
/// Effects as people write them, and chains of processors made from them.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/plugin.h"

namespace aveffect {

/// One effect with its settings, values in the plug-in's own text form.
struct EffectSpec {
    std::string name;
    std::vector<std::pair<std::string, std::string>> properties;
};

/// Parses "NAME[:property=value[:property=value...]]"; "\:" stands for a colon and "\\" for a backslash in a
/// value. Values are translated to the plug-in's form by the catalogue: colours from #RRGGBB, 0xRRGGBB or a
/// number, switches from on/off, choices from their names; numbers are checked for form and range. Lenient
/// hands every value on as it is. Throws Error (Usage) that names the effect, property and value, and says
/// what would be right (the nearest name, the range).
EffectSpec ParseEffect(const std::string& text, bool lenient);

/// Video processors that a frame passes in order. Used by one thread at a time.
class EffectChain {
public:
    /// Makes the processors and sets their properties; "duration" of each is set to durationMs first, so that
    /// an explicit setting of it wins. Throws Error (Effect or Usage).
    EffectChain(const Plugin& plugin, AVBased::IAVManager* manager, const std::vector<EffectSpec>& effects,
                uint32_t durationMs);

    /// Changes the frame in place; timeMs is its time in the effects' span. Throws Error (Effect) with the
    /// record's text when a processor records an error.
    void Process(AVBased::IRawVideoFrame* frame, int timeMs);

    bool Empty() const noexcept { return m_procs.empty(); }

    /// Whether an effect of the chain works on transparency alone.
    bool ChangesAlpha() const noexcept { return m_changesAlpha; }

private:
    bool m_changesAlpha = false;
    std::vector<VideoProcPtr> m_procs;
};

} // namespace aveffect
