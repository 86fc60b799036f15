#include "adapters/mlt/audio_filter.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "adapters/mlt/complaints.h"
#include "adapters/mlt/effect_text.h"
#include "adapters/mlt/filter_worker.h"
#include "adapters/mlt/picture.h"
#include "adapters/mlt/the_plugin.h"
#include "host/effects/audio_effect_chain.h"
#include "host/effects/audio_stage.h"
#include "host/media/media_manager.h"

namespace aveffect::mlt {

namespace {

/// Interleaved sound of the host's.
struct Sound {
    uint8_t* samples;
    AVSampleFormat format;
    int rate, channels, count;

    size_t SampleBytes() const {
        return static_cast<size_t>(av_get_bytes_per_sample(format)) * static_cast<size_t>(channels);
    }
    /// A part of it, as its own memory.
    mediabridge::AVFramePtr Part(int begin, int end) const {
        mediabridge::AVFramePtr part(av_frame_alloc());
        if (!part) throw std::bad_alloc();
        part->format = format;
        part->sample_rate = rate;
        part->nb_samples = end - begin;
        av_channel_layout_default(&part->ch_layout, channels);
        part->data[0] = samples + static_cast<size_t>(begin) * SampleBytes();
        part->linesize[0] = static_cast<int>(static_cast<size_t>(end - begin) * SampleBytes());
        return part;
    }
};

/// What a stage was made for.
struct StageTerms {
    std::string text;
    int64_t lengthMs;
    AVSampleFormat format;
    int rate, channels;

    bool operator==(const StageTerms&) const = default;
};

class AudioFilter {
public:
    AudioFilter(const AVBased::EffectInfo& effect, mlt_filter filter)
        : m_effect(effect)
        , m_filter(filter)
        , m_complaints(MLT_FILTER_SERVICE(filter))
        , m_finest(SoundFormatFor({{effect.name, {}}}, AV_SAMPLE_FMT_FLT)) {}

    int GetAudio(mlt_frame frame, void** buffer, mlt_audio_format* format, int* rate, int* channels,
                 int* count) noexcept {
        const std::string_view clip = ClipFact(frame, "audio", "sample_fmt");
        const bool coarse = clip == "s16" || clip == "s16p" || clip == "u8" || clip == "u8p";
        const AVSampleFormat wanted = coarse ? AV_SAMPLE_FMT_S16 : m_finest;
        const mlt_audio_format asked = wanted == AV_SAMPLE_FMT_S16 ? mlt_audio_s16 : mlt_audio_f32le;
        *format = asked;
        const int failed = mlt_frame_get_audio(frame, buffer, format, rate, channels, count);
        if (failed || !*buffer || *format != asked || *count < 1) return failed;
        const std::scoped_lock lock(m_mutex);
        try {
            Work(frame, {static_cast<uint8_t*>(*buffer), wanted, *rate, *channels, *count});
        } catch (const std::exception& failure) {
            m_complaints.Say(failure);
        }
        return 0;
    }

private:
    void Work(mlt_frame frame, const Sound& sound) {
        const mlt_service service = MLT_FILTER_SERVICE(m_filter);
        const mlt_position position = mlt_filter_get_position(m_filter, frame);
        const mlt_position length = mlt_filter_get_length2(m_filter, frame);
        const auto fps = static_cast<float>(mlt_profile_fps(mlt_service_profile(service)));
        const int64_t first = mlt_audio_calculate_samples_to_position(fps, sound.rate, position);
        StageTerms terms{EffectText(m_effect, MLT_FILTER_PROPERTIES(m_filter), position, length),
                         Milliseconds(length, service), sound.format, sound.rate, sound.channels};
        if (!m_stage || terms != m_terms || (m_stage->NeedsAll() && first != m_next)) {
            m_stage.emplace(ThePlugin(), &m_media, ParseEffect(terms.text, false, Medium::Audio),
                            TimeSpan{0, terms.lengthMs}, sound.rate);
            m_terms = std::move(terms);
            if (m_stage->NeedsAll()) Skip(first, sound);
        }
        Hear(sound, first);
        m_next = first + sound.count;
    }

    // Pieces begin where those of the effect's own time do.
    void Hear(const Sound& sound, int64_t first) {
        const int64_t piece = sound.rate / m_stage->PiecesASecond();
        for (int begin = 0, end = 0; begin < sound.count; begin = end) {
            const int64_t next = ((first + begin) / piece + 1) * piece;
            end = static_cast<int>(std::min<int64_t>(sound.count, next - first));
            m_stage->Process(*sound.Part(begin, end), first + begin);
        }
    }

    void Skip(int64_t samples, const Sound& like) {
        Sound silence = like;
        std::vector<uint8_t> memory(static_cast<size_t>(like.rate) * like.SampleBytes());
        silence.samples = memory.data();
        for (int64_t at = 0; at < samples; at += silence.count) {
            silence.count = static_cast<int>(std::min<int64_t>(like.rate, samples - at));
            Hear(silence, at);
        }
    }

    const AVBased::EffectInfo& m_effect;
    mlt_filter m_filter;
    Complaints m_complaints;
    const AVSampleFormat m_finest; ///< that the effect takes
    std::mutex m_mutex;
    MediaManager m_media;
    StageTerms m_terms{};
    std::optional<AudioStage> m_stage;
    int64_t m_next = 0; ///< sample behind those that the stage has had
};

int PullAudio(mlt_frame frame, void** buffer, mlt_audio_format* format, int* rate, int* channels,
              int* count) {
    return WorkerIn<AudioFilter>(static_cast<mlt_filter>(mlt_frame_pop_audio(frame)))
        ->GetAudio(frame, buffer, format, rate, channels, count);
}

mlt_frame PushAudio(mlt_filter filter, mlt_frame frame) {
    mlt_frame_push_audio(frame, filter);
    mlt_frame_push_audio(frame, reinterpret_cast<void*>(PullAudio));
    return frame;
}

} // namespace

mlt_filter MakeAudioFilter(const AVBased::EffectInfo& effect) {
    return MakeFilter<AudioFilter>(effect, PushAudio);
}

} // namespace aveffect::mlt
