#pragma once
/// One stream of sound on its way from the input through audio effects into the output.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/effects/audio_effect_chain.h"
#include "host/media/sound_reader.h"
#include "host/output/container.h"
#include "host/output/sound_encoder.h"
#include "host/sound/sample_queue.h"

namespace aveffect {

/// What effects get at a time is this part of a second: a multiple of the steps in which fades move.
inline constexpr int kPiecesASecond = 50;

/// What becomes of a render's sound.
struct SoundJob {
    const Plugin& plugin;
    AVBased::IAVManager* manager; ///< opens what effects read; outlives the lanes
    const std::vector<EffectSpec>& effects;
    const std::string& codec; ///< encoder or codec name; empty: as UsualSoundCodec
    uint32_t lengthMs;        ///< that the effects are told of
    bool changes; ///< all sound goes through effects or an encoder; else what the container holds is copied
    bool endless; ///< the effects bring sound (BringsSound), which goes on as long as there are pictures
    std::optional<Moment> start; ///< of the span, in the file's times; absent: the first sample
    std::optional<Moment> end;   ///< of the span from its start, when it was asked for
    const std::atomic<bool>& cancel;
};

/// Used by one thread at a time. Times count from the span's start.
class SoundLane {
public:
    /// Opens decoder, effects and encoder and adds the stream to the output, with the input's tags. Sound is
    /// read from the source, apart from the pictures; there need be none for an endless job. Throws Error.
    SoundLane(const SoundJob& job, const OutputPlan& plan, const SourceRequest& source, const AVStream* input,
              Container& output);

    /// Encodes what ends by then.
    void WriteUntil(const Moment& end);
    /// Encodes the rest, to the sample: an endless job goes on to the end, other sound is cut there or comes
    /// to its own end. Then writes what the encoder still holds.
    void Complete(const std::optional<Moment>& end);

    /// How it is encoded, as a sentence.
    std::string Summary() const { return m_encoder.Summary(); }
    /// Samples written, as seconds.
    Moment Written() const noexcept { return {m_done, {1, m_shape.rate}}; }
    /// What was found to be wrong with what was read.
    DamageReport Damage() const { return m_reader ? m_reader->Damage() : DamageReport(); }

private:
    int64_t NextBoundary() const;
    int64_t Available(int64_t wanted);
    bool Decode();
    void Process(int64_t samples);
    void Convert(const AVFrame* sound);
    void Send(int64_t samples);
    void Encode(AVFrame* sound);

    SoundShape m_shape; ///< that the effects work in
    AVSampleFormat m_format;
    bool m_endless;
    bool m_fromFirst; ///< the first sample is the start, whatever its time
    AudioEffectChain m_chain;
    std::unique_ptr<SoundReader> m_reader; ///< null for an endless job
    SampleQueue m_decoded;
    std::optional<int64_t> m_time;     ///< in samples, of what is decoded next; absent before the first sound
    int64_t m_origin = 0;              ///< time of the start as the reader counts
    int64_t m_placed = 0;              ///< samples that were or will be queued of what was decoded
    mediabridge::AVFramePtr m_waiting; ///< decoded, for the gap before it to be filled
    int64_t m_gap = 0;                 ///< negative: samples of it that are not wanted
    int64_t m_done = 0;                ///< samples that went through the effects

    SoundEncoder m_encoder;
    SoundForm m_form; ///< that the encoder takes
    mediabridge::SwrContextPtr m_resampler;
    SampleQueue m_converted;
    int64_t m_sent = 0;
    Container& m_output;
    AVStream* m_stream;
};

} // namespace aveffect
