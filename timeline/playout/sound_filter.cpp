#include "timeline/playout/sound_filter.h"

#include <utility>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include "host/support/error.h"
#include "host/support/filter_ends.h"
#include "timeline/playout/made_sound.h"

namespace aveffect {

using mediabridge::AVFramePtr;

SoundFilter::SoundFilter(const std::string& words, std::string done, const SoundShape& shape)
    : m_done(std::move(done))
    , m_graph(avfilter_graph_alloc()) {
    Require(m_graph ? Build(words, shape) : AVERROR(ENOMEM));
}

void SoundFilter::Require(int code) const {
    if (code < 0) ThrowFailure(ErrorKind::Output, "the film's sound can't be " + m_done, code);
}

int SoundFilter::Build(const std::string& words, const SoundShape& shape) {
    m_graph->nb_threads = 1;
    const std::string rate = std::to_string(shape.rate), format = av_get_sample_fmt_name(kFilmSamples);
    const std::string in = "sample_fmt=" + format + ":sample_rate=" + rate +
                           ":channel_layout=" + shape.layout + ":time_base=1/" + rate;
    int code = avfilter_graph_create_filter(&m_in, avfilter_get_by_name("abuffer"), "in", in.c_str(), nullptr,
                                            m_graph.get());
    if (code >= 0)
        code = avfilter_graph_create_filter(&m_out, avfilter_get_by_name("abuffersink"), "out", nullptr,
                                            nullptr, m_graph.get());
    if (code < 0) return code;
    // Seen from the words, the input is an output of what comes before them, and the other way about.
    FilterEnds outputs, inputs;
    outputs.Add("in", m_in);
    inputs.Add("out", m_out);
    const std::string all = "[in]" + words + ",aformat=sample_fmts=" + format + ":sample_rates=" + rate +
                            ":channel_layouts=" + shape.layout + "[out]";
    code = avfilter_graph_parse_ptr(m_graph.get(), all.c_str(), &inputs.first, &outputs.first, nullptr);
    return code < 0 ? code : avfilter_graph_config(m_graph.get(), nullptr);
}

void SoundFilter::Give(AVFrame& sound) { Require(av_buffersrc_write_frame(m_in, &sound)); }

AVFramePtr SoundFilter::Take() {
    AVFramePtr sound(av_frame_alloc());
    if (!sound) Require(AVERROR(ENOMEM));
    const int code = av_buffersink_get_frame(m_out, sound.get());
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return nullptr;
    Require(code);
    return sound;
}

} // namespace aveffect
