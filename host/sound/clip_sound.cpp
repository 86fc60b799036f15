#include "host/sound/clip_sound.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

constexpr char kSoundPath[] = "audio_replace_path";

SoundShape ShapeOf(const AVStream& input) {
    return {input.codecpar->sample_rate, LayoutText(input.codecpar->ch_layout)};
}

/// Of the file whose sound the chain's last effect to bring some brings.
SoundShape BroughtShape(const ClipSoundSetup& setup) {
    std::string url;
    for (const EffectSpec& effect : setup.effects)
        for (const PropertySetting& setting : effect.properties)
            if (setting.name == kSoundPath) url = setting.value;
    ReadInterrupt interrupt{&setup.cancel, std::nullopt};
    const SourceRequest request = ParseSourceUrl(url);
    const InputContextPtr input = OpenInput(request.path, interrupt);
    const AVStream* const sound = FindSound(*input, request, nullptr);
    if (!sound) throw Error(ErrorKind::Input, url + " has no sound any more");
    return ShapeOf(*sound);
}

} // namespace

ClipSoundShape ShapeFor(const ClipSoundSetup& setup, const AVStream* stream) {
    const SoundShape shape = stream ? ShapeOf(*stream) : BroughtShape(setup);
    if (shape.rate <= 0) throw Error(ErrorKind::Input, "the sound tells no sample rate");
    const auto decoded = stream ? static_cast<AVSampleFormat>(stream->codecpar->format) : AV_SAMPLE_FMT_FLT;
    return {shape, SoundFormatFor(setup.effects, decoded)};
}

ClipSound::ClipSound(const ClipSoundSetup& setup, const SourceRequest& source, const AVStream* stream,
                     const ClipSoundShape& shape, SoundForm form)
    : m_shape(shape.shape)
    , m_clipStart(av_rescale_q(setup.times.start.ticks, setup.times.start.base, {1, m_shape.rate}))
    , m_endless(setup.endless)
    , m_fromFirst(!setup.start)
    , m_chain(setup.plugin, setup.manager, setup.effects, setup.times.clip)
    , m_decoded(shape.format, m_shape.rate, m_shape.layout)
    , m_form(std::move(form))
    , m_resampler(swr_alloc())
    , m_converted(m_form.format, m_form.shape.rate, m_form.shape.layout) {
    if (!m_resampler) throw Error(ErrorKind::Output, "out of memory");
    if (m_endless) return;
    SoundRequest request{source, setup.start.value_or(Moment{}), m_shape, shape.format};
    request.source.audioStream = stream->index;
    m_reader = std::make_unique<SoundReader>(std::move(request), setup.cancel);
}

AVFramePtr ClipSound::Next(const Moment& until) {
    const int64_t limit = SamplesBy(until, m_shape.rate);
    while (!m_total && Ready() == 0 && Advance(limit)) {
    }
    if (m_end && !m_total && Ready() == 0) Flush();
    const int64_t samples = Ready();
    if (samples == 0) return nullptr;
    AVFramePtr sound = m_converted.Pop(samples);
    sound->pts = m_given;
    m_given += samples;
    return sound;
}

void ClipSound::EndAt(const std::optional<Moment>& end) {
    m_end = end ? SamplesBy(*end, m_shape.rate) : std::numeric_limits<int64_t>::max();
}

// Samples that can be given out at once.
int64_t ClipSound::Ready() const {
    const int64_t there = m_total ? *m_total - m_given : m_converted.Size();
    if (m_form.frameSize == 0 || (m_total && there < m_form.frameSize)) return std::max<int64_t>(0, there);
    return there < m_form.frameSize ? 0 : m_form.frameSize;
}

// Pieces end at whole multiples of their length, so that their times are exact at any rate.
int64_t ClipSound::NextBoundary() const {
    int64_t piece = m_done * kPiecesASecond / m_shape.rate;
    int64_t boundary = m_done;
    for (; boundary <= m_done; ++piece) boundary = piece * m_shape.rate / kPiecesASecond;
    return boundary;
}

// One piece more; false when none ends by that sample, or at the end.
bool ClipSound::Advance(int64_t limit) {
    const int64_t next = m_end ? std::min(NextBoundary(), *m_end) : NextBoundary();
    int64_t samples = next - m_done;
    if (!m_end && next > limit) return false;
    if (!m_endless) samples = std::min(samples, Available(samples));
    const bool whole = samples == next - m_done; // else the rest is for the end
    if (samples <= 0 || (!m_end && !whole)) return false;
    Process(samples);
    return true;
}

// Decodes until so many samples are there; fewer at the sound's end.
int64_t ClipSound::Available(int64_t wanted) {
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
bool ClipSound::Decode() {
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

void ClipSound::Process(int64_t samples) {
    const AVFramePtr sound = m_decoded.Pop(samples); // silence where effects bring sound
    m_chain.Process(*sound, m_clipStart + m_done);
    m_done += samples;
    Convert(sound.get());
}

// To the form that was asked for; null, at the end, gives what the resampler still holds.
void ClipSound::Convert(const AVFrame* sound) {
    if (!sound && !swr_is_initialized(m_resampler.get())) return;
    const AVFramePtr converted = m_converted.Empty();
    const int code = swr_convert_frame(m_resampler.get(), converted.get(), sound);
    if (code < 0) throw Error(ErrorKind::Output, "the sound can't be converted: " + AvText(code));
    if (converted->nb_samples > 0) m_converted.Push(*converted);
}

// As many samples as went through the effects, at the form's rate.
void ClipSound::Flush() {
    Convert(nullptr);
    m_total = av_rescale(m_done, m_form.shape.rate, m_shape.rate);
    m_converted.PushSilence(*m_total - m_given - m_converted.Size());
}

} // namespace aveffect
