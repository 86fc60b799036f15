#pragma once
/// Transitions between two pictures.
#include "aveffect/effect_info.h"

namespace AVBased {

inline constexpr const char* effectNameMkClock = "EffectNameMkClock";
inline constexpr const char* effectNameMkTurn = "EffectNameMkTurn";
inline constexpr const char* effectNameMkFade = "EffectNameMkFade";
inline constexpr const char* effectNameMkCloseDoor = "EffectNameMkCloseDoor";
inline constexpr const char* effectNameMkRoll = "EffectNameMkRoll";
inline constexpr const char* effectNameMkBrokenBox = "EffectNameMkBrokenBox";
inline constexpr const char* effectNameMkShutter = "EffectNameMkShutter";
inline constexpr const char* effectNameMkLeftRightMove = "EffectNameMkLeftRightMove";
// What all transitions share; no factory makes it.
inline constexpr const char* effectNameMkBaseTransition = "EffectNameMkBaseTransition";

namespace catalogue {

constexpr PropertyInfo kTransitionProperties[] = {
    {"EffectPropSourceDur", "0", kInt32, ValueKind::Number, "End", "Time at which the transition ends.", "ms",
     0, 2147483647},
    {"EffectPropVFPath1", "", kText, ValueKind::Path, "From",
     "File of the picture that goes, read once. The path may end in ?vstreamid=N, which selects a stream.",
     "", 0, 0},
    {"EffectPropVFPath2", "", kText, ValueKind::Path, "To", "File of the picture that comes, read once.", "",
     0, 0},
    {"EffectPropStartTime", "", kInt32, ValueKind::Number, "Begin", "Time at which the transition begins.",
     "ms", 0, 2147483647, kNoNeutral, PixelAxis::None, "0"},
};
constexpr std::string_view kClockSynonyms[] = {"clock-wipe", "radial-wipe", "wipe", "sweep"};
constexpr EffectInfo kClock = {
    .name = effectNameMkClock,
    .shortName = "clock",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Clock",
    .help = "A clock's hand sweeps the second picture in, from twelve to twelve.",
    .properties = kTransitionProperties,
    .synonyms = kClockSynonyms,
    .noPresets = kTimesAlone,
};

constexpr std::string_view kTurnOverSynonyms[] = {"flip", "card-flip", "rotate", "turn", "page-turn"};
constexpr EffectInfo kTurnOver = {
    .name = effectNameMkTurn,
    .shortName = "turn-over",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Turn over",
    .help = "The picture turns over about its middle row and shows the second one.",
    .properties = kTransitionProperties,
    .synonyms = kTurnOverSynonyms,
    .noPresets = kTimesAlone,
};

constexpr std::string_view kCrossFadeSynonyms[] = {"dissolve", "cross-dissolve", "fade", "blend",
                                                   "mix",      "cross-fade"};
constexpr EffectInfo kCrossFade = {
    .name = effectNameMkFade,
    .shortName = "crossfade",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Cross-fade",
    .help = "The second picture shows through the first more and more. Alpha stays the frame's.",
    .properties = kTransitionProperties,
    .synonyms = kCrossFadeSynonyms,
    .noPresets = kTimesAlone,
};

constexpr std::string_view kCloseDoorSynonyms[] = {"doors", "barn-doors", "wipe", "split", "curtain"};
constexpr EffectInfo kCloseDoor = {
    .name = effectNameMkCloseDoor,
    .shortName = "close-door",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Close door",
    .help = "The second picture closes in from both sides.",
    .properties = kTransitionProperties,
    .synonyms = kCloseDoorSynonyms,
    .noPresets = kTimesAlone,
};

constexpr std::string_view kRollSynonyms[] = {"page-roll", "page-curl", "curl", "peel", "page"};
constexpr EffectInfo kRoll = {
    .name = effectNameMkRoll,
    .shortName = "roll",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Roll",
    .help = "The first picture is rolled up from the left and leaves a bright roll at the right.",
    .properties = kTransitionProperties,
    .synonyms = kRollSynonyms,
    .noPresets = kTimesAlone,
};

constexpr std::string_view kBrokenBoxesSynonyms[] = {"checkerboard", "boxes", "squares", "blocks", "mosaic"};
constexpr EffectInfo kBrokenBoxes = {
    .name = effectNameMkBrokenBox,
    .shortName = "broken-boxes",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Broken boxes",
    .help = "Staggered boxes of the second picture shrink until it shows whole.",
    .properties = kTransitionProperties,
    .synonyms = kBrokenBoxesSynonyms,
    .noPresets = kTimesAlone,
};

constexpr std::string_view kShutterSynonyms[] = {"blinds", "venetian-blinds", "slats", "wipe",
                                                 "bars",   "stripes"};
constexpr EffectInfo kShutter = {
    .name = effectNameMkShutter,
    .shortName = "shutter",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Shutter",
    .help = "Upright slats of the second picture close over the first.",
    .properties = kTransitionProperties,
    .synonyms = kShutterSynonyms,
    .noPresets = kTimesAlone,
};

constexpr std::string_view kPushSynonyms[] = {"slide", "wipe", "move", "scroll", "swipe"};
constexpr EffectInfo kPush = {
    .name = effectNameMkLeftRightMove,
    .shortName = "push",
    .kind = EffectKind::Transition,
    .traits = kFollowsTime | kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Push",
    .help = "The second picture pushes the first one out to the left.",
    .properties = kTransitionProperties,
    .synonyms = kPushSynonyms,
    .noPresets = kTimesAlone,
};

} // namespace catalogue

} // namespace AVBased
