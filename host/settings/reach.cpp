#include "host/settings/reach.h"

#include <cstddef>

namespace aveffect {

using AVBased::PixelAxis;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

constexpr PropertyInfo kProperties[] = {
    {reach::kFrom, "0", AVBased::kText, ValueKind::Text, "From", "When the effect begins.", "", 0, 0},
    {reach::kTo, "", AVBased::kText, ValueKind::Text, "To", "When it ends.", "", 0, 0},
    {reach::kFadeIn, "0", AVBased::kText, ValueKind::Text, "Fade in",
     "How long its strength rises after its begin.", "", 0, 0},
    {reach::kFadeOut, "0", AVBased::kText, ValueKind::Text, "Fade out",
     "How long its strength falls before its end.", "", 0, 0},
    {reach::kMix, "100", AVBased::kDouble, ValueKind::Number, "Mix",
     "How much of the effect is seen or heard, the rest being what was there before it.", "%", 0, 100},
    {reach::kMask, "", AVBased::kText, ValueKind::Path, "Mask",
     "Picture or clip that says where it works: where it is white, or opaque where it has transparency.", "",
     0, 0},
    {reach::kMaskInvert, "0", AVBased::kInt32, ValueKind::Switch, "Inverted mask",
     "It works outside of the mask or area.", "", 0, 1},
    {reach::kMaskFeather, "0", AVBased::kDouble, ValueKind::Number, "Feather",
     "How soft the mask's or the area's edge is.", "px", 0, 100000, AVBased::kNoNeutral, PixelAxis::Smaller},
    {reach::kArea, "", AVBased::kText, ValueKind::Text, "Area",
     "Where it works: rectangle or ellipse, and left, top, width and height in percent of the picture.", "",
     0, 0},
};
constexpr size_t kOfSound = 5; // the first ones

} // namespace

std::span<const PropertyInfo> ReachProperties(bool sound) {
    const std::span<const PropertyInfo> all(kProperties);
    return sound ? all.first(kOfSound) : all;
}

} // namespace aveffect
