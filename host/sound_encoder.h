#pragma once
/// Encoding sound.
#include "host/output_plan.h"
#include "host/sound_track.h"

namespace aveffect {

/// One open sound encoder. Used by one thread at a time.
class SoundEncoder {
public:
    /// Opens the encoder of that name, or the container's usual one, for sound like this, as near as it takes
    /// it. Throws Error (Usage) when the name is unknown, does not fit the container, or in the encoder's
    /// words.
    SoundEncoder(const OutputPlan& plan, const std::string& name, const SoundShape& wanted);

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

} // namespace aveffect
