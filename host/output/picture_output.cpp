#include "host/output/picture_output.h"

#include <utility>

#include "host/output/picture_encoder.h"
#include "host/picture/bit_depth.h"
#include "host/picture/edge_padding.h"
#include "host/support/error.h"
#include "mediabridge/flatten.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;
using mediabridge::HasColourRange;
using mediabridge::Is601;
using mediabridge::ScaleQuality;

AVPixelFormat FormatOf(const AVFrame& picture) { return static_cast<AVPixelFormat>(picture.format); }

} // namespace

void PictureOutput::PrepareSize(const OutputPlan& plan, const AVFrame& picture) {
    const AVFramePtr sample(av_frame_clone(&picture));
    if (!sample) throw NoMemory("no memory for a picture");
    sample->format = m_output.format;
    m_encodedSize = EncodableSize(plan, *sample);
    const auto& [width, height] = m_encodedSize;
    if (m_encodedSize != std::pair(picture.width, picture.height))
        m_reporter.Note(std::string(plan.encoder.codec->name) + " takes no pictures of " +
                        std::to_string(picture.width) + "x" + std::to_string(picture.height) +
                        "; their last column and row go on to " + std::to_string(width) + "x" +
                        std::to_string(height));
}

// Where no effect has said so already.
void PictureOutput::SayDepth(const OutputPlan& plan) {
    const int depth = BitDepth(m_origin.clip.format);
    if (plan.IsStill() || m_origin.effects || depth <= 8 || BitDepth(m_output.format) > 8) return;
    const std::string format = FormatName(AV_PIX_FMT_YUV420P10);
    const bool could = TakesFormat(*plan.encoder.codec, AV_PIX_FMT_YUV420P10);
    m_terms.SayReduced(depth, "", could ? "; --output-format " + format + " writes 10" : "");
}

PictureOutput::PictureOutput(const OutputPlan& plan, const PictureOrigin& origin, const AVFrame& picture,
                             IntakeTerms& terms, Reporter& reporter)
    : m_origin(origin)
    , m_terms(terms)
    , m_reporter(reporter) {
    m_output = ChooseEncoderFormat(plan, m_origin.wanted, m_origin.clip, picture);
    SayDepth(plan);
    PrepareSize(plan, picture);
    // Colours of a palette let nothing through or all, which is no fade.
    const bool fades = HasAlpha(m_output.format) && !NeedsPalette();
    m_whyOpaque = std::string(plan.encoder.codec->name) + " keeps no " +
                  (NeedsPalette() ? "degrees of " : "") + "transparency in ." + plan.Kind() + " files";
    m_toBlack = m_origin.madeAlpha && !fades;
    if (m_toBlack) m_reporter.Note(m_whyOpaque + "; the pictures are blended over black");
    m_reporter.Note("the encoder " + std::string(plan.encoder.codec->name) + " takes " +
                    FormatName(m_output.format));
    // Pictures in files are read with the BT.601 matrix whatever they say.
    m_only601 = plan.IsStill() && HasColourRange(m_output.format);
    if (NeedsPalette()) m_toPalette.emplace();
    m_toEncoder.emplace(NeedsPalette() ? AV_PIX_FMT_BGRA : m_output.format, 0, 0, ScaleQuality::Bicubic,
                        m_output.range, m_only601 ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_UNSPECIFIED);
}

AVFramePtr PictureOutput::Convert(AVFramePtr picture) {
    if (m_toBlack) {
        picture = mediabridge::FlattenOverBlack(std::move(picture));
        if (!picture) throw NoMemory("no memory for a picture blended over black");
    } else {
        m_alpha.Watch(*picture, m_output.format, m_whyOpaque, m_reporter);
    }
    if (m_output.Converts(*picture) || (m_only601 && !Is601(picture->colorspace))) {
        const bool fromRgb = !HasColourRange(FormatOf(*picture)) && HasColourRange(m_output.format);
        picture = ConvertWith(*m_toEncoder, *picture);
        // Unsaid counts as BT.601 here, but players guess BT.709 for large pictures.
        if (fromRgb && !HasColourRange(m_origin.clip.format) && picture->colorspace == AVCOL_SPC_UNSPECIFIED)
            picture->colorspace = AVCOL_SPC_SMPTE170M;
    }
    if (NeedsPalette() && FormatOf(*picture) != AV_PIX_FMT_PAL8)
        picture = m_toPalette->Apply(std::move(picture));
    picture->format = m_output.format;
    if (!HasColourRange(m_output.format)) picture->colorspace = AVCOL_SPC_UNSPECIFIED; // RGB has no matrix
    if (m_output.range != AVCOL_RANGE_UNSPECIFIED && HasColourRange(m_output.format)) {
        const bool saysLimited =
            m_output.range == AVCOL_RANGE_MPEG && picture->color_range == AVCOL_RANGE_UNSPECIFIED;
        if (!saysLimited) picture->color_range = m_output.range;
    }
    const bool fits = m_encodedSize == std::pair(picture->width, picture->height);
    return fits ? std::move(picture) : PadByEdge(*picture, m_encodedSize.first, m_encodedSize.second);
}

} // namespace aveffect
