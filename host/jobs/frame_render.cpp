#include "host/jobs/shown_frame.h"

#include <utility>

#include "host/jobs/picture_pipeline.h"
#include "host/media/right_clip.h"
#include "host/media/shown_pictures.h"
#include "host/output/output_file.h"
#include "host/output/still_picture.h"
#include "host/support/stages.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

/// What can be told before anything is opened.
OutputPlan PlanFrame(const FrameOptions& options, const std::string& path) {
    CheckPixelFormatName(options.pixelFormat);
    PlanStill(options.output, options.format); // says what pictures' formats there are
    OutputPlan plan = PlanOutput(options);
    if (plan.IsNumbered())
        throw Error(ErrorKind::Usage, options.output + " stands for many pictures, but a frame is one");
    OutputFile::Check(options.output, path, options.overwrite);
    if (options.atMs < 0) throw Error(ErrorKind::Usage, "the time of the picture is negative");
    return plan;
}

} // namespace

RenderResult RenderFrame(const Plugin& plugin, const FrameOptions& options, const RenderObserver& observer,
                         const std::atomic<bool>& cancel) {
    const SourceRequest request = ParseSourceUrl(options.input, options.streams);
    PlanFrame(options, request.path);
    Source source(request, Source::Others::None, 0, cancel);
    if (source.EndMs() && options.atMs > 0 && options.atMs >= *source.EndMs())
        throw Error(ErrorKind::Usage, SecondsText(options.atMs) + " is beyond the end of " + options.input +
                                          ", which lasts " + SecondsText(*source.EndMs()));
    ShownPictures pictures(source, cancel);
    ShownPicture shown{source, pictures.At(options.atMs), {}};
    shown.damage = source.Damage(1, {}, false);
    return RenderFrame(plugin, options, std::move(shown), observer, cancel);
}

RenderResult RenderFrame(const Plugin& plugin, const FrameOptions& options, ShownPicture shown,
                         const RenderObserver& observer, const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    const SourceRequest request = ParseSourceUrl(options.input, options.streams);
    const OutputPlan plan = PlanFrame(options, request.path);
    const Source& source = shown.source;
    PicturePipeline pictures(
        plugin,
        {options.effects, options.pixelFormat, options.sdr, options.stereo, options.framing, std::nullopt},
        source, ClipTimes(source, std::nullopt, std::nullopt), plan, reporter, cancel);
    pictures.RequireMedia();
    AVFramePtr picture = std::move(shown.picture), second;
    DamageReport damage = std::move(shown.damage);
    if (!options.stereo.right.empty()) {
        RightClip right(ParseSourceUrl(options.stereo.right), options.atMs, 0, reporter, cancel);
        second = right.At({picture->pts, source.Pictures().time_base});
        damage.Add(right.Damage());
    }
    picture = pictures.Make(std::move(picture), second.get());
    pictures.Conclude();
    const auto file = WriteStill(plan, std::move(picture), ReadPhotoMetadata(request.path, options.strip),
                                 options.overwrite, cancel);
    RenderProgress progress;
    progress.framesDone = 1;
    progress.framesExpected = 1;
    progress.secondsLeft = 0.0;
    reporter.Progress(progress);
    damage.Add(pictures.Media().Damage());
    RenderResult result{1, damage.Text()};
    file->Publish();
    return result;
}

} // namespace aveffect
