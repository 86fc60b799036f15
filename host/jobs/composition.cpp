#include "host/jobs/composition.h"

#include <utility>

#include "host/media/source_request.h"
#include "host/output/media_writer.h"
#include "host/output/output_file.h"
#include "host/output/picture_output.h"
#include "host/picture/light_metadata.h"
#include "host/support/bounded_queue.h"
#include "host/support/progress_meter.h"
#include "host/support/stages.h"

namespace aveffect {

using mediabridge::AVFramePtr;

int64_t PicturesIn(int64_t milliseconds, AVRational rate) {
    return av_rescale_q(milliseconds, kMilliseconds, av_inv_q(rate));
}

void RequireSeen(int64_t pictures, int64_t milliseconds, AVRational rate) {
    if (pictures > 0) return;
    const int64_t picture = av_rescale_q_rnd(1, av_inv_q(rate), kMilliseconds, AV_ROUND_UP);
    throw Error(ErrorKind::Usage, "a transition of " + SecondsText(milliseconds) +
                                      " is too short to be seen: a picture lasts " + SecondsText(picture));
}

OutputPlan PlanComposition(const FilmOptions& options, const std::vector<std::string>& inputs) {
    OutputPlan plan = PlanOutput(options);
    if (plan.IsStill())
        throw Error(ErrorKind::Usage, options.output + " holds one picture, but the result is a clip");
    if (plan.IsSound())
        throw Error(ErrorKind::Usage,
                    options.output + " would hold sound alone, but the result has pictures");
    for (const std::string& input : inputs)
        OutputFile::Check(options.output, ParseSourceUrl(input).path, options.overwrite);
    return plan;
}

RenderResult RenderComposition(Composition composition, const OutputPlan& plan, bool overwrite,
                               const AVFrame& look, IntakeTerms& terms, Reporter& reporter,
                               const std::atomic<bool>& cancel) {
    PictureOutput output(plan, OriginOf(look), look, terms, reporter);
    ProgressMeter progress(reporter, composition.pictures);
    const auto encode = [&](MediaWriter& file, AVFramePtr picture) {
        picture->pts = file.Pictures();
        picture->pkt_duration = 1;
        file.WritePicture(std::move(picture));
    };
    AVFramePtr first = output.Convert(composition.draw(0));
    if (IsHighDynamicRange(*first)) KeepLight(look, *first);
    MediaWriter file(plan);
    MarkLight(file.AddPictures(*first, {av_inv_q(composition.rate), {composition.rate, true}}), *first);
    if (composition.sound) file.AddSound(std::move(*composition.sound));
    file.Start(overwrite, cancel);
    encode(file, std::move(first));

    BoundedQueue<AVFramePtr> drawn(kQueueWeight);
    StageGroup stages([&] { drawn.Stop(); });
    stages.Start([&] {
        for (int64_t index = 1; index < composition.pictures; ++index) {
            CheckCancel(cancel);
            if (!drawn.Push(composition.draw(index), kPictureWeight)) return;
        }
        drawn.Finish();
    });
    stages.Start([&] {
        while (std::optional<AVFramePtr> picture = drawn.Pop()) {
            CheckCancel(cancel);
            encode(file, output.Convert(std::move(*picture)));
            progress.Report(file.Pictures(), false);
        }
        if (drawn.Stopped()) return;
        file.EndStreams(file.PicturesEnd());
        file.Finish();
    });
    stages.Join();
    CheckCancel(cancel);
    progress.Report(file.Pictures(), true);
    terms.Conclude();
    file.Publish();
    DamageReport damage = composition.damage();
    damage.Add(file.Damage());
    return {file.Pictures(), damage.Text()};
}

} // namespace aveffect
