#pragma once
/// Encoding sound.
#include "host/output/output_plan.h"
#include "host/sound/joined_sound.h"

namespace aveffect {

/// One open sound encoder. Used by one thread at a time.
class SoundEncoder {
public:
    /// Opens the encoder of that name, or the container's usual one, for sound like this, as near as it and
    /// the container take it; without a format it chooses its own. Throws Error (Usage) when the name is
    /// unknown, does not fit the container, or in the encoder's words.
    SoundEncoder(const OutputPlan& plan, const std::string& name, const SoundShape& wanted,
                 AVSampleFormat format = AV_SAMPLE_FMT_NONE);

    /// What it wants to be sent.
    SoundForm Form() const;
    const AVCodecContext& Context() const noexcept { return *m_context; }
    /// Which encoder it is and what it makes of the shape that was wanted, as a sentence.
    std::string Summary() const;

    /// Takes sound in that form; null at the end. Receive() everything before the next Send().
    void Send(const AVFrame* sound);
    /// Receives into the packet; false when the encoder wants more, or at the end.
    bool Receive(AVPacket* packet);

private:
    int Open(const OutputPlan& plan, AVSampleFormat format, const AVChannelLayout& layout, int rate,
             int64_t bitRate);
    [[noreturn]] void Fail(const char* doing, int code, const std::string& detail) const;

    const AVCodec& m_codec; ///< the context forgets it when it fails to open
    SoundShape m_wanted;
    mediabridge::AVCodecContextPtr m_context;
};

} // namespace aveffect
