#include "host/picture/picture_filter.h"

namespace aveffect {

using mediabridge::AVFramePtr;

AVFramePtr PictureFilter::Apply(AVFramePtr picture) {
    if (!m_graph || picture->width != m_width || picture->height != m_height || picture->format != m_format) {
        m_graph.emplace("[in0]" + m_filter + "[out]", m_done, std::vector<const AVFrame*>{picture.get()});
        m_width = picture->width;
        m_height = picture->height;
        m_format = picture->format;
    }
    const int64_t time = picture->pts;
    const int64_t duration = picture->pkt_duration;
    const AVColorRange range = picture->color_range;
    AVFramePtr changed = m_graph->Apply({picture.get()});
    changed->pts = time;
    changed->pkt_duration = duration;
    if (changed->color_range == AVCOL_RANGE_UNSPECIFIED) changed->color_range = range;
    av_frame_remove_side_data(changed.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    return changed;
}

} // namespace aveffect
