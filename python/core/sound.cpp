#include "python/core/sound.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "host/effects/audio_effect_chain.h"
#include "host/effects/media_check.h"
#include "host/media/media_manager.h"
#include "host/sound/staged_sound.h"
#include "python/core/failures.h"
#include "python/core/the_plugin.h"
#include "python/core/unlocked.h"

namespace aveffect::python {

namespace py = pybind11;

namespace {

constexpr int kMostRate = 768000, kMostChannels = 64;
constexpr double kMostSeconds = 1e7;
constexpr int64_t kSecond = 1000; // milliseconds

/// Interleaved samples.
struct SoundSamples {
    uint8_t* data;
    AVSampleFormat format;
    AVChannelLayout layout; ///< without memory of its own
    int rate;
    int64_t count;

    size_t Bytes(int64_t samples) const {
        return static_cast<size_t>(av_get_bytes_per_sample(format)) *
               static_cast<size_t>(layout.nb_channels) * static_cast<size_t>(samples);
    }
};

/// Gives them out, as copies.
class SamplesInMemory final : public SampleSource {
public:
    explicit SamplesInMemory(const SoundSamples& samples)
        : m_samples(samples) {}

    int64_t Available(int64_t wanted) override { return std::min(wanted, m_samples.count - m_at); }
    mediabridge::AVFramePtr Pop(int64_t samples) override {
        mediabridge::AVFramePtr frame(av_frame_alloc());
        if (!frame) throw std::bad_alloc();
        frame->format = m_samples.format;
        frame->sample_rate = m_samples.rate;
        frame->ch_layout = m_samples.layout;
        frame->nb_samples = static_cast<int>(samples);
        if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
        std::memcpy(frame->data[0], m_samples.data + m_samples.Bytes(m_at), m_samples.Bytes(samples));
        m_at += samples;
        return frame;
    }

private:
    SoundSamples m_samples;
    int64_t m_at = 0;
};

void Hear(const EffectSpec& effect, const TimeSpan& span, double start, const SoundSamples& samples) {
    MediaManager media;
    RequireSounds(media, {effect});
    AudioStage stage(ThePlugin(), &media, effect, span, samples.rate);
    SamplesInMemory before(samples);
    StagedSound staged(before, std::move(stage), std::llround(start * samples.rate),
                       {samples.rate, LayoutText(samples.layout)}, samples.format);
    for (int64_t at = 0; at < samples.count;) {
        const int64_t ready = std::min(staged.Available(samples.rate), samples.count - at);
        if (ready <= 0) throw Error(ErrorKind::Effect, "the sound ended early");
        const mediabridge::AVFramePtr made = staged.Pop(ready);
        std::memcpy(samples.data + samples.Bytes(at), made->data[0], samples.Bytes(ready));
        at += ready;
    }
}

std::vector<int16_t> Coarse(const float* samples, size_t count) {
    constexpr float kFull = 32768;
    std::vector<int16_t> coarse(count);
    std::transform(samples, samples + count, coarse.begin(), [](float sample) {
        return static_cast<int16_t>(std::lrint(std::clamp(sample * kFull, -kFull, kFull - 1)));
    });
    return coarse;
}

py::array TakeSamples(const py::object& samples) {
    if (!py::isinstance<py::array>(samples))
        throw py::type_error("samples must be an array of int16 or float32");
    auto taken = py::reinterpret_borrow<py::array>(samples);
    const bool known =
        taken.dtype().equal(py::dtype::of<float>()) || taken.dtype().equal(py::dtype::of<int16_t>());
    if (!known)
        throw py::type_error("samples must be of int16 or float32, not " +
                             py::str(taken.dtype()).cast<std::string>());
    if (taken.ndim() != 1 && (taken.ndim() != 2 || taken.shape(1) < 1 || taken.shape(1) > kMostChannels))
        throw Wrong("samples of shape " + py::str(taken.attr("shape")).cast<std::string>() +
                    " are no sound; shapes are (N) and (N, channels), of up to 64 channels");
    return taken;
}

} // namespace

Sound::Sound(const std::string& effect, std::optional<int64_t> lengthMs)
    : m_text(effect)
    , m_effect(ParseEffect(effect, false, Medium::Audio))
    , m_lengthMs(lengthMs) {}

py::object Sound::Process(const py::object& samples, int rate, double start, bool inplace) const {
    const py::array given = TakeSamples(samples);
    if (rate < 1 || rate > kMostRate)
        throw Wrong("rate must be from 1 to " + std::to_string(kMostRate) + " samples a second, not " +
                    std::to_string(rate));
    if (!(start >= 0 && start <= kMostSeconds))
        throw Wrong("start must be a number of seconds from 0 on, not " + std::to_string(start));
    if (inplace && !given.writeable())
        throw Wrong("the samples can only be read; leave inplace out, and a copy is made");
    const bool direct = inplace && (given.flags() & py::array::c_style);
    py::array made = direct ? given : py::array(given.attr("copy")("C"));
    SoundSamples work = {
        static_cast<uint8_t*>(made.mutable_data()), AV_SAMPLE_FMT_S16, {}, rate, given.shape(0)};
    av_channel_layout_default(&work.layout, given.ndim() == 2 ? static_cast<int>(given.shape(1)) : 1);
    const bool fine = given.dtype().equal(py::dtype::of<float>());
    if (fine) work.format = SoundFormatFor({m_effect}, AV_SAMPLE_FMT_FLT);
    const TimeSpan span{0, m_lengthMs.value_or(std::llround(start * kSecond) + work.count * kSecond / rate)};
    if (work.count > 0) {
        const Unlocked unlocked;
        if (fine && work.format == AV_SAMPLE_FMT_S16) { // which is all that the effect takes
            auto* const wide = reinterpret_cast<float*>(work.data);
            std::vector<int16_t> coarse = Coarse(wide, static_cast<size_t>(made.size()));
            work.data = reinterpret_cast<uint8_t*>(coarse.data());
            Hear(m_effect, span, start, work);
            std::ranges::transform(coarse, wide,
                                   [](int16_t sample) { return static_cast<float>(sample) / 32768; });
        } else {
            Hear(m_effect, span, start, work);
        }
    }
    if (inplace && !direct) given.attr("__setitem__")(py::ellipsis(), made);
    return inplace ? samples : made;
}

} // namespace aveffect::python
