#include "host/sound/clip_sound.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "host/effects/audio_effect_chain.h"
#include "host/effects/sound_piece.h"
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
    const InputContextPtr input = OpenInput(request, interrupt);
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
    , m_clipStart(SamplesBy(setup.times.start, m_shape.rate))
    , m_form(std::move(form))
    , m_resampler(swr_alloc())
    , m_converted(m_form.format, m_form.shape.rate, m_form.shape.layout) {
    if (!m_resampler) throw NoMemory("out of memory");
    Decode(setup, source, stream, shape);
    for (const EffectSpec& effect : setup.effects)
        m_stages.push_back(std::make_unique<StagedSound>(
            Last(), AudioStage(setup.plugin, setup.manager, effect, setup.times.clip, m_shape.rate),
            m_clipStart, m_shape, shape.format));
}

// Sound that nothing will be heard of need not be read.
void ClipSound::Decode(const ClipSoundSetup& setup, const SourceRequest& source, const AVStream* stream,
                       const ClipSoundShape& shape) {
    if (!stream || (setup.endless && !HearsClip(setup.effects))) {
        m_decoded = std::make_unique<DecodedSound>(m_shape, shape.format);
        return;
    }
    SoundRequest request{source, setup.start.value_or(Moment{}), m_shape, shape.format};
    request.source.audioStream = stream->index;
    m_decoded = std::make_unique<DecodedSound>(std::move(request), !setup.start, setup.endless, setup.cancel);
}

SampleSource& ClipSound::Last() {
    if (m_stages.empty()) return *m_decoded;
    return *m_stages.back();
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

// One piece more; false when none ends by that sample, or at the end.
bool ClipSound::Advance(int64_t limit) {
    const int64_t boundary = PieceAt(m_clipStart + m_done, m_shape.rate, kPiecesASecond).end - m_clipStart;
    const int64_t next = m_end ? std::min(boundary, *m_end) : boundary, wanted = next - m_done;
    if (!m_end && next > limit) return false;
    const int64_t samples = std::min(wanted, Last().Available(wanted));
    if (samples <= 0 || (!m_end && samples < wanted)) return false; // the rest is for the end
    m_done += samples;
    Convert(Last().Pop(samples).get());
    return true;
}

// To the form that was asked for; null, at the end, gives what the resampler still holds.
void ClipSound::Convert(const AVFrame* sound) {
    if (!sound && !swr_is_initialized(m_resampler.get())) return;
    const AVFramePtr converted = m_converted.Empty();
    const int code = swr_convert_frame(m_resampler.get(), converted.get(), sound);
    if (code < 0) ThrowFailure(ErrorKind::Output, "the sound can't be converted", code);
    if (converted->nb_samples > 0) m_converted.Push(*converted);
}

// As many samples as went through the effects, at the form's rate.
void ClipSound::Flush() {
    Convert(nullptr);
    m_total = av_rescale(m_done, m_form.shape.rate, m_shape.rate);
    m_converted.PushSilence(*m_total - m_given - m_converted.Size());
}

} // namespace aveffect
