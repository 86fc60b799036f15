#include "AVEffect/MkClockEffect.h"

#include <algorithm>

#include "AVEffect/support/elementary.h"

namespace AVBased {

namespace {

constexpr double kHalf = 3.14159265;
constexpr double kQuarter = 1.570796325, kThreeQuarters = 4.712388975, kWhole = 6.2831853;

// Halves of rows are halves of their pitch.
Run RightHalf(const Canvas& canvas, const Layers& layers) {
    return layers.Within(canvas.out.pitch / 2, canvas.second.pitch / 2, canvas.out.pitch / 2);
}

} // namespace

void CMkClockEffect::DrawFirstQuarter(const Canvas& canvas, const Layers& layers, double angle) {
    const size_t middle = canvas.height / 2, begin = canvas.width * 2;
    const double slope = Tangent(angle);
    const auto most = static_cast<double>(canvas.out.pitch >> 1);
    for (size_t y = 0; y < middle; ++y) {
        // Bytes are counted, not pixels: the last one can be drawn in part.
        const double bytes = 4.0 * static_cast<double>(middle - y) * slope;
        const Run run = layers.Within(begin, begin, static_cast<size_t>(std::clamp(bytes, 0.0, most)));
        layers.Draw(y, run);
    }
    layers.Rest(middle);
}

void CMkClockEffect::DrawMiddleQuarters(const Canvas& canvas, const Layers& layers, double angle) {
    const size_t middle = canvas.height / 2, height = canvas.height;
    const Run rightHalf = RightHalf(canvas, layers);
    const double past = angle - kQuarter;
    const bool straightDown = MkEq(angle, kHalf), swept = !MkEq(past, 0) && !MkEq(past, kQuarter);
    layers.Draw(0, straightDown ? height : middle, {&rightHalf, 1});
    const size_t centre = canvas.width / 2;
    const double slope = Tangent(past);
    const auto most = static_cast<double>(centre);
    for (size_t y = middle; y < height && swept && !straightDown; ++y) {
        // The hand's column, counted from the centre.
        const double column = std::clamp(static_cast<double>(y - middle) / slope, -most, most);
        const size_t begin = 4 * (centre + static_cast<size_t>(static_cast<ptrdiff_t>(column)));
        const Run run = layers.Within(begin, begin, 8 * centre - begin);
        layers.Draw(y, run);
    }
    layers.Rest(swept || straightDown ? height : middle);
}

void CMkClockEffect::DrawLastQuarter(const Canvas& canvas, const Layers& layers, double angle) {
    const size_t middle = canvas.height / 2, height = canvas.height;
    const double past = angle - kThreeQuarters;
    if (MkEq(past, kQuarter)) {
        CopyPicture(canvas.out, canvas.second);
        return;
    }
    const bool swept = !MkEq(past, 0);
    const double slope = Tangent(past);
    const auto half = static_cast<double>(canvas.width >> 1);
    Run runs[2] = {{}, RightHalf(canvas, layers)};
    for (size_t y = 0; y < middle; ++y) {
        const double pixels = half - static_cast<double>(middle - y) / slope;
        if (swept) runs[0] = layers.Within(0, 0, 4 * static_cast<size_t>(std::max(0.0, pixels)));
        layers.Draw(y, y + 1, runs);
    }
    const Run whole = layers.Within(0, 0, canvas.out.pitch);
    layers.Draw(middle, height, {&whole, 1});
    layers.Rest(height);
}

bool CMkClockEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                    int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) {
        const double angle = Progress(time) * kHalf * 2;
        const Layers layers(canvas, canvas.first, canvas.second);
        if (!(angle >= 0 && angle < kWhole)) return LeaveFrame();
        if (angle < kQuarter)
            DrawFirstQuarter(canvas, layers, angle);
        else if (angle < kThreeQuarters)
            DrawMiddleQuarters(canvas, layers, angle);
        else
            DrawLastQuarter(canvas, layers, angle);
    });
}

} // namespace AVBased
