#include "AVEffect/CMkShutterEffect.h"

#include <algorithm>
#include <array>

namespace AVBased {

namespace {

// Runs of a row, from the left. A twentieth of a row, cut to whole pixels, is at least a 39th, so there are
// no more than 20 slats and a solid end.
struct Slats {
    std::array<Run, 24> runs;
    size_t count = 0;

    void Add(Run run) { runs[count++] = run; }
};

// The slats at first come from the end of the second picture's row, as its pitch has it, and so not from
// where they stand; the last one comes from the row below.
Slats OpenSlats(const Canvas& canvas, size_t slat, size_t shown) {
    const size_t pitch = canvas.second.pitch;
    const size_t limit = pitch == canvas.out.pitch ? pitch : canvas.RowBytes();
    Slats slats;
    for (size_t x = 0; x <= shown; x += 2 * slat) {
        const size_t from = pitch - (shown - x) * 4;
        const size_t bytes = (std::min(x + slat, canvas.width) - x) * 4;
        const size_t there = from >= pitch ? bytes : std::max(from, limit) - from;
        slats.Add({x * 4, x * 4 + std::min(bytes, there), from});
    }
    return slats;
}

// From the half on they stand where they belong, and the row fills from the right.
Slats ClosedSlats(const Canvas& canvas, size_t slat, size_t solid) {
    const size_t begin = canvas.width - solid, next = begin + 1;
    Slats slats;
    for (size_t x = next % (2 * slat); x + 2 * slat <= next; x += 2 * slat)
        slats.Add({x * 4, (x + slat) * 4, x * 4});
    slats.Add({begin * 4, canvas.RowBytes(), begin * 4});
    return slats;
}

} // namespace

void CMkShutterEffect::Draw(const Canvas& canvas, int time) const {
    const Layers layers(canvas, canvas.first, canvas.second);
    const auto draw = [&](const Slats& slats, size_t beginRow, size_t endRow) {
        layers.Draw(beginRow, endRow, {slats.runs.data(), slats.count});
    };
    const size_t width = canvas.width, height = canvas.height, slat = width / 20;
    layers.Rest(height);
    // Pictures too narrow for slats change half way.
    if (time >= EndTime() || slat == 0) {
        const bool second = time >= EndTime() || Progress(time) >= 0.5;
        const Run whole = {0, second ? canvas.RowBytes() : 0, 0};
        layers.Draw(0, height, {&whole, 1});
        return;
    }
    const double twice = 2.0 * static_cast<double>(width);
    const auto place = static_cast<size_t>(std::clamp(Since(time) * (twice / Since(EndTime())), 0.0, twice));
    const size_t whole = place - place % (2 * slat);
    if (whole >= width) {
        draw(ClosedSlats(canvas, slat, whole - width), 0, height);
        return;
    }
    Slats slats = OpenSlats(canvas, slat, whole);
    draw(slats, 0, height - 1);
    if (canvas.second.rows == height) --slats.count; // there is no row below
    draw(slats, height - 1, height);
}

bool CMkShutterEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                      int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) { Draw(canvas, time); });
}

} // namespace AVBased
