#include "AVEffect/CMkBrokenBoxEffect.h"

#include <algorithm>

#include "AVEffect/support/elementary.h"

namespace AVBased {

bool CMkBrokenBoxEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                        int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) {
        const double shrunk = Cosine(Progress(time) * 1.570796325);
        const auto side = [&](size_t size) {
            return static_cast<ptrdiff_t>(static_cast<double>(size >> 2) * shrunk);
        };
        const ptrdiff_t boxWidth = side(canvas.width), boxHeight = side(canvas.height);
        if (boxWidth < 10 || boxHeight <= 9) {
            CopyPicture(canvas.out, canvas.second);
            return;
        }
        const Layers layers(canvas, canvas.first, canvas.second);
        const auto rows = static_cast<size_t>(boxHeight), bytes = static_cast<size_t>(boxWidth) * 4;
        // Every other row of boxes is one box to the right.
        bool staggered = false;
        for (size_t top = 0; top < canvas.height; top += 2 * rows) {
            const size_t below = std::min(top + rows, canvas.height);
            layers.DrawStripes(top, below, staggered ? bytes : 0, bytes);
            layers.Plain(below, std::min(below + rows, canvas.height));
            staggered = !staggered;
        }
        layers.Rest(canvas.height);
    });
}

} // namespace AVBased
