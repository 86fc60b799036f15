#pragma once
/// The manual's pages.
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "manual/html.h"
#include "manual/shots.h"
#include "manual/waves.h"

namespace aveffect::manual {

/// An effect as its page shows it: what was planned and, for sound, the waves.
struct EffectPage {
    EffectShots shots;
    std::optional<Waves> waves = {};

    const AVBased::EffectInfo& Effect() const { return *shots.effect; }
    std::string File() const { return "effects/" + std::string(Effect().shortName) + ".html"; }
};

/// All effects, to be looked through and searched.
std::string IndexPage(const std::vector<EffectPage>& effects);

/// One effect. It lies in a folder below the index, its neighbours before and after it in their order.
std::string PageOf(const std::vector<EffectPage>& effects, size_t index);

/// One of the texts as a page; the body is what a Markdown program made of it. Links between texts become
/// links between pages, those to what is no part of the manual plain words. The headings get anchors.
std::string PageOfText(const TextPage& page, std::string body);

} // namespace aveffect::manual
