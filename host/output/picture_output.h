#pragma once
/// Bringing pictures into the form that an encoder takes.
#include <optional>
#include <utility>

#include "host/output/output_format.h"
#include "host/picture/picture_intake.h"
#include "host/picture/transparency.h"
#include "host/picture/working_format.h"
#include "host/support/reporter.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// Brings pictures into an encoder's format and size. Used by one thread at a time.
class PictureOutput {
public:
    /// Chooses format and size for pictures like this one, and says what they lose. Terms and reporter
    /// outlive it. Throws Error (Usage).
    PictureOutput(const OutputPlan& plan, const PictureOrigin& origin, const AVFrame& picture,
                  IntakeTerms& terms, Reporter& reporter);

    /// The picture in that format and size. Throws Error (Output).
    mediabridge::AVFramePtr Convert(mediabridge::AVFramePtr picture);

private:
    bool NeedsPalette() const { return m_output.format == AV_PIX_FMT_PAL8; }
    void SayDepth(const OutputPlan& plan);
    void PrepareSize(const OutputPlan& plan, const AVFrame& picture);

    PictureOrigin m_origin;
    IntakeTerms& m_terms;
    Reporter& m_reporter;
    EncoderFormat m_output;
    std::pair<int, int> m_encodedSize; ///< of all pictures, at least their own
    bool m_toBlack = false;            ///< pictures have transparency that the encoder does not keep
    bool m_only601 = false;            ///< the encoder's format can't name another matrix
    std::optional<mediabridge::Scaler> m_toEncoder;
    std::optional<PaletteMaker> m_toPalette;
    std::string m_whyOpaque; ///< why the output is
    AlphaLoss m_alpha;
};

} // namespace aveffect
