#pragma once
/// Sound on its way to an encoder, or to whoever else takes it piece by piece.
#include <optional>

#include "host/media/clip_scan.h"

namespace aveffect {

/// How sound is given out.
struct SoundForm {
    SoundShape shape;
    AVSampleFormat format = AV_SAMPLE_FMT_FLTP;
    int frameSize = 0; ///< samples a frame, but for the last one; 0: as they come
};

/// A moment in samples.
inline int64_t SamplesBy(const Moment& moment, int rate) {
    return av_rescale_q(moment.ticks, moment.base, {1, rate});
}

/// Gives out sound in one form. Times count from its start. Used by one thread at a time. Everything throws
/// Error.
class SoundSupply {
public:
    SoundSupply() = default;
    virtual ~SoundSupply() = default;
    SoundSupply(const SoundSupply&) = delete;
    SoundSupply& operator=(const SoundSupply&) = delete;

    /// The next sound, pts in samples. Null once what was given out reaches that moment as nearly as its
    /// frames and effects let it, and at the end. After EndAt() everything up to the end comes, whatever the
    /// moment.
    virtual mediabridge::AVFramePtr Next(const Moment& until) = 0;

    /// Sets the end, to the sample; absent: where the sound ends by itself. Sound without an end of its own
    /// needs one.
    virtual void EndAt(const std::optional<Moment>& end) = 0;

    /// How far sound was made, given out or waiting for its frame to be full.
    virtual Moment Reached() const = 0;

    /// What was found to be wrong with what was read.
    virtual DamageReport Damage() const = 0;
};

} // namespace aveffect
