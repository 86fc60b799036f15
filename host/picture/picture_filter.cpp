#include "host/picture/picture_filter.h"

#include <algorithm>
#include <cstdio>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

void PictureFilter::Build(const AVFrame& picture) {
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
    if (code < 0) throw Error(ErrorKind::Output, "the pictures can't be " + m_done + ": " + AvText(code));
    m_width = picture.width;
    m_height = picture.height;
    m_format = picture.format;
}

AVFramePtr PictureFilter::Apply(AVFramePtr picture) {
    if (picture->width != m_width || picture->height != m_height || picture->format != m_format)
        Build(*picture);
    const int64_t time = picture->pts;
    const int64_t duration = picture->pkt_duration;
    const AVColorRange range = picture->color_range;
    AVFramePtr changed(av_frame_alloc());
    int code = changed ? av_buffersrc_add_frame(m_in, picture.get()) : AVERROR(ENOMEM);
    if (code >= 0) code = av_buffersink_get_frame(m_out, changed.get());
    if (code < 0) throw Error(ErrorKind::Output, "a picture can't be " + m_done + ": " + AvText(code));
    changed->pts = time;
    changed->pkt_duration = duration;
    if (changed->color_range == AVCOL_RANGE_UNSPECIFIED) changed->color_range = range;
    av_frame_remove_side_data(changed.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    return changed;
}

} // namespace aveffect
