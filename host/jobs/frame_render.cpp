#include "host/jobs/render.h"

#include <utility>

#include "host/jobs/picture_pipeline.h"
#include "host/media/right_clip.h"
#include "host/output/output_file.h"
#include "host/output/still_picture.h"
#include "host/support/stages.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

// The picture shown at a moment: the last one that starts at or before it, or the clip's first.
AVFramePtr FindPicture(Source& source, int64_t atMs, const std::atomic<bool>& cancel) {
    const AVRational base = source.Pictures().time_base;
    source.SeekBefore(atMs);
    AVFramePtr shown;
    while (std::optional<SourceItem> item = source.Next()) {
        CheckCancel(cancel);
        if (!item->picture) continue;
        if (shown && av_compare_ts(item->picture->pts, base, atMs, kMilliseconds) > 0) return shown;
        shown = std::move(item->picture);
    }
    if (!shown) throw Error(ErrorKind::Input, source.Path() + " holds no picture that can be decoded");
    const int64_t end = av_rescale_q(shown->pts + shown->pkt_duration, base, kMilliseconds);
    if (!source.EndMs() && atMs > 0 && atMs >= end)
        throw Error(ErrorKind::Usage, SecondsText(atMs) + " is beyond the end of " + source.Path() +
                                          ", which lasts " + SecondsText(end));
    return shown;
}

} // namespace

RenderResult RenderFrame(const Plugin& plugin, const FrameOptions& options, const RenderObserver& observer,
                         const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    CheckPixelFormatName(options.pixelFormat);
    PlanStill(options.output, options.format); // says what pictures' formats there are
    const OutputPlan plan = PlanOutput(options);
    if (plan.IsNumbered())
        throw Error(ErrorKind::Usage, options.output + " stands for many pictures, but a frame is one");
    const SourceRequest request = ParseSourceUrl(options.input, options.streams);
    OutputFile::Check(options.output, request.path, options.overwrite);
    if (options.atMs < 0) throw Error(ErrorKind::Usage, "the time of the picture is negative");
    Source source(request, Source::Others::None, 0, cancel);
    if (source.EndMs() && options.atMs > 0 && options.atMs >= *source.EndMs())
        throw Error(ErrorKind::Usage, SecondsText(options.atMs) + " is beyond the end of " + options.input +
                                          ", which lasts " + SecondsText(*source.EndMs()));
    PicturePipeline pictures(
        plugin,
        {options.effects, options.pixelFormat, options.sdr, options.stereo, options.framing, std::nullopt},
        source, ClipTimes(source, std::nullopt, std::nullopt), plan, reporter, cancel);
    pictures.RequireMedia();
    AVFramePtr picture = FindPicture(source, options.atMs, cancel), second;
    DamageReport damage = source.Damage(1, {}, false);
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
