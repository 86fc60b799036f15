#pragma once
/// A clip's pictures on their way from the decoder to an output.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/effects/picture_stage.h"
#include "host/effects/view_pairs.h"
#include "host/media/media_manager.h"
#include "host/media/source.h"
#include "host/output/output_plan.h"
#include "host/output/picture_output.h"

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

/// Effects, and the form in which an encoder takes what they give. Used by one thread at a time.
class PicturePipeline {
public:
    /// Makes the effects, for so much of the source; absent: as long as it tells nobody. All arguments but
    /// the length outlive the pipeline. Throws Error (Effect, Usage, Interrupted).
    PicturePipeline(const Plugin& plugin, const PictureTask& task, const Source& source,
                    std::optional<int64_t> lengthMs, const OutputPlan& plan, Reporter& reporter,
                    const std::atomic<bool>& cancel);

    /// Refuses what the effects name and can't be read as pictures. Throws Error.
    void RequireMedia();

    /// Turning and effects; pts and pkt_duration in the source's base, or in ticks of the rate, from the
    /// span's start. The second picture is the other view's, where there is one. Throws Error.
    mediabridge::AVFramePtr ApplyEffects(mediabridge::AVFramePtr picture, const AVFrame* second);

    /// Into the encoder's format and size. The first picture decides for all. Throws Error.
    mediabridge::AVFramePtr ForEncoder(mediabridge::AVFramePtr picture);

    /// Says in the end what is said once for all pictures.
    void Conclude() { m_terms.Conclude(); }

    /// What effects read files through.
    MediaManager& Media() noexcept { return m_media; }
    /// Milliseconds that the effects are told of.
    uint32_t LengthMs() const noexcept { return m_length; }
    /// Whether the last picture was turned.
    bool Turned() const noexcept { return m_stage.Turned(); }
    /// How the pictures hold two views, where effects made them so.
    std::optional<Presentation> Views() const;

private:
    const PictureTask m_task;
    const OutputPlan& m_plan;
    Reporter& m_reporter;
    const AVRational m_base; ///< of the pictures' times
    IntakeTerms m_terms;
    MediaManager m_media;
    const uint32_t m_length;
    EffectChain m_chain;
    std::unique_ptr<ViewPairs> m_pairs;
    PictureStage m_stage;
    Framer m_framer; ///< behind the effects
    std::optional<PictureOutput> m_output;
};

} // namespace aveffect
