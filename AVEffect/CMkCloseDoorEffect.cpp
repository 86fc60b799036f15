#include "AVEffect/CMkCloseDoorEffect.h"

#include <algorithm>

namespace AVBased {

bool CMkCloseDoorEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                        int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) {
        const int last = std::min(time, EndTime());
        const double progress = MkEq(last, EndTime()) ? 1.0 : Progress(time);
        const auto width = static_cast<double>(canvas.width);
        const auto strip = static_cast<size_t>(std::clamp(width - width * progress, 0.0, width));
        const size_t begin = (canvas.width - strip) / 2 * 4;
        const Layers layers(canvas, canvas.second, canvas.first);
        const Run run = {begin, begin + strip * 4, begin};
        layers.Draw(0, canvas.height, {&run, 1});
        layers.Rest(canvas.height);
    });
}

} // namespace AVBased
