#include "host/jobs/film_framing.h"

#include <algorithm>
#include <cmath>

#include "host/picture/framer.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

constexpr double kLongSide = 1920, kShortSide = 1080;

std::string SizeText(const PictureSize& size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

// Even sides, as most encoders want them.
PictureSize Limited(const PictureSize& own) {
    const auto [shorter, longer] = std::minmax(own.width, own.height);
    const double scale = std::min(kLongSide / longer, kShortSide / shorter);
    if (scale >= 1) return own;
    const auto scaled = [scale](int side) {
        return std::max(2, 2 * static_cast<int>(std::lround(side * scale / 2)));
    };
    return {scaled(own.width), scaled(own.height)};
}

} // namespace

void CheckFilmFraming(const Framing& framing) {
    CheckFraming(framing);
    const bool sayHow = framing.fit || framing.background;
    if (sayHow && framing.afterEffects && !framing.Resizes())
        throw Error(ErrorKind::Usage, "--fit and --background behind the effects go with --size");
}

Framing FilmFraming(const Framing& asked, const FilmModel& model, Reporter& reporter) {
    if (asked.afterEffects) return {};
    const PictureSize own =
        Framer(asked).SizeFor({model.shape.width, model.shape.height}, av_q2d(model.shape.pixelAspect));
    const PictureSize size = model.still && !asked.Resizes() ? Limited(own) : own;
    Framing each = asked;
    if (size != own)
        reporter.Remark("the film has " + SizeText(size) + " pixels, fewer than " + model.name + " with " +
                        SizeText(own) + "; --size 100% keeps all");
    if (size != own || asked.Resizes() || asked.fit || asked.background) {
        each.width = Extent{static_cast<double>(size.width)};
        each.height = Extent{static_cast<double>(size.height)};
    }
    return each;
}

Framing FramingBehind(const Framing& asked) { return asked.afterEffects ? asked : Framing{}; }

} // namespace aveffect
