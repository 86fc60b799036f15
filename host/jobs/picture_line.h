#pragma once
/// The way of a clip's pictures from the decoder to an output, on one thread.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/effects/effect_times.h"
#include "host/effects/picture_stage.h"
#include "host/effects/view_pairs.h"
#include "host/media/media_manager.h"
#include "host/output/output_plan.h"
#include "host/output/picture_output.h"
#include "host/picture/framer.h"

namespace aveffect {

/// What is asked of the pictures; as in RenderOptions.
struct PictureTask {
    const std::vector<EffectSpec>& effects;
    const std::string& pixelFormat;
    bool sdr;
    const StereoOptions& stereo;
    const Framing& framing;
    std::optional<AVRational> rate; ///< at which they come; absent: at their own times
};

/// What all lines of one render share; what the references are to outlives them.
struct LineSetup {
    const Plugin& plugin;
    PictureTask task;
    const OutputPlan& plan;
    const AVStream* uprightBy; ///< as PictureStage has it
    EffectTimes times;         ///< start: known before the first picture
    AVRational base;           ///< of the pictures' times, which count from that start
    MediaManager& media;
    IntakeTerms& terms;
    Reporter& reporter;
};

/// Effects, and the form in which an encoder takes what they give. Used by one thread at a time.
class PictureLine {
public:
    /// Makes the effects. A further line shares with the first one, which outlives it, what EffectChain says.
    /// Throws Error (Effect, Usage, Interrupted).
    explicit PictureLine(const LineSetup& setup, PictureLine* first = nullptr);

    /// Turning, effects, format and size, by the first picture made. Second view and number are as
    /// PictureStage has them. Throws Error.
    mediabridge::AVFramePtr Make(mediabridge::AVFramePtr picture, const AVFrame* second,
                                 std::optional<int64_t> number);

    /// Of a picture on its way, at its largest. After the first one.
    size_t BytesOnTheWay() const { return m_bytes; }
    /// Whether the last picture was turned.
    bool Turned() const noexcept { return m_stage.Turned(); }
    std::optional<Presentation> Views() const { return m_chain.Views(); }
    /// As EffectChain::Stop().
    void Stop();
    /// As EffectChain::Spent().
    const EffectChain::Times& Spent() const noexcept { return m_chain.Spent(); }

private:
    int TimeOf(const AVFrame& picture) const;

    const LineSetup& m_setup;
    EffectChain m_chain;
    std::unique_ptr<ViewPairs> m_pairs;
    PictureStage m_stage;
    Framer m_framer; ///< behind the effects
    std::optional<PictureOutput> m_output;
    size_t m_bytes = 0;
};

/// Of a picture's samples.
size_t PictureBytes(const AVFrame& picture);

} // namespace aveffect
