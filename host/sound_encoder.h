#pragma once
/// Encoding sound.
#include "host/output_plan.h"
#include "host/sound_track.h"

namespace aveffect {

/// One open sound encoder. Used by one thread at a time.
class SoundEncoder {
public:
    /// Opens the encoder of that name, or the container's usual one, for sound like this, as near as it takes
    /// it; without a format it chooses its own. Throws Error (Usage) when the name is unknown, does not fit
    /// the container, or in the encoder's words.
    SoundEncoder(const OutputPlan& plan, const std::string& name, const SoundShape& wanted,
                 AVSampleFormat format = AV_SAMPLE_FMT_NONE);

    /// What it wants to be sent.
    SoundForm Form() const;
    const AVCodecContext& Context() const noexcept { return *m_context; }

    /// Takes sound in that form; null at the end. Receive() everything before the next Send().
    void Send(const AVFrame* sound);
    /// Receives into the packet; false when the encoder wants more, or at the end.
    bool Receive(AVPacket* packet);

private:
    [[noreturn]] void Fail(const char* doing, int code) const;

    mediabridge::AVCodecContextPtr m_context;
};

/// The name to make a SoundEncoder with for sound of a file that holds this codec: that codec's own where the
/// container keeps it and it can be encoded, otherwise AAC, otherwise empty.
std::string UsualSoundCodec(const OutputPlan& plan, AVCodecID input);

} // namespace aveffect
