#include "host/jobs/render.h"

#include <utility>

#include "host/effects/neutral_settings.h"
#include "host/jobs/picture_copy.h"
#include "host/jobs/render_plan.h"
#include "host/jobs/sound_render.h"
#include "host/media/input.h"
#include "host/output/numbered_output.h"
#include "host/output/output_file.h"
#include "host/picture/working_format.h"

namespace aveffect {

SourceRequest RequestOf(const RenderOptions& options) {
    return ParseSourceUrl(options.input, options.streams).At(options.rate);
}

RenderPlan PlanRender(const RenderOptions& options, const std::atomic<bool>& cancel) {
    CheckPixelFormatName(options.pixelFormat);
    const bool copies = AsksForCopy(options);
    OutputOptions output = options;
    if (copies) output.videoCodec.clear(); // which names no encoder
    RenderPlan plan{options, PlanOutput(output)};
    const std::string input = RequestOf(options).path;
    RequireOtherFiles(plan.output, input);
    OutputFile::Check(plan.output.FirstFile(), input, options.overwrite);
    if (!options.stereo.right.empty())
        OutputFile::Check(options.output, ParseSourceUrl(options.stereo.right).path, options.overwrite);
    if (plan.output.IsStill() && ChangesSound(options))
        throw Error(ErrorKind::Usage, "." + plan.output.Kind() + " files hold no sound");
    if (ChangesSound(options)) RequireRereadable(input); // sound is read apart from the pictures
    if (IsSoundRender(options, plan.output, cancel)) {
        RequireSoundOptions(options, plan.output);
        plan.kind = RenderPlan::Kind::Sound;
    } else if (copies || LeavesPictures(options, plan.output, cancel)) {
        if (plan.output.IsStill())
            throw Error(ErrorKind::Usage,
                        "." + plan.output.Kind() + " files are no clips into which pictures are copied");
        plan.kind = RenderPlan::Kind::Copy;
    }
    return plan;
}

RenderResult Render(const Plugin& plugin, const RenderOptions& options, const RenderObserver& observer,
                    const std::atomic<bool>& cancel) {
    RenderPlan plan = PlanRender(options, cancel);
    Reporter reporter(observer);
    WarnOfNeutral(options.audioEffects, 0, 0, reporter);
    switch (plan.kind) {
    case RenderPlan::Kind::Sound:
        return RenderSound(plugin, options, plan.output, observer, cancel);
    case RenderPlan::Kind::Copy:
        return RenderCopy(plugin, options, plan.output, observer, cancel);
    case RenderPlan::Kind::Clip:
        break;
    }
    return RenderClip(plugin, std::move(plan), observer, cancel);
}

} // namespace aveffect
