#pragma once
/// Encoding pictures.
#include <utility>

#include "host/output/encoder.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Takes pictures.
class PictureEncoder : public Encoder {
public:
    struct Timing {
        AVRational base;
        AVRational rate;
    };

    /// Opens for pictures like the sample, which has the encoder's format. Throws Error (Usage) in the
    /// encoder's words.
    PictureEncoder(const OutputPlan& plan, const AVFrame& sample, const Timing& timing);
    ~PictureEncoder() override;

private:
    bool TakesBlank();
    void RequireSize() const;
    void TellProfile();
    AVFrame* Prepare(AVFrame* picture) override;
    void Mend(AVPacket& packet) override;
    void SetPreset(const EncoderChoice& choice);
    void SetQuality(const EncoderChoice& choice);
    void SetPrivate(const AVFrame& sample);
    void SetInterlacing(const AVFrame& sample, AVFieldOrder order);

    int64_t m_sent = 0; ///< pictures
};

/// The size, at least the sample's, in which the encoder takes pictures like it: some want even sides. The
/// sample's own where it takes none.
std::pair<int, int> EncodableSize(const OutputPlan& plan, const AVFrame& sample);

} // namespace aveffect
