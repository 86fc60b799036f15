#pragma once
/// What happens to each picture between decoder and output.
#include <optional>
#include <string>

#include "host/effects/effect_chain.h"
#include "host/effects/view_pairs.h"
#include "host/media/media_manager.h"
#include "host/picture/framer.h"
#include "host/picture/orientation.h"
#include "host/picture/picture_intake.h"
#include "host/picture/transparency.h"
#include "host/picture/working_format.h"
#include "host/support/reporter.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// Turns pictures upright, brings them into the working format and runs the effects on them. Without effects
/// there is no working format. Pictures that change size or format in mid-clip are brought to the first
/// one's. Used by one thread at a time.
class PictureStage {
public:
    /// Pictures are turned by that stream's word or their own, without a stream not at all. With pairs every
    /// picture gets its second view. Chain, the manager that its effects read pictures through, stream,
    /// terms, reporter and pairs outlive the stage.
    PictureStage(EffectChain& chain, MediaManager& media, std::string pixelFormat, const AVStream* uprightBy,
                 IntakeTerms& terms, Reporter& reporter, ViewPairs* pairs = nullptr);

    /// Cuts and scales the pictures before the effects.
    void Frame(const Framing& framing) { m_framer = Framer(framing); }

    /// Turning and effects. Time in milliseconds from the span's start. The second picture is the other
    /// view's, where the first one does not hold both. Numbers are as EffectChain has them. Throws Error.
    mediabridge::AVFramePtr ApplyEffects(mediabridge::AVFramePtr picture, int timeMs, unsigned durationMs,
                                         const AVFrame* second = nullptr, std::optional<int64_t> number = {});

    /// Of a picture in the working format.
    size_t WorkingBytes() const;

    /// Of the pictures that ApplyEffects has returned. The output looks like the clip, in the bits that the
    /// effects worked in; grey clips may have been given colour, and any clip transparency.
    PictureOrigin Origin() const;

    /// Whether the last picture was turned.
    bool Turned() const noexcept { return m_upright.Turned(); }

private:
    void LearnFrom(const AVFrame& first);
    mediabridge::AVFramePtr TakeSecond(const AVFrame& second, bool standard);
    bool IsInWorkingFormat(const AVFrame& picture) const;
    mediabridge::AVFramePtr ToWorkingFormat(mediabridge::AVFramePtr picture);
    AVPixelFormat WantedFormat() const;

    EffectChain& m_chain;
    MediaManager& m_media;
    std::string m_pixelFormat;
    const AVStream* m_uprightBy;
    IntakeTerms& m_terms;
    Reporter& m_reporter;
    ViewPairs* m_pairs;
    std::optional<ClipKind> m_clip;
    WorkingFormat m_working;
    int m_width = 0, m_height = 0;
    bool m_saidNeutral = false;
    AlphaLoss m_alpha;
    std::optional<mediabridge::Scaler> m_toWorking;
    PictureIntake m_intake, m_secondIntake;
    Upright m_upright;
    Framer m_framer;
};

} // namespace aveffect
