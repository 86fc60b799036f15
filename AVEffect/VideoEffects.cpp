// The factory of all video effects.
#include <algorithm>
#include <array>

#include "AVEffect/AtomizeVideoImageEffect.h"
#include "AVEffect/CMK3DRenderEffect.h"
#include "AVEffect/CMkBrokenBoxEffect.h"
#include "AVEffect/CMkCloseDoorEffect.h"
#include "AVEffect/CMkFadeEffect.h"
#include "AVEffect/CMkLeftRightMoveEffect.h"
#include "AVEffect/CMkRollEffect.h"
#include "AVEffect/CMkShutterEffect.h"
#include "AVEffect/CMkTurnEffect.h"
#include "AVEffect/CRotate90X.h"
#include "AVEffect/FadeVideoImageEffect.h"
#include "AVEffect/ImageEffects.h"
#include "AVEffect/LightVideoImageEffect.h"
#include "AVEffect/MagnifierVideoImageEffect.h"
#include "AVEffect/MkClockEffect.h"
#include "AVEffect/MorphologyVideoImageEffect.h"
#include "AVEffect/PaintVideoImageEffect.h"
#include "AVEffect/ReverseVideoImageEffect.h"
#include "AVEffect/SimpleVideoImageEffect.h"
#include "AVEffect/SpherizeVideoImageEffect.h"
#include "AVEffect/StyleVideoImageEffect.h"
#include "AVEffect/TensileVideoImageEffect.h"
#include "AVEffect/factory.h"
#include "aveffect/catalogue.h"

namespace {

using namespace AVBased;

template <class Effect>
constexpr auto Row = RowOf<IVideoProc, Effect>;

// A new effect adds its row to the catalogue and its class here, in the same place.
constexpr FactoryRow<IVideoProc> kRows[] = {
    Row<CSimpleGaussBlurEffect>(catalogue::kGaussBlur),
    Row<CSimpleLaplacianSharpenEffect>(catalogue::kLaplacianSharpen),
    Row<CGrayEffect>(catalogue::kGray),
    Row<CFlipColorEffect>(catalogue::kFlipColor),
    Row<CInvertEffect>(catalogue::kInvert),
    Row<CAgedFilmEffect>(catalogue::kAgedFilm),
    Row<CBrightnessContrastEffect>(catalogue::kBrightnessContrast),
    Row<CFadeInVideoImageEffect>(catalogue::kFadeIn),
    Row<CFadeOutVideoImageEffect>(catalogue::kFadeOut),
    Row<CDirectFadeInEffect>(catalogue::kDirectFadeIn),
    Row<CDirectFadeOutEffect>(catalogue::kDirectFadeOut),
    Row<CReverseVideoImageEffect>(catalogue::kReverse),
    Row<CSpherizeVideoImageEffect>(catalogue::kSpherize),
    Row<CMagnifierVideoImageEffect>(catalogue::kMagnifier),
    Row<CRotateVideoImageEffect>(catalogue::kRotate),
    Row<CTensileVideoImageEffect>(catalogue::kTensile),
    Row<CEmbossVideoImageEffect>(catalogue::kEmboss),
    Row<CMosaicVideoImageEffect>(catalogue::kMosaic),
    Row<CPortraitVideoImageEffect>(catalogue::kPortrait),
    Row<CMirageVideoImageEffect>(catalogue::kMirage),
    Row<CStrokeVideoImageEffect>(catalogue::kStroke),
    Row<CTransparencyAjustEffect>(catalogue::kTransparency),
    Row<CColorFilterEffect>(catalogue::kColorFilter),
    Row<CAtomizeVideoImageEffect>(catalogue::kAtomize),
    Row<CPopStyleVideoImageEffect>(catalogue::kPopStyle),
    Row<CDilateVideoImageEffect>(catalogue::kDilate),
    Row<CErodeVideoImageEffect>(catalogue::kErode),
    Row<CEdgeLightVideoImageEffect>(catalogue::kEdgeLight),
    Row<CReliefVideoImageEffect>(catalogue::kRelief),
    Row<CWallVideoImageEffect>(catalogue::kVideoWall),
    Row<CAddNoiseVideoImageEffect>(catalogue::kAddNoise),
    Row<CSpotlightVideoImageEffect>(catalogue::kSpotlight),
    Row<CRadiateVideoImageEffect>(catalogue::kRadiate),
    Row<CTileReflectVideoImageEffect>(catalogue::kTileReflect),
    Row<CMirrorInvertVideoImageEffect>(catalogue::kMirrorInvert),
    Row<COilPaintingVideoImageEffect>(catalogue::kOilPainting),
    Row<CMkClockEffect>(catalogue::kClock),
    Row<CMkTurnEffect>(catalogue::kTurnOver),
    Row<CMkFadeEffect>(catalogue::kCrossFade),
    Row<CMkCloseDoorEffect>(catalogue::kCloseDoor),
    Row<CMkRollEffect>(catalogue::kRoll),
    Row<CMkBrokenBoxEffect>(catalogue::kBrokenBoxes),
    Row<CMkShutterEffect>(catalogue::kShutter),
    Row<CMkLeftRightMoveEffect>(catalogue::kPush),
    Row<CMK3DRenderEffect>(catalogue::k3DRender),
    Row<CRotate90X>(catalogue::kQuarterTurns),
};
static_assert(InTheOrderOf<IVideoProc>(kVideoEffects, kRows), "classes stand in the catalogue's order");

// Of pictures and sound together, for people name both in the same way.
constexpr bool ShortNamesDiffer() {
    std::array<std::string_view, kVideoEffects.size() + kAudioEffects.size()> names;
    const auto nameOf = [](const EffectInfo& effect) { return effect.shortName; };
    std::ranges::transform(kAudioEffects, std::ranges::transform(kVideoEffects, names.begin(), nameOf).out,
                           nameOf);
    std::ranges::sort(names);
    return !names.front().empty() && std::ranges::adjacent_find(names) == names.end();
}
static_assert(ShortNamesDiffer(), "every effect has a short name of its own");

} // namespace

extern "C" [[gnu::visibility("default")]] IVideoProc* CreateVideoProc(IAVManager* manager, const char* name) {
    return ConstructByName<IVideoProc>(kRows, manager, name);
}
