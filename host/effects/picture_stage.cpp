#include "host/effects/picture_stage.h"

#include <tuple>
#include <utility>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "host/output/encoder.h"
#include "host/picture/edge_padding.h"
#include "host/support/error.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"
#include "mediabridge/video_frame.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;
using mediabridge::HasColourRange;
using mediabridge::Is601;
using mediabridge::ScaleQuality;

AVPixelFormat FormatOf(const AVFrame& picture) { return static_cast<AVPixelFormat>(picture.format); }

} // namespace

PictureStage::PictureStage(EffectChain& chain, MediaManager& media, std::string pixelFormat,
                           const AVStream* uprightBy, Reporter& reporter, ViewPairs* pairs)
    : m_chain(chain)
    , m_media(media)
    , m_pixelFormat(std::move(pixelFormat))
    , m_uprightBy(uprightBy)
    , m_reporter(reporter)
    , m_pairs(pairs) {}

void PictureStage::LearnFrom(const AVFrame& first) {
    m_clip = ClipKind{FormatOf(first), first.color_range};
    m_media.Match(CanvasOf(first));
    m_width = first.width;
    m_height = first.height;
    if (m_chain.Empty()) {
        m_working = {0, FormatOf(first), AVCOL_RANGE_UNSPECIFIED};
        return;
    }
    m_working = ChooseWorkingFormat(
        m_pixelFormat, first, {m_chain.ChangesAlpha(), m_chain.ServesFewFormats(), m_chain.GoesThroughRgb()});
    if (m_chain.ChangesAlpha() && !HasAlpha(m_working.format))
        m_reporter.Warn("an effect changes transparency, but " + m_pixelFormat +
                        " has none; try --pixel-format auto, bgra, yuva420p or yuva444p");
    const std::string own = FormatName(m_clip->format);
    const std::string working = mediabridge::FrameFormatName(m_working.id);
    const int depth = BitDepth(m_clip->format);
    m_reporter.Note(own == working ? "effects work in " + working + ", as the pictures are"
                                   : "pictures are " + own + "; effects work in " + working);
    if (depth > BitDepth(m_working.format))
        m_reporter.Warn("effects work in 8 bits; the pictures' " + std::to_string(depth) +
                        " bits are brought to 8 with dithering");
}

bool PictureStage::IsInWorkingFormat(const AVFrame& picture) const {
    if (m_chain.Empty()) return FormatOf(picture) == m_working.format;
    if (mediabridge::FrameFormat(FormatOf(picture), picture.color_range) != m_working.id) return false;
    return m_working.matrix == AVCOL_SPC_UNSPECIFIED ||
           (Is601(picture.colorspace) && picture.color_range == m_working.range);
}

AVFramePtr PictureStage::ToWorkingFormat(AVFramePtr picture) {
    const bool sameSize = picture->width == m_width && picture->height == m_height;
    if (!sameSize && !std::exchange(m_saidSizeChange, true))
        m_reporter.Warn("pictures change from " + std::to_string(m_width) + "x" + std::to_string(m_height) +
                        " to " + std::to_string(picture->width) + "x" + std::to_string(picture->height) +
                        "; they are scaled to the first size");
    if (sameSize && IsInWorkingFormat(*picture)) return picture;
    if (!HasColourRange(m_working.format) && BitDepth(m_working.format) == 8)
        picture = m_toEightBits.Apply(std::move(picture));
    if (!m_toWorking)
        m_toWorking.emplace(m_working.format, m_width, m_height, ScaleQuality::Bicubic, m_working.range,
                            m_working.matrix);
    return ConvertWith(*m_toWorking, *picture);
}

