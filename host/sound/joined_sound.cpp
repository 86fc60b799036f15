#include "host/sound/joined_sound.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include "host/settings/value_text.h"
#include "host/support/error.h"
#include "host/support/filter_ends.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

void Require(int code) {
    if (code < 0) ThrowFailure(ErrorKind::Output, "the sound can't be joined", code);
}

std::string Label(const char* kind, size_t index) {
    return "[" + std::string(kind) + std::to_string(index) + "]";
}

} // namespace

JoinedSound::JoinedSound(std::vector<SoundPart> parts, const std::optional<Music>& music,
                         const SoundForm& form, const std::atomic<bool>& cancel)
    : m_parts(std::move(parts))
    , m_shape(form.shape)
    , m_cancel(cancel)
    , m_graph(avfilter_graph_alloc())
    , m_inputs(m_parts.size() + 1) {
    if (!m_graph) Require(AVERROR(ENOMEM));
    // One thread does; more would be started for every filter of every clip.
    m_graph->nb_threads = 1;
    if (music) m_music.emplace(music->file, m_shape, cancel);
    Build(form, music);
}

// A part: gaps filled, cut or filled up to its length. Each is faded over into the one before.
std::string JoinedSound::Describe(const SoundForm& form, const std::optional<Music>& music) const {
    const std::string rate = std::to_string(m_shape.rate);
    std::string text;
    for (size_t index = 0; index < m_parts.size(); ++index) {
        const std::string samples = std::to_string(m_parts[index].samples);
        if (m_inputs[index])
            text += Label("in", index) + "aresample=async=1:first_pts=0,apad=whole_len=" + samples;
        else
            text += "anullsrc=sample_rate=" + rate + ":channel_layout=" + m_shape.layout;
        text += ",atrim=end_sample=" + samples +
                ",aformat=sample_fmts=fltp:channel_layouts=" + m_shape.layout + Label("part", index) + ";";
    }
    std::string joined = Label("part", 0);
    for (size_t index = 1; index < m_parts.size(); ++index) {
        const int64_t across = m_parts[index - 1].samplesAcross;
        const std::string next = Label("joined", index);
        text.append(joined).append(Label("part", index));
        text.append(across > 0 ? "acrossfade=curve1=tri:curve2=tri:nb_samples=" + std::to_string(across)
                               : "concat=v=0:a=1");
        text.append(next).append(";");
        joined = next;
    }
    if (music) text += DescribeMusic(*music, std::exchange(joined, "[mixed]"));
    return text + joined + "aformat=sample_fmts=" + av_get_sample_fmt_name(form.format) +
           ":sample_rates=" + rate + ":channel_layouts=" + m_shape.layout + "[out]";
}

int64_t JoinedSound::Samples() const {
    int64_t samples = 0;
    for (const SoundPart& part : m_parts) samples += part.samples - part.samplesAcross;
    return samples;
}

// As long as the parts together, added to them as it is; only where that grows too loud it is turned down for
// a moment, without which the encoder would clip it.
std::string JoinedSound::DescribeMusic(const Music& music, const std::string& parts) const {
    const int64_t samples = Samples();
    const auto fade = [&](const char* kind, int64_t milliseconds, bool atEnd) {
        const int64_t length = SamplesBy({milliseconds, kMilliseconds}, m_shape.rate);
        if (length == 0) return std::string();
        return std::string(",afade=t=") + kind + ":ss=" + std::to_string(atEnd ? samples - length : 0) +
               ":ns=" + std::to_string(length);
    };
    return Label("in", m_parts.size()) + "atrim=end_sample=" + std::to_string(samples) +
           ",volume=" + NumberText(music.volume) + fade("in", music.fadeInMs, false) +
           fade("out", music.fadeOutMs, true) + "[music];" + parts +
           "[music]amix=duration=first:normalize=0,alimiter=level=0:latency=1[mixed];";
}

int JoinedSound::AddInput(size_t index, FilterEnds& ends) {
    const std::string shape = "sample_fmt=fltp:sample_rate=" + std::to_string(m_shape.rate) +
                              ":channel_layout=" + m_shape.layout + ":time_base=1/" +
                              std::to_string(m_shape.rate);
    const std::string name = "in" + std::to_string(index);
    const int code = avfilter_graph_create_filter(&m_inputs[index], avfilter_get_by_name("abuffer"),
                                                  name.c_str(), shape.c_str(), nullptr, m_graph.get());
    ends.Add(name, m_inputs[index]);
    return code;
}

