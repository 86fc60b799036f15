#pragma once
/// What a render of a clip reads.
#include <memory>
#include <optional>

#include "host/effects/effect_times.h"
#include "host/jobs/render_plan.h"
#include "host/media/right_clip.h"
#include "host/media/span.h"
#include "host/media/steady_pictures.h"

namespace aveffect {

/// The part of a clip that is rendered, and the right view's clip beside it. Used by one thread at a time.
class ClipInput {
public:
    /// Plan, reporter and flag outlive the input. Throws Error.
    ClipInput(const RenderPlan& plan, Reporter& reporter, const std::atomic<bool>& cancel);

    /// The next picture, with the right clip's of the same moment, or packet; absent at the end.
    std::optional<SpanItem> Next();

    /// The clip that effects' times refer to.
    TimeSpan Clip() const;
    /// Where in that clip the pictures' times count from. Once there is a picture.
    Moment Start() const;

    std::optional<int64_t> ExpectedPictures() const;
    DamageReport Damage() const;

    const SourceRequest request;
    Source source;
    const SpanLimits limits; ///< of what is read
    SpanReader span;

private:
    std::optional<SpanItem> Read();
    std::optional<SpanItem> Shared();

    const RenderOptions& m_options;
    std::optional<SteadyPictures> m_steady;
    std::unique_ptr<RightClip> m_right;
};

} // namespace aveffect