AVFramePtr PictureStage::ApplyEffects(AVFramePtr picture, int timeMs, unsigned durationMs,
                                      const AVFrame* second) {
    AVFramePtr right;
    if (m_uprightBy) picture = m_upright.Apply(std::move(picture), *m_uprightBy);
    if (m_toSdr) picture = m_toSdr->Apply(std::move(picture));
    if (m_pairs && !second) std::tie(picture, right) = m_pairs->Split(*picture);
    if (!m_clip) LearnFrom(*picture);
    picture = ToWorkingFormat(std::move(picture));
    if (second)
        right = m_pairs->Fit(*second, picture, m_working);
    else if (right)
        right = ToWorkingFormat(std::move(right));
    if (!m_chain.Empty()) {
        if (!av_frame_is_writable(picture.get())) picture = mediabridge::CopyPicture(picture.get());
        const auto frame =
            picture ? mediabridge::VideoFrame::Wrap(picture.get(), timeMs, durationMs) : nullptr;
        if (!frame) throw Error(ErrorKind::Effect, "no memory for a picture");
        if (right) frame->SetSubsetFrame(m_pairs->Prepare(*right, timeMs, durationMs));
        m_chain.Process(frame.get(), timeMs);
        if (const auto views = m_chain.Views()) MarkPicture(*picture, *views);
    }
    return picture;
}

// The output looks like the clip, in the bits that the effects worked in. Grey clips may have been given
// colour, and any clip transparency.
AVPixelFormat PictureStage::WantedFormat() const {
    if (m_chain.Empty()) return m_clip->format;
    if (m_chain.ChangesAlpha()) return m_working.format;
    const AVPixelFormat kind = EightBitKind(m_clip->format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(kind);
    const bool grey = descriptor->nb_components <= 2;
    return grey ? m_working.format : kind;
}

void PictureStage::PrepareSize(const OutputPlan& plan, const AVFrame& picture) {
    const AVFramePtr sample(av_frame_clone(&picture));
    if (!sample) throw Error(ErrorKind::Output, "no memory for a picture");
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
void PictureStage::SayDepth(const OutputPlan& plan) {
    const int depth = BitDepth(m_clip->format);
    if (plan.IsStill() || !m_chain.Empty() || depth <= 8 || BitDepth(m_output.format) > 8) return;
    const std::string format = FormatName(AV_PIX_FMT_YUV420P10);
    const bool could = TakesFormat(*plan.encoder.codec, AV_PIX_FMT_YUV420P10);
    m_reporter.Warn("the pictures' " + std::to_string(depth) + " bits are brought to 8 with dithering" +
                    (could ? "; --output-format " + format + " writes 10" : ""));
}

void PictureStage::PrepareOutput(const OutputPlan& plan, const AVFrame& picture) {
    m_output = ChooseEncoderFormat(plan, WantedFormat(), *m_clip, picture);
    SayDepth(plan);
    PrepareSize(plan, picture);
    if (m_chain.ChangesAlpha() && HasAlpha(m_working.format) && !HasAlpha(m_output.format)) {
        m_toBlack.emplace("premultiply=inplace=1", "blended over black");
        m_reporter.Note(std::string(plan.encoder.codec->name) + " keeps no transparency in ." + plan.Kind() +
                        " files; the pictures are blended over black");
    } else if (m_output.losesAlpha)
        m_reporter.Warn(std::string(plan.encoder.codec->name) + " keeps no transparency in ." + plan.Kind() +
                        " files; the pictures become opaque");
    m_reporter.Note("the encoder " + std::string(plan.encoder.codec->name) + " takes " +
                    FormatName(m_output.format));
    // Pictures in files are read with the BT.601 matrix whatever they say.
    m_only601 = plan.IsStill() && HasColourRange(m_output.format);
    m_toEncoder.emplace(m_output.format, 0, 0, ScaleQuality::Bicubic, m_output.range,
                        m_only601 ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_UNSPECIFIED);
}

AVFramePtr PictureStage::ConvertForEncoder(AVFramePtr picture) {
    if (m_toBlack) picture = m_toBlack->Apply(std::move(picture));
    if (m_output.Converts(*picture) || (m_only601 && !Is601(picture->colorspace))) {
        const bool fromRgb = !HasColourRange(FormatOf(*picture)) && HasColourRange(m_output.format);
        picture = ConvertWith(*m_toEncoder, *picture);
        // Unsaid counts as BT.601 here, but players guess BT.709 for large pictures.
        if (fromRgb && !HasColourRange(m_clip->format) && picture->colorspace == AVCOL_SPC_UNSPECIFIED)
            picture->colorspace = AVCOL_SPC_SMPTE170M;
    }
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
