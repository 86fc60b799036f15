#pragma once
/// The sound of clips that are joined, each faded over into the next.
#include <memory>
#include <string>
#include <vector>

#include "host/media/sound_reader.h"

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

/// How it comes out.
struct SoundForm {
    SoundShape shape;
    AVSampleFormat format = AV_SAMPLE_FMT_FLTP;
    int frameSize = 0; ///< samples a frame; 0: as they come
};

/// Reads the parts one after the other, opening each clip when its turn comes. Used by one thread at a time.
class JoinedSound {
public:
    /// At least one part. Throws Error (Output).
    JoinedSound(std::vector<SoundPart> parts, const SoundForm& form, const std::atomic<bool>& cancel);

    /// The next samples, pts in samples from the start; null at the end. Throws Error.
    mediabridge::AVFramePtr Next();

    /// What was found to be wrong with what was read.
    DamageReport Damage() const;

private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const noexcept { avfilter_graph_free(&graph); }
    };
    void Build(const SoundForm& form);
    std::string Describe(const SoundForm& form) const;
    void Feed();

    std::vector<SoundPart> m_parts;
    SoundShape m_shape;
    const std::atomic<bool>& m_cancel;
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    std::vector<AVFilterContext*> m_inputs; ///< by part; null for silence and for parts that are read
    AVFilterContext* m_output = nullptr;
    std::unique_ptr<SoundReader> m_reader;
    DamageReport m_damage; ///< of the parts before
    size_t m_reading = 0;  ///< the part that the reader reads
    int64_t m_next = 0;
};

} // namespace aveffect
