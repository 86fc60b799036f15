#include "host/picture/orientation.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

extern "C" {
#include <libavutil/display.h>
#include <libswscale/swscale.h>
}

#include "host/picture/working_format.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {

namespace {

constexpr size_t kMatrixBytes = 9 * sizeof(int32_t);
constexpr char kOrientationTag[] = "Orientation";

/// Libavfilter's words for the orientations 1 to 8 that cameras write.
constexpr const char* kPhotoTurns[] = {"",
                                       "hflip",
                                       "hflip,vflip",
                                       "vflip",
                                       "transpose=cclock_flip",
                                       "transpose=clock",
                                       "transpose=clock_flip",
                                       "transpose=cclock"};

/// Not all decoders turn the tag into a matrix.
std::string OwnTurn(const AVFrame& picture) {
    const AVFrameSideData* own = av_frame_get_side_data(&picture, AV_FRAME_DATA_DISPLAYMATRIX);
    if (own && own->size >= kMatrixBytes)
        return TurnFilter(reinterpret_cast<const int32_t*>(own->data)).value_or("");
    const AVDictionaryEntry* tag = av_dict_get(picture.metadata, kOrientationTag, nullptr, 0);
    const int orientation = tag ? std::atoi(tag->value) : 1;
    return orientation >= 1 && orientation <= 8 ? kPhotoTurns[orientation - 1] : "";
}

} // namespace

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
    std::string words = matrix ? TurnFilter(matrix).value_or("") : OwnTurn(*picture);
    m_turned = !words.empty();
    if (!m_turned) return picture;
    // Chroma that is not halved both ways can't be turned as it is. The filters' way there and back keeps the
    // samples' range as long as nothing is said about it.
    const bool quarter = words.starts_with("transpose");
    const int format = picture->format;
    const AVColorRange range = picture->color_range;
    const AVPixelFormat plain = mediabridge::WithoutRange(static_cast<AVPixelFormat>(format));
    if (sws_isSupportedOutput(plain)) words += ",format=" + FormatName(plain);
    if (!m_filter || m_words != words) m_filter.emplace(words, "turned upright");
    m_words = words;
    picture->format = plain;
    picture->color_range = AVCOL_RANGE_UNSPECIFIED;
    picture = m_filter->Apply(std::move(picture));
    if (picture->format == plain) picture->format = format;
    picture->color_range = range;
    if (quarter) picture->interlaced_frame = 0; // its fields are columns now
    av_frame_remove_side_data(picture.get(), AV_FRAME_DATA_STEREO3D);
    av_dict_set(&picture->metadata, kOrientationTag, nullptr, 0);
    return picture;
}

double PixelAspect(const AVFrame& picture) {
    constexpr double kOddest = 16; // beyond that the file is wrong rather than odd
    const AVRational pixel = picture.sample_aspect_ratio;
    if (pixel.num <= 0 || pixel.den <= 0) return 1;
    const double aspect = av_q2d(pixel);
    return aspect > kOddest || aspect < 1 / kOddest ? 1 : aspect;
}

int WidthFor(const AVFrame& picture, AVRational pixelAspect) {
    const double width = picture.width * PixelAspect(picture) / av_q2d(pixelAspect);
    return std::max(1, static_cast<int>(std::lround(width)));
}

} // namespace aveffect
