#include "host/effects/picture_stage.h"

#include <algorithm>
#include <tuple>
#include <utility>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "host/effects/neutral_settings.h"
#include "host/support/error.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"
#include "mediabridge/video_frame.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;
using mediabridge::Is601;
using mediabridge::ScaleQuality;

AVPixelFormat FormatOf(const AVFrame& picture) { return static_cast<AVPixelFormat>(picture.format); }

} // namespace

PictureStage::PictureStage(EffectChain& chain, MediaManager& media, std::string pixelFormat,
                           const AVStream* uprightBy, IntakeTerms& terms, Reporter& reporter,
                           ViewPairs* pairs)
    : m_chain(chain)
    , m_media(media)
    , m_pixelFormat(std::move(pixelFormat))
    , m_uprightBy(uprightBy)
    , m_terms(terms)
    , m_reporter(reporter)
    , m_pairs(pairs)
    , m_intake(&terms)
    , m_secondIntake(&terms) {}

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
    if (depth > BitDepth(m_working.format)) m_terms.SayReduced(depth, "effects work in 8 bits; ");
}

bool PictureStage::IsInWorkingFormat(const AVFrame& picture) const {
    if (m_chain.Empty()) return FormatOf(picture) == m_working.format;
    if (mediabridge::FrameFormat(FormatOf(picture), picture.color_range) != m_working.id) return false;
    return m_working.matrix == AVCOL_SPC_UNSPECIFIED ||
           (Is601(picture.colorspace) && picture.color_range == m_working.range);
}

AVFramePtr PictureStage::ToWorkingFormat(AVFramePtr picture) {
    const bool sameSize = picture->width == m_width && picture->height == m_height;
    if (!sameSize) m_terms.SayChanged(m_width, m_height, *picture);
    if (sameSize && IsInWorkingFormat(*picture)) return picture;
    m_alpha.Watch(*picture, m_working.format, FormatName(m_working.format) + " has no transparency",
                  m_reporter);
    if (BitDepth(m_working.format) <= 8) picture = m_intake.Reduce(std::move(picture));
    if (sameSize && IsInWorkingFormat(*picture)) return picture;
    if (!m_toWorking)
        m_toWorking.emplace(m_working.format, m_width, m_height, ScaleQuality::Bicubic, m_working.range,
                            m_working.matrix);
    return ConvertWith(*m_toWorking, *picture);
}

AVFramePtr PictureStage::TakeSecond(const AVFrame& second, bool standard) {
    AVFramePtr picture(av_frame_clone(&second));
    if (!picture) throw NoMemory("no memory for a picture");
    return m_secondIntake.Reduce(m_secondIntake.Map(std::move(picture), standard));
}

AVFramePtr PictureStage::ApplyEffects(AVFramePtr picture, int timeMs, unsigned durationMs,
                                      const AVFrame* second, std::optional<int64_t> number) {
    AVFramePtr right;
    if (m_uprightBy) picture = m_upright.Apply(std::move(picture), *m_uprightBy);
    picture = m_framer.Apply(m_intake.Map(std::move(picture)));
    if (m_pairs && !second) std::tie(picture, right) = m_pairs->Split(*picture);
    if (!m_clip) LearnFrom(*picture);
    const bool standard = !IsHighDynamicRange(*picture);
    picture = ToWorkingFormat(std::move(picture));
    if (second)
        right = m_pairs->Fit(*TakeSecond(*second, standard), picture, m_working);
    else if (right)
        right = ToWorkingFormat(std::move(right));
    if (!m_chain.Empty()) {
        if (!av_frame_is_writable(picture.get())) picture = mediabridge::CopyPicture(picture.get());
        const auto frame =
            picture ? mediabridge::VideoFrame::Wrap(picture.get(), timeMs, durationMs) : nullptr;
        if (!frame) throw NoMemory("no memory for a picture");
        if (right) frame->SetSubsetFrame(m_pairs->Prepare(*right, timeMs, durationMs, number));
        m_chain.Process(frame.get(), timeMs, number);
        if (!std::exchange(m_saidNeutral, true)) // behind the first one: its size is known, settings are made
            WarnOfNeutral(m_chain.Effects(), static_cast<unsigned>(m_width), static_cast<unsigned>(m_height),
                          m_reporter);
        if (const auto views = m_chain.Views()) MarkPicture(*picture, *views);
    }
    return picture;
}

size_t PictureStage::WorkingBytes() const {
    return static_cast<size_t>(std::max(0, av_image_get_buffer_size(m_working.format, m_width, m_height, 1)));
}

AVPixelFormat PictureStage::WantedFormat() const {
    if (m_chain.Empty()) return m_clip->format;
    if (m_chain.ChangesAlpha()) return m_working.format;
    const AVPixelFormat kind = EightBitKind(m_clip->format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(kind);
    const bool grey = descriptor->nb_components <= 2;
    return grey ? m_working.format : kind;
}

PictureOrigin PictureStage::Origin() const {
    return {*m_clip, WantedFormat(), !m_chain.Empty(), m_chain.ChangesAlpha() && HasAlpha(m_working.format)};
}

} // namespace aveffect
