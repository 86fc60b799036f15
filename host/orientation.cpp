#include "host/orientation.h"

#include <cmath>
#include <cstdio>
#include <utility>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/display.h>
}

#include "host/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

const int32_t* DisplayMatrix(const AVStream& stream) {
    size_t size = 0;
    const uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!data || size < 9 * sizeof(int32_t)) return nullptr;
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

void Turner::Build(const AVFrame& picture) {
    m_graph.reset(avfilter_graph_alloc());
    char shape[128];
    std::snprintf(shape, sizeof shape, "video_size=%dx%d:pix_fmt=%d:time_base=1/1:pixel_aspect=%d/%d",
                  picture.width, picture.height, picture.format, picture.sample_aspect_ratio.num,
                  std::max(1, picture.sample_aspect_ratio.den));
    int code = m_graph ? 0 : AVERROR(ENOMEM);
    if (code >= 0)
        code = avfilter_graph_create_filter(&m_in, avfilter_get_by_name("buffer"), "in", shape, nullptr,
                                            m_graph.get());
    if (code >= 0)
        code = avfilter_graph_create_filter(&m_out, avfilter_get_by_name("buffersink"), "out", nullptr,
                                            nullptr, m_graph.get());
    // The names are those of the filter text's open ends: its input is fed by "in", its output goes to "out".
    AVFilterInOut* outputs = avfilter_inout_alloc();
    AVFilterInOut* inputs = avfilter_inout_alloc();
    if (!outputs || !inputs) code = AVERROR(ENOMEM);
    if (code >= 0) {
        *outputs = {av_strdup("in"), m_in, 0, nullptr};
        *inputs = {av_strdup("out"), m_out, 0, nullptr};
        code = avfilter_graph_parse_ptr(m_graph.get(), m_filter.c_str(), &inputs, &outputs, nullptr);
    }
    avfilter_inout_free(&outputs);
    avfilter_inout_free(&inputs);
    if (code >= 0) code = avfilter_graph_config(m_graph.get(), nullptr);
    if (code < 0) throw Error(ErrorKind::Output, "the pictures can't be turned upright: " + AvText(code));
    m_width = picture.width;
    m_height = picture.height;
    m_format = picture.format;
}

AVFramePtr Turner::Turn(AVFramePtr picture) {
    if (picture->width != m_width || picture->height != m_height || picture->format != m_format)
        Build(*picture);
    const int64_t time = picture->pts;
    const int64_t duration = picture->pkt_duration;
    const AVColorRange range = picture->color_range;
    AVFramePtr turned(av_frame_alloc());
    int code = turned ? av_buffersrc_add_frame(m_in, picture.get()) : AVERROR(ENOMEM);
    if (code >= 0) code = av_buffersink_get_frame(m_out, turned.get());
    if (code < 0) throw Error(ErrorKind::Output, "a picture can't be turned upright: " + AvText(code));
    turned->pts = time;
    turned->pkt_duration = duration;
    if (turned->color_range == AVCOL_RANGE_UNSPECIFIED) turned->color_range = range;
    av_frame_remove_side_data(turned.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    return turned;
}

} // namespace aveffect
