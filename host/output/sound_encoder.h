#pragma once
/// Encoding sound.
#include "host/output/encoder.h"
#include "host/output/output_plan.h"
#include "host/sound/sound_supply.h"

namespace aveffect {

/// Takes sound.
class SoundEncoder : public Encoder {
public:
    /// Opens the encoder of that name, or the container's usual one, for sound like this, as near as it and
    /// the container take it; without a format it chooses its own. Throws Error (Usage) when the name is
    /// unknown, does not fit the container, or in the encoder's words.
    SoundEncoder(const OutputPlan& plan, const std::string& name, const SoundShape& wanted,
                 AVSampleFormat format = AV_SAMPLE_FMT_NONE);

    /// What it wants to be given.
    SoundForm Form() const;
    /// Which encoder it is and what it makes of the shape that was wanted, as a sentence.
    std::string Summary() const;

private:
    AVFrame* Prepare(AVFrame* sound) override;
    int TryToOpen(const OutputPlan& plan, AVSampleFormat format, const AVChannelLayout& layout, int rate,
                  int64_t bitRate);

    SoundShape m_wanted;
    mediabridge::AVFramePtr m_even; ///< given instead of a frame with an odd number of samples
};

} // namespace aveffect
