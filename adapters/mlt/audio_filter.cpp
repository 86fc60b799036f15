#include "adapters/mlt/audio_filter.h"

#include <memory>

#include "adapters/mlt/complaints.h"
#include "adapters/mlt/effect_text.h"
#include "adapters/mlt/filter_worker.h"
#include "adapters/mlt/picture.h"
#include "adapters/mlt/the_plugin.h"
#include "adapters/support/sound_pieces.h"
#include "host/effects/audio_effect_chain.h"

namespace aveffect::mlt {

namespace {

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
    void Work(mlt_frame frame, const adapters::Sound& sound) {
        const mlt_service service = MLT_FILTER_SERVICE(m_filter);
        const mlt_position position = mlt_filter_get_position(m_filter, frame);
        const mlt_position length = mlt_filter_get_length2(m_filter, frame);
        const auto fps = static_cast<float>(mlt_profile_fps(mlt_service_profile(service)));
        m_pieces.Work(ThePlugin(),
                      SoundText(m_effect, MLT_FILTER_PROPERTIES(m_filter), position, length,
                                Milliseconds(position, service), Milliseconds(position + 1, service)),
                      Milliseconds(length, service), sound,
                      mlt_audio_calculate_samples_to_position(fps, sound.rate, position));
    }

    const AVBased::EffectInfo& m_effect;
    mlt_filter m_filter;
    Complaints m_complaints;
    const AVSampleFormat m_finest; ///< that the effect takes
    std::mutex m_mutex;
    adapters::SoundPieces m_pieces;
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
