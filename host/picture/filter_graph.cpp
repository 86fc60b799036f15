#include "host/picture/filter_graph.h"

#include <algorithm>
#include <cstdio>
#include <utility>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include "host/support/error.h"
#include "host/support/filter_ends.h"

namespace aveffect {

using mediabridge::AVFramePtr;

FilterGraph::FilterGraph(const std::string& words, std::string done,
                         const std::vector<const AVFrame*>& pictures)
    : m_done(std::move(done))
    , m_graph(avfilter_graph_alloc()) {
    int code = m_graph ? 0 : AVERROR(ENOMEM);
    for (const AVFrame* picture : pictures)
        if (code >= 0) code = AddInput(*picture);
    if (code >= 0)
        code = avfilter_graph_create_filter(&m_out, avfilter_get_by_name("buffersink"), "out", nullptr,
                                            nullptr, m_graph.get());
    if (code >= 0) code = Connect(words);
    if (code >= 0) code = avfilter_graph_config(m_graph.get(), nullptr);
    if (code < 0) ThrowFailure(ErrorKind::Output, "the pictures can't be " + m_done, code);
}

int FilterGraph::AddInput(const AVFrame& picture) {
    char shape[128];
    std::snprintf(shape, sizeof shape, "video_size=%dx%d:pix_fmt=%d:time_base=1/1:pixel_aspect=%d/%d",
                  picture.width, picture.height, picture.format, picture.sample_aspect_ratio.num,
                  std::max(1, picture.sample_aspect_ratio.den));
    const std::string name = "in" + std::to_string(m_in.size());
    return avfilter_graph_create_filter(&m_in.emplace_back(), avfilter_get_by_name("buffer"), name.c_str(),
                                        shape, nullptr, m_graph.get());
}

// Seen from the words, the inputs are outputs of what comes before them, and the other way about.
int FilterGraph::Connect(const std::string& words) {
    FilterEnds outputs, inputs;
    inputs.Add("out", m_out);
    for (AVFilterContext* in : m_in) outputs.Add(in->name, in);
    return avfilter_graph_parse_ptr(m_graph.get(), words.c_str(), &inputs.first, &outputs.first, nullptr);
}

AVFramePtr FilterGraph::Apply(const std::vector<AVFrame*>& pictures) {
    AVFramePtr made(av_frame_alloc());
    int code = made ? 0 : AVERROR(ENOMEM);
    for (size_t i = 0; i < pictures.size() && code >= 0; ++i)
        code = av_buffersrc_add_frame(m_in[i], pictures[i]);
    if (code >= 0) code = av_buffersink_get_frame(m_out, made.get());
    if (code < 0) ThrowFailure(ErrorKind::Output, "a picture can't be " + m_done, code);
    return made;
}

} // namespace aveffect
