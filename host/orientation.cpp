#include "host/orientation.h"

#include <algorithm>
#include <cmath>
#include <utility>

extern "C" {
#include <libavutil/display.h>
}

namespace aveffect {

namespace {
constexpr size_t kMatrixBytes = 9 * sizeof(int32_t);
}

const int32_t* DisplayMatrix(const AVStream& stream) {
    size_t size = 0;
    const uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!data || size < kMatrixBytes) return nullptr;
    const auto* matrix = reinterpret_cast<const int32_t*>(data);
    const auto turn = TurnFilter(matrix);
    return turn && turn->empty() ? nullptr : matrix;
}

// The matrix maps (x, y) to (a x + c y, b x + d y); for quarter turns and flips two of a, b, c, d are 0.
std::optional<std::string> TurnFilter(const int32_t matrix[9]) {
    const int32_t a = matrix[0], b = matrix[1], c = matrix[3], d = matrix[4];
    if (a != 0 && d != 0 && b == 0 && c == 0) {
        if (a > 0 && d > 0) return "";
        if (a < 0 && d < 0) return "hflip,vflip";
        return a < 0 ? "hflip" : "vflip";
    }
    if (a == 0 && d == 0 && b != 0 && c != 0) {
        if (b > 0 && c < 0) return "transpose=clock";
        if (b < 0 && c > 0) return "transpose=cclock";
        return b > 0 ? "transpose=cclock_flip" : "transpose=clock_flip";
    }
    return std::nullopt;
}

mediabridge::AVFramePtr Upright::Apply(mediabridge::AVFramePtr picture, const AVStream& stream) {
    const int32_t* matrix = DisplayMatrix(stream);
    if (!matrix)
        if (const AVFrameSideData* own = av_frame_get_side_data(picture.get(), AV_FRAME_DATA_DISPLAYMATRIX))
            if (own->size >= kMatrixBytes) matrix = reinterpret_cast<const int32_t*>(own->data);
    const std::string words = matrix ? TurnFilter(matrix).value_or("") : "";
    if (words.empty()) return picture;
    if (!m_filter || m_words != words) m_filter.emplace(words, "turned upright");
    m_words = words;
    return m_filter->Apply(std::move(picture));
}

double PixelAspect(const AVFrame& picture) {
    constexpr double kOddest = 16; // beyond that the file is wrong rather than odd
    const AVRational pixel = picture.sample_aspect_ratio;
    if (pixel.num <= 0 || pixel.den <= 0) return 1;
    const double aspect = av_q2d(pixel);
    return aspect > kOddest || aspect < 1 / kOddest ? 1 : aspect;
}

int SquareWidth(const AVFrame& picture) {
    return std::max(1, static_cast<int>(std::lround(picture.width * PixelAspect(picture))));
}

} // namespace aveffect
