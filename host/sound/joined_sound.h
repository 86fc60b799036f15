#pragma once
/// The sound of clips that are joined, each faded over into the next.
#include <memory>
#include <string>
#include <vector>

#include "host/media/sound_reader.h"
#include "host/sound/sound_supply.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace aveffect {

/// One clip's part of the sound.
struct SoundPart {
    const ClipScan* clip;      ///< silence when it has no sound; outlives the sound
    int64_t samples;           ///< from the clip's start; filled up with silence
    int64_t samplesAcross = 0; ///< shared with the next part, where the one fades out and the other in
};

/// Reads the parts one after the other, opening each clip when its turn comes. Used by one thread at a time.
class JoinedSound : public SoundSupply {
public:
    /// At least one part. Throws Error (Output).
    JoinedSound(std::vector<SoundPart> parts, const SoundForm& form, const std::atomic<bool>& cancel);

    mediabridge::AVFramePtr Next(const Moment& until) override;
    void EndAt(const std::optional<Moment>& end) override;
    Moment Reached() const override { return {m_next, {1, m_shape.rate}}; }
    DamageReport Damage() const override;

private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const noexcept { avfilter_graph_free(&graph); }
    };
    void Build(const SoundForm& form);
    std::string Describe(const SoundForm& form) const;
    mediabridge::AVFramePtr Read();
    void Feed();

    std::vector<SoundPart> m_parts;
    SoundShape m_shape;
    const std::atomic<bool>& m_cancel;
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    std::vector<AVFilterContext*> m_inputs; ///< by part; null for silence and for parts that are read
    AVFilterContext* m_output = nullptr;
    std::unique_ptr<SoundReader> m_reader;
    DamageReport m_damage;        ///< of the parts before
    size_t m_reading = 0;         ///< the part that the reader reads
    int64_t m_next = 0;           ///< samples given out
    std::optional<int64_t> m_end; ///< of those, once it is set
};

} // namespace aveffect
