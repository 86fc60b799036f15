#pragma once
/// The one description of every effect and its properties, for the plug-in and for hosts alike: the factory's
/// order, the registered properties, listings, manuals and adapters come from it. Rows and properties stand
/// by families in catalogue/; this header has the order.
///
/// Everything here but the names of quarter turns and transitions has internal linkage: each source unit that
/// uses a name or a table has its own copy.
#include <array>

#include "aveffect/catalogue/distortions.h"
#include "aveffect/catalogue/fades.h"
#include "aveffect/catalogue/filters.h"
#include "aveffect/catalogue/looks.h"
#include "aveffect/catalogue/sounds.h"
#include "aveffect/catalogue/stereo.h"
#include "aveffect/catalogue/transitions.h"

namespace AVBased {

/// Every video effect, in the order in which the factory tests the names.
constexpr auto kVideoEffects = std::to_array<EffectInfo>({
    catalogue::kGaussBlur,
    catalogue::kLaplacianSharpen,
    catalogue::kGray,
    catalogue::kFlipColor,
    catalogue::kInvert,
    catalogue::kAgedFilm,
    catalogue::kBrightnessContrast,
    catalogue::kFadeIn,
    catalogue::kFadeOut,
    catalogue::kDirectFadeIn,
    catalogue::kDirectFadeOut,
    catalogue::kReverse,
    catalogue::kSpherize,
    catalogue::kMagnifier,
    catalogue::kRotate,
    catalogue::kTensile,
    catalogue::kEmboss,
    catalogue::kMosaic,
    catalogue::kPortrait,
    catalogue::kMirage,
    catalogue::kStroke,
    catalogue::kTransparency,
    catalogue::kColorFilter,
    catalogue::kAtomize,
    catalogue::kPopStyle,
    catalogue::kDilate,
    catalogue::kErode,
    catalogue::kEdgeLight,
    catalogue::kRelief,
    catalogue::kVideoWall,
    catalogue::kAddNoise,
    catalogue::kSpotlight,
    catalogue::kRadiate,
    catalogue::kTileReflect,
    catalogue::kMirrorInvert,
    catalogue::kOilPainting,
    catalogue::kClock,
    catalogue::kTurnOver,
    catalogue::kCrossFade,
    catalogue::kCloseDoor,
    catalogue::kRoll,
    catalogue::kBrokenBoxes,
    catalogue::kShutter,
    catalogue::kPush,
    catalogue::k3DRender,
    catalogue::kQuarterTurns,
});

/// Every audio effect, in the factory's order.
constexpr auto kAudioEffects = std::to_array<EffectInfo>({
    catalogue::kReplaceSound,
    catalogue::kFadeSound,
    catalogue::kVolume,
});

/// The effect of that name, null when there is none.
static constexpr const EffectInfo* FindEffect(std::string_view name) {
    for (const EffectInfo& effect : kVideoEffects)
        if (name == effect.name) return &effect;
    for (const EffectInfo& effect : kAudioEffects)
        if (name == effect.name) return &effect;
    return nullptr;
}

} // namespace AVBased
