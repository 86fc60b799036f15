#include "AVEffect/CMkRollEffect.h"

#include <algorithm>

#include "AVEffect/support/elementary.h"
#include "aveffect/base_media.h"

namespace AVBased {

namespace {

size_t HalfBand(size_t width) { return width / 20; }
size_t Band(size_t width) { return width / 10 / 2 * 2; }

// A gain below 128 in 65536ths that gives every byte what the product in double precision, cut, gives: the
// least that reaches its whole numbers. Up to 255 times they lie so far apart that it passes none.
unsigned FractionOf(double gain) {
    const auto whole = static_cast<unsigned>(gain);
    unsigned fraction = 0;
    for (unsigned c = 1; c < 256; ++c) {
        const unsigned reached = static_cast<unsigned>(c * gain) - c * whole;
        fraction = std::max(fraction, (reached * 65536 + c - 1) / c);
    }
    return fraction;
}

constexpr uint32_t InBothHalves(unsigned number) { return number * 0x10001; }

} // namespace

// Of all columns of the band, which depend on its width alone.
kernels::ColumnGains CMkRollEffect::Gains(size_t width) {
    const size_t half = HalfBand(width), columns = 2 * half + 1;
    auto* const whole = reinterpret_cast<uint32_t*>(m_Gains.Require(2 * columns * sizeof(uint32_t)));
    uint32_t* const fraction = whole + columns;
    if (m_nGainsWidth != width)
        for (size_t k = 0; k <= half; ++k) {
            const double place = static_cast<double>(k) / static_cast<double>(Band(width));
            const double gain = 2 * Sine(place * 3.14159265) + 1.0;
            whole[k] = whole[2 * half - k] = InBothHalves(static_cast<unsigned>(gain));
            fraction[k] = fraction[2 * half - k] = InBothHalves(FractionOf(gain));
        }
    m_nGainsWidth = width;
    return {whole, fraction};
}

// The band of 2 * half + 1 pixels at the edge is mirrored, and brightened the more the nearer to its middle.
void CMkRollEffect::Roll(const Canvas& canvas, size_t shift) {
    const size_t half = HalfBand(canvas.width);
    if (half == 0) return;
    const kernels::ColumnGains gains = Gains(canvas.width);
    // At the end the band's last pixel lies beyond the row. Nor is the first one exchanged then.
    const size_t left = shift + 2 * half >= canvas.width ? 1 : 0;
    const size_t begin = (shift + left) * 4;
    const auto part = [&](const Plane8& plane) {
        return Plane32{plane.data + begin, 2 * half + 1 - 2 * left, plane.pitch, canvas.height};
    };
    Kernels<kernels::TransitionKernels>().mirrorRgba32(part(canvas.out), part(canvas.first),
                                                       {gains.whole + left, gains.fraction + left});
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

} // namespace AVBased
