#include "AVEffect/CMkRollEffect.h"

#include <algorithm>
#include <cmath>

#include "AVEffect/factory.h"
#include "AVEffect/kernels/transition.h"
#include "aveffect/base_media.h"

namespace AVBased {

namespace {

size_t HalfBand(size_t width) { return width / 20; }
size_t Band(size_t width) { return width / 10 / 2 * 2; }

} // namespace

// The band of 2 * half + 1 pixels at the edge is mirrored, and brightened the more the nearer to its middle.
void CMkRollEffect::Roll(const Canvas& canvas, size_t shift) {
    const size_t half = HalfBand(canvas.width);
    if (half == 0) return;
    const auto band = static_cast<double>(Band(canvas.width));
    auto* gains = reinterpret_cast<double*>(m_Gains.Require((2 * half + 1) * sizeof(double)));
    for (size_t k = 0; k <= half; ++k)
        gains[k] = gains[2 * half - k] = 2 * std::sin(static_cast<double>(k) / band * 3.14159265) + 1.0;
    // At the end the band's last pixel lies beyond the row. Nor is the first one exchanged then.
    const size_t left = shift + 2 * half >= canvas.width ? 1 : 0;
    const size_t begin = (shift + left) * 4;
    const auto part = [&](const Plane8& plane) {
        return Plane32{plane.data + begin, 2 * half + 1 - 2 * left, plane.pitch, canvas.height};
    };
    kernels::SelectTransitionKernels(AVBasedGetCPUFeatures())
        .mirrorRgba32(part(canvas.out), part(canvas.first), gains + left);
}

bool CMkRollEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                   int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) {
        // The wipe ends a band short of the right edge.
        const auto way = static_cast<double>(canvas.width - Band(canvas.width));
        const double done = IsCut() ? way : Since(std::min(time, EndTime())) * way / Since(EndTime());
        const auto shift = static_cast<size_t>(std::clamp(done, 0.0, way));
        for (size_t y = 0; y < canvas.height; ++y) {
            uint8_t* const row = canvas.out.Row(y);
            if (shift) AVBasedMemCopy(row, canvas.second.Row(y), shift * 4);
            if (shift < canvas.width)
                AVBasedMemCopy(row + shift * 4, canvas.first.Row(y) + shift * 4, (canvas.width - shift) * 4);
        }
        Roll(canvas, shift);
    });
}

AVEFFECT_CONSTRUCT_TRANSITION(CMkRollEffect)

} // namespace AVBased
