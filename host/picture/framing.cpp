#include "host/picture/framing.h"

extern "C" {
#include <libavutil/parseutils.h>
}

#include "host/support/error.h"

namespace aveffect {

void CheckFraming(const Framing& framing) {
    uint8_t colour[4];
    if (framing.background && av_parse_color(colour, framing.background->c_str(), -1, nullptr) < 0)
        throw Error(ErrorKind::Usage, "--background takes a colour such as white or #204060, not '" +
                                          *framing.background + "'");
    if (framing.afterEffects && framing.Empty())
        throw Error(ErrorKind::Usage, "--size-after goes with --size or --crop");
}

void RequireFraming(const Framing& framing, bool twoViews) {
    CheckFraming(framing);
    if ((framing.fit || framing.background) && !framing.Resizes())
        throw Error(ErrorKind::Usage, "--fit and --background go with --size");
    if (twoViews && !framing.Empty() && !framing.afterEffects)
        throw Error(ErrorKind::Usage, "two views get a size behind their effects only: add --size-after");
}

} // namespace aveffect
