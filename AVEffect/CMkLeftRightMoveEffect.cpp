#include "AVEffect/CMkLeftRightMoveEffect.h"

#include <algorithm>

#include "aveffect/base_media.h"

namespace AVBased {

namespace {

// Pixels of the second picture.
size_t ShiftAt(size_t width, double progress) {
    const double pixels = std::clamp(static_cast<double>(width) * progress, 0.0, static_cast<double>(width));
    const auto shift = static_cast<size_t>(pixels);
    return width - shift < 21 ? width : shift; // the last 20 pixels are never shown as a sliver
}

} // namespace

bool CMkLeftRightMoveEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first,
                                            IRawVideoFrame* second, int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) {
        const size_t shift = ShiftAt(canvas.width, Progress(time)) * 4, rest = canvas.RowBytes() - shift;
        for (size_t y = 0; y < canvas.height; ++y) {
            uint8_t* const row = canvas.out.Row(y);
            if (rest) AVBasedMemCopy(row, canvas.first.Row(y) + shift, rest);
            if (shift) AVBasedMemCopy(row + rest, canvas.second.Row(y), shift);
        }
    });
}

} // namespace AVBased
