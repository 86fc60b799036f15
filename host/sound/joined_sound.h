#pragma once
/// The sound of clips that are joined, each faded over into the next or cut straight, and music with it.
#include <memory>
#include <string>
#include <vector>

#include "host/media/sound_reader.h"
#include "host/sound/music.h"
#include "host/sound/sound_supply.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace aveffect {

struct FilterEnds;

/// One clip's part of the sound.
struct SoundPart {
    const ClipScan* clip; ///< silence when it has no sound; outlives the sound
    int64_t samples;      ///< from the clip's start; filled up with silence
    int64_t samplesAcross =
        0; ///< shared with the next part, where the one fades out and the other in; 0: a cut
};

/// Reads the parts one after the other, opening each clip when its turn comes. Used by one thread at a time.
class JoinedSound : public SoundSupply {
public:
    /// At least one part. Throws Error (Output).
    JoinedSound(std::vector<SoundPart> parts, const std::optional<Music>& music, const SoundForm& form,
                const std::atomic<bool>& cancel);

    mediabridge::AVFramePtr Next(const Moment& until) override;
    void EndAt(const std::optional<Moment>& end) override;
    Moment Reached() const override { return {m_next, {1, m_shape.rate}}; }
    DamageReport Damage() const override;

private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const noexcept { avfilter_graph_free(&graph); }
    };
    void Build(const SoundForm& form, const std::optional<Music>& music);
    int AddInput(size_t index, FilterEnds& ends);
    int64_t Samples() const;
    std::string Describe(const SoundForm& form, const std::optional<Music>& music) const;
    std::string DescribeMusic(const Music& music, const std::string& parts) const;
    mediabridge::AVFramePtr Read();
    void Feed();
    size_t WaitingInput() const;
    void Give(size_t input, AVFrame* sound);

    std::vector<SoundPart> m_parts;
    SoundShape m_shape;
    const std::atomic<bool>& m_cancel;
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    /// By part, the music's at the end; null for silence and for what is read.
    std::vector<AVFilterContext*> m_inputs;
    AVFilterContext* m_output = nullptr;
    std::unique_ptr<SoundReader> m_reader;
    std::optional<EndlessSound> m_music;
    DamageReport m_damage;        ///< of the parts before
    size_t m_reading = 0;         ///< the part that the reader reads
    int64_t m_next = 0;           ///< samples given out
    std::optional<int64_t> m_end; ///< of those, once it is set
};

} // namespace aveffect
