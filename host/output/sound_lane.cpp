#include "host/output/sound_lane.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "host/output/sound_formats.h"
#include "host/output/stream_copy.h"
#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

constexpr char kSoundPath[] = "audio_replace_path";

SoundShape ShapeOf(const AVStream& input) {
    return {input.codecpar->sample_rate, LayoutText(input.codecpar->ch_layout)};
}

/// Of the file whose sound the chain's last effect to bring some brings.
SoundShape BroughtShape(const SoundJob& job) {
    std::string url;
    for (const EffectSpec& effect : job.effects)
        for (const PropertySetting& setting : effect.properties)
            if (setting.name == kSoundPath) url = setting.value;
    ReadInterrupt interrupt{&job.cancel, std::nullopt};
    const SourceRequest request = ParseSourceUrl(url);
    const InputContextPtr input = OpenInput(request.path, interrupt);
    const AVStream* const sound = FindSound(*input, request, nullptr);
    if (!sound) throw Error(ErrorKind::Input, url + " has no sound any more");
    return ShapeOf(*sound);
}

SoundShape LaneShape(const SoundJob& job, const AVStream* input) {
    SoundShape shape = input ? ShapeOf(*input) : BroughtShape(job);
    if (shape.rate > 0) return shape;
    throw Error(ErrorKind::Input, "the sound tells no sample rate");
}

std::string CodecName(const SoundJob& job, const OutputPlan& plan, const AVStream* input) {
    if (!job.codec.empty()) return job.codec;
    if (!input) return UsualSoundCodec(plan, AV_CODEC_ID_NONE);
    const AVCodecParameters& sound = *input->codecpar;
    return UsualSoundCodec(plan, sound.codec_id,
                           std::max(sound.bits_per_raw_sample, sound.bits_per_coded_sample));
}

int64_t SamplesBy(const Moment& moment, int rate) {
    return av_rescale_q(moment.ticks, moment.base, {1, rate});
}

} // namespace

SoundLane::SoundLane(const SoundJob& job, const OutputPlan& plan, const SourceRequest& source,
                     const AVStream* input, Container& output)
    : m_shape(LaneShape(job, input))
    , m_format(SoundFormatFor(job.effects, input ? static_cast<AVSampleFormat>(input->codecpar->format)
                                                 : AV_SAMPLE_FMT_FLT))
    , m_endless(job.endless)
    , m_fromFirst(!job.start)
    , m_chain(job.plugin, job.manager, job.effects, job.lengthMs)
    , m_decoded(m_format, m_shape.rate, m_shape.layout)
    , m_encoder(plan, CodecName(job, plan, input), m_shape, m_format)
    , m_form(m_encoder.Form())
    , m_resampler(swr_alloc())
    , m_converted(m_form.format, m_form.shape.rate, m_form.shape.layout)
    , m_output(output)
    , m_stream(output.AddStream(m_encoder.Context())) {
    if (!m_resampler) throw Error(ErrorKind::Output, "out of memory");
    if (input) {
        m_stream->disposition = input->disposition;
        CopyTags(&m_stream->metadata, input->metadata);
    }
    if (m_endless) return;
    SoundRequest request{source, job.start.value_or(Moment{}), m_shape, m_format};
    request.source.audioStream = input->index;
    m_reader = std::make_unique<SoundReader>(std::move(request), job.cancel);
}

// Pieces end at whole multiples of their length, so that their times are exact at any rate.
int64_t SoundLane::NextBoundary() const {
    int64_t piece = m_done * kPiecesASecond / m_shape.rate;
    int64_t boundary = m_done;
    for (; boundary <= m_done; ++piece) boundary = piece * m_shape.rate / kPiecesASecond;
    return boundary;
}

void SoundLane::WriteUntil(const Moment& end) {
    const int64_t limit = SamplesBy(end, m_shape.rate);
    for (int64_t next = NextBoundary(); next <= limit; next = NextBoundary()) {
        const int64_t samples = next - m_done;
        if (!m_endless && Available(samples) < samples) return; // the rest is for the end
        Process(samples);
    }
}

