#include "host/jobs/film_plan.h"

#include "host/effects/transition_frame.h"
#include "host/media/source_request.h"
#include "host/output/output_file.h"

namespace aveffect {

int64_t PicturesIn(int64_t milliseconds, AVRational rate) {
    return av_rescale_q(milliseconds, kMilliseconds, av_inv_q(rate));
}

void RequirePictures(int64_t pictures, int64_t milliseconds, AVRational rate) {
    if (pictures > 0) return;
    const int64_t picture = av_rescale_q_rnd(1, av_inv_q(rate), kMilliseconds, AV_ROUND_UP);
    throw Error(ErrorKind::Usage, "a transition of " + SecondsText(milliseconds) +
                                      " is too short to be seen: a picture lasts " + SecondsText(picture));
}

OutputPlan PlanFilm(const FilmOptions& options, const std::vector<std::string>& inputs) {
    RequireTransition(options.transition);
    OutputPlan plan = PlanOutput(options.output, options.videoCodec, options.crf, options.preset,
                                 options.threads, options.outputFormat);
    if (plan.IsStill())
        throw Error(ErrorKind::Usage, options.output + " holds one picture, but the result is a clip");
    if (plan.IsSound())
        throw Error(ErrorKind::Usage,
                    options.output + " would hold sound alone, but the result has pictures");
    for (const std::string& input : inputs)
        OutputFile::Check(options.output, ParseSourceUrl(input).path, options.overwrite);
    return plan;
}

} // namespace aveffect