void JoinedSound::Build(const SoundForm& form, const std::optional<Music>& music) {
    FilterEnds outputs, inputs; // the open ends of the text are fed by these
    int code = 0;
    for (size_t index = 0; index < m_inputs.size() && code >= 0; ++index)
        if (index < m_parts.size() ? m_parts[index].clip->sound.has_value() : music.has_value())
            code = AddInput(index, outputs);
    if (code >= 0)
        code = avfilter_graph_create_filter(&m_output, avfilter_get_by_name("abuffersink"), "out", nullptr,
                                            nullptr, m_graph.get());
    if (code >= 0) {
        inputs.Add("out", m_output);
        code = avfilter_graph_parse_ptr(m_graph.get(), Describe(form, music).c_str(), &inputs.first,
                                        &outputs.first, nullptr);
    }
    if (code >= 0) code = avfilter_graph_config(m_graph.get(), nullptr);
    Require(code);
    if (form.frameSize > 0) av_buffersink_set_frame_size(m_output, static_cast<unsigned>(form.frameSize));
}

AVFramePtr JoinedSound::Next(const Moment& until) {
    if (m_next >= m_end.value_or(SamplesBy(until, m_shape.rate))) return nullptr;
    AVFramePtr sound = Read();
    if (!sound) return nullptr;
    if (m_end) sound->nb_samples = static_cast<int>(std::min<int64_t>(sound->nb_samples, *m_end - m_next));
    sound->pts = m_next;
    m_next += sound->nb_samples;
    return sound;
}

void JoinedSound::EndAt(const std::optional<Moment>& end) {
    m_end = end ? SamplesBy(*end, m_shape.rate) : std::numeric_limits<int64_t>::max();
}

// What the graph gives out next; null at its end.
AVFramePtr JoinedSound::Read() {
    AVFramePtr sound(av_frame_alloc());
    if (!sound) Require(AVERROR(ENOMEM));
    for (;;) {
        const int code = av_buffersink_get_frame(m_output, sound.get());
        if (code == AVERROR_EOF) return nullptr;
        if (code >= 0) return sound;
        if (code != AVERROR(EAGAIN)) Require(code);
        Feed();
    }
}

DamageReport JoinedSound::Damage() const {
    DamageReport all = m_damage;
    if (m_reader) all.Add(m_reader->Damage());
    if (m_music) all.Add(m_music->Damage());
    return all;
}

// The input that waits for samples: parts come to an end in order, so it is never one before the part that is
// read.
size_t JoinedSound::WaitingInput() const {
    const auto first = m_inputs.begin() + static_cast<ptrdiff_t>(m_reading);
    auto found = std::find_if(first, m_inputs.end(), [](AVFilterContext* input) {
        return input && av_buffersrc_get_nb_failed_requests(input) > 0;
    });
    if (found == m_inputs.end()) found = std::find_if(first, m_inputs.end(), std::identity());
    if (found == m_inputs.end()) Require(AVERROR_BUG);
    return static_cast<size_t>(found - m_inputs.begin());
}

// Null at the input's end.
void JoinedSound::Give(size_t input, AVFrame* sound) {
    const bool last = !sound;
    const int code = av_buffersrc_add_frame(m_inputs[input], sound);
    if (code != AVERROR_EOF) Require(code);
    if (last || code == AVERROR_EOF) m_inputs[input] = nullptr; // cut at its length, or read to its end
}

void JoinedSound::Feed() {
    const size_t waiting = WaitingInput();
    if (waiting == m_parts.size()) return Give(waiting, m_music->Next().get());
    if (!m_reader || waiting != m_reading) {
        const ClipScan& clip = *m_parts[waiting].clip;
        if (m_reader) m_damage.Add(m_reader->Damage());
        m_reader = std::make_unique<SoundReader>(SoundRequest{clip.request, clip.start, m_shape}, m_cancel);
        m_reading = waiting;
    }
    Give(waiting, m_reader->Next().get());
}

} // namespace aveffect