void SoundLane::Complete(const std::optional<Moment>& end) {
    const int64_t limit = end ? SamplesBy(*end, m_shape.rate) : std::numeric_limits<int64_t>::max();
    while (m_done < limit) {
        int64_t samples = std::min(NextBoundary(), limit) - m_done;
        if (!m_endless) samples = std::min(samples, Available(samples));
        if (samples == 0) break;
        Process(samples);
    }
    Convert(nullptr);
    const int64_t total = av_rescale(m_done, m_form.shape.rate, m_shape.rate);
    m_converted.PushSilence(total - m_sent - m_converted.Size());
    while (m_sent < total)
        Send(m_form.frameSize ? std::min<int64_t>(m_form.frameSize, total - m_sent) : total - m_sent);
    Encode(nullptr);
}

// Decodes until so many samples are there; fewer at the sound's end.
int64_t SoundLane::Available(int64_t wanted) {
    while (m_decoded.Size() < wanted && (m_waiting || Decode())) {
        const int64_t silence = std::clamp<int64_t>(m_gap, 0, wanted - m_decoded.Size());
        m_decoded.PushSilence(silence);
        m_gap -= silence;
        if (m_gap > 0) continue;
        const int64_t skipped = std::min<int64_t>(-m_gap, m_waiting->nb_samples);
        if (skipped < m_waiting->nb_samples) m_decoded.Push(*m_waiting, skipped);
        m_waiting.reset();
    }
    return m_decoded.Size();
}

// The next sound, and how far it lies from what came before it. Time stamps are no finer than their
// containers say, and some are wrong altogether, so samples are counted from the first one on and only a jump
// counts.
bool SoundLane::Decode() {
    m_waiting = m_reader->Next();
    if (!m_waiting) return false;
    const int64_t hour = 3600 * int64_t{m_shape.rate}, jump = m_shape.rate / 10;
    if (!m_time && m_fromFirst) m_origin = m_waiting->pts;
    const int64_t time = m_waiting->pts - m_origin, distance = std::abs(time - m_time.value_or(0));
    if (!m_time) m_time = distance < hour ? time : 0;
    if (distance > jump && distance < hour) m_time = time;
    m_gap = *m_time - m_placed;
    *m_time += m_waiting->nb_samples;
    m_placed = std::max(m_placed, *m_time);
    return true;
}

void SoundLane::Process(int64_t samples) {
    const AVFramePtr sound = m_decoded.Pop(samples); // silence where effects bring sound
    m_chain.Process(*sound, static_cast<uint32_t>(av_rescale(m_done, 1000, m_shape.rate)));
    m_done += samples;
    Convert(sound.get());
    while (m_converted.Size() > 0 && m_converted.Size() >= m_form.frameSize)
        Send(m_form.frameSize ? m_form.frameSize : m_converted.Size());
}

// To the encoder's form; null, at the end, gives what the resampler still holds.
void SoundLane::Convert(const AVFrame* sound) {
    if (!sound && !swr_is_initialized(m_resampler.get())) return;
    const AVFramePtr converted = m_converted.Empty();
    const int code = swr_convert_frame(m_resampler.get(), converted.get(), sound);
    if (code < 0) throw Error(ErrorKind::Output, "the sound can't be converted: " + AvText(code));
    if (converted->nb_samples > 0) m_converted.Push(*converted);
}

void SoundLane::Send(int64_t samples) {
    const AVFramePtr sound = m_converted.Pop(samples);
    sound->pts = m_sent;
    m_sent += samples;
    Encode(sound.get());
}

void SoundLane::Encode(AVFrame* sound) {
    m_encoder.Encode(sound, [this](AVPacket& packet) {
        packet.stream_index = m_stream->index;
        av_packet_rescale_ts(&packet, m_encoder.Context().time_base, m_stream->time_base);
        // FLAC's last packet holds no sound, only what its header should say; not every container takes it.
        if (packet.size > 0)
            m_output.Write(&packet);
        else
            m_output.WriteCopied(&packet);
    });
}

} // namespace aveffect
