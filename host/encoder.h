#pragma once
/// Encoding pictures.
#include "host/av_owner.h"
#include "host/output_plan.h"

namespace aveffect {

/// What the pictures look like when they reach the encoder.
struct EncoderFormat {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED; ///< unspecified: as the pictures are
    bool losesAlpha = false;

    /// Whether a picture has to be converted; otherwise its bytes are taken as they are.
    bool Converts(const AVFrame& picture) const;
};

/// The clip's own pictures, before any conversion.
struct ClipKind {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
};

/// The encoder's format nearest to what the output should look like (wanted) for pictures like this one. The
/// colour range stays where codec or container say it to players; it becomes limited where they can't.
EncoderFormat ChooseEncoderFormat(const OutputPlan& plan, AVPixelFormat wanted, const ClipKind& clip,
                                  const AVFrame& picture);

/// One open encoder. Used by one thread at a time.
class Encoder {
public:
    struct Timing {
        AVRational base;
        AVRational rate;
        AVFieldOrder fieldOrder = AV_FIELD_UNKNOWN;
    };

    /// Opens for pictures like the sample, which has the encoder's format. Throws Error (Usage) in the
    /// encoder's words.
    Encoder(const OutputPlan& plan, const AVFrame& sample, const Timing& timing);

    /// Takes a picture, whose pts is in the encoder's base; null at the end. Receive() everything before the
    /// next Send().
    void Send(AVFrame* picture);

    /// Receives into the packet; false when the encoder wants more, or at the end.
    bool Receive(AVPacket* packet);

    const AVCodecContext& Context() const noexcept { return *m_context; }

private:
    void SetQuality(const EncoderChoice& choice);
    void SetInterlacing(const AVFrame& sample, AVFieldOrder order);
    [[noreturn]] void Fail(const std::string& doing, int code) const;

    const AVCodec* m_codec; ///< the context forgets it when it fails to open
    mediabridge::AVCodecContextPtr m_context;
};

} // namespace aveffect
