#include "AVEffect/CMkTurnEffect.h"

#include <cstring>

#include "AVEffect/support/elementary.h"
#include "aveffect/base_media.h"

namespace AVBased {

namespace {

constexpr double kHalfTurn = 3.14159265, kQuarterTurn = 1.570796325;

} // namespace

bool CMkTurnEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                   int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) {
        double angle = Progress(time) * kHalfTurn;
        const bool turned = !(angle <= kQuarterTurn);
        if (turned) angle = kQuarterTurn - (angle - kQuarterTurn);
        const Plane8& shown = turned ? canvas.second : canvas.first;
        const size_t height = canvas.height, half = height / 2;
        const auto top =
            half - static_cast<size_t>(static_cast<ptrdiff_t>(Cosine(angle) * static_cast<double>(half)));
        const size_t shownRows = top < height - top ? height - 2 * top : 0;
        const size_t bytes = shown.pitch == canvas.out.pitch ? shown.pitch : canvas.RowBytes();
        for (size_t y = 0; y < canvas.out.rows; ++y) {
            uint8_t* const row = canvas.out.Row(y);
            const bool black = y < top || y - top >= shownRows;
            if (!black) AVBasedMemCopy(row, shown.Row((y - top) * height / shownRows), bytes);
            const size_t drawn = black ? 0 : bytes;
            std::memset(row + drawn, 0, canvas.out.pitch - drawn);
        }
    });
}

} // namespace AVBased
