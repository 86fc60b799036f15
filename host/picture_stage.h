#pragma once
/// What happens to each picture between decoder and encoder.
#include <optional>
#include <string>

#include "host/effect_chain.h"
#include "host/output_format.h"
#include "host/picture_filter.h"
#include "host/reporter.h"
#include "host/view_pairs.h"
#include "host/working_format.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// Brings pictures into the working format, runs the effects on them as they are stored, turns them upright
/// where the output can't say how to, and brings them into the encoder's format. Without effects there is no
/// working format. Pictures that change size or format in mid-clip are brought to the first one's. Used by
/// one thread at a time.
class PictureStage {
public:
    /// An empty turn filter leaves pictures as they are. With pairs every picture gets its second view.
    /// Chain, reporter and pairs outlive the stage.
    PictureStage(EffectChain& chain, std::string pixelFormat, const std::string& turnFilter,
                 Reporter& reporter, ViewPairs* pairs = nullptr);

    /// Effects and turning. Time in milliseconds from the span's start. The second picture is the other
    /// view's, where the first one does not hold both. Throws Error.
    mediabridge::AVFramePtr ApplyEffects(mediabridge::AVFramePtr picture, int timeMs, unsigned durationMs,
                                         const AVFrame* second = nullptr);

    /// Chooses the encoder's format and size for pictures like this one, which ApplyEffects has returned.
    void PrepareOutput(const OutputPlan& plan, const AVFrame& picture);

    /// The picture in the encoder's format and size.
    mediabridge::AVFramePtr ConvertForEncoder(mediabridge::AVFramePtr picture);

private:
    void LearnFrom(const AVFrame& first);
    mediabridge::AVFramePtr ToWorkingFormat(mediabridge::AVFramePtr picture);
    AVPixelFormat WantedFormat() const;
    void PrepareSize(const OutputPlan& plan, const AVFrame& picture);

    EffectChain& m_chain;
    std::string m_pixelFormat;
    Reporter& m_reporter;
    ViewPairs* m_pairs;
    std::optional<ClipKind> m_clip;
    WorkingFormat m_working;
    int m_width = 0, m_height = 0;
    bool m_saidSizeChange = false;
    EncoderFormat m_output;
    std::pair<int, int> m_encodedSize; ///< of all pictures, at least their own
    bool m_viaRgb = false;             ///< the encoder's format can't name the pictures' matrix
    std::optional<mediabridge::Scaler> m_toWorking, m_toRgb, m_toEncoder;
    std::optional<PictureFilter> m_turner, m_toBlack;
};

} // namespace aveffect
