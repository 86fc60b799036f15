#pragma once
/// Encoding pictures.
#include <utility>

#include "host/output/output_plan.h"
#include "host/support/av_owner.h"

namespace aveffect {

/// One open encoder. Used by one thread at a time.
class PictureEncoder {
public:
    struct Timing {
        AVRational base;
        AVRational rate;
    };

    /// Opens for pictures like the sample, which has the encoder's format. Throws Error (Usage) in the
    /// encoder's words.
    PictureEncoder(const OutputPlan& plan, const AVFrame& sample, const Timing& timing);

    /// Takes a picture, whose pts is in the encoder's base; null at the end. Receive() everything before the
    /// next Send().
    void Send(AVFrame* picture);

    /// Receives into the packet; false when the encoder wants more, or at the end.
    bool Receive(AVPacket* packet);

    const AVCodecContext& Context() const noexcept { return *m_context; }

private:
    void SetQuality(const EncoderChoice& choice);
    void SetPrivate(const AVFrame& sample);
    void SetInterlacing(const AVFrame& sample, AVFieldOrder order);
    [[noreturn]] void Fail(const std::string& doing, int code) const;

    const AVCodec* m_codec; ///< the context forgets it when it fails to open
    mediabridge::AVCodecContextPtr m_context;
    int64_t m_sent = 0; ///< pictures
};

/// The size, at least the sample's, in which the encoder takes pictures like it: some want even sides. The
/// sample's own where it takes none.
std::pair<int, int> EncodableSize(const OutputPlan& plan, const AVFrame& sample);

} // namespace aveffect
