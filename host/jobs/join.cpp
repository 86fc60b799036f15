#include "host/jobs/composition.h"
#include "host/jobs/sequence_render.h"
#include "host/support/stages.h"

namespace aveffect {
namespace {

/// Every clip has to hold the transitions at its ends, one after the other.
void CheckLengths(const std::vector<ClipScan>& clips, AVRational rate, int64_t across) {
    for (size_t index = 0; index < clips.size(); ++index) {
        const ClipScan& clip = clips[index];
        if (clip.still)
            throw Error(ErrorKind::Usage, clip.request.path + " is a single picture; clips are joined");
        const bool inside = index > 0 && index + 1 < clips.size();
        if (clip.PicturesAt(rate) >= across * (inside ? 2 : 1)) continue;
        const std::string length = SecondsText(av_rescale_q(across, av_inv_q(rate), kMilliseconds));
        throw Error(ErrorKind::Usage, clip.request.path + " lasts " + SecondsText(clip.LengthMs()) +
                                          ", too short for a transition of " + length +
                                          (inside ? " at each of its ends" : ""));
    }
}

} // namespace

RenderResult RenderJoin(const Plugin& plugin, const JoinOptions& options, const RenderObserver& observer,
                        const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    const OutputPlan plan = PlanComposition(options.film, options.clips);
    if (options.clips.size() < 2) throw Error(ErrorKind::Usage, "two clips at least are joined");
    if (options.durationMs < 1) throw Error(ErrorKind::Usage, "the transition has no duration");
    IntakeTerms terms(options.film.sdr, reporter);
    std::vector<ClipScan> clips;
    for (const std::string& url : options.clips) clips.push_back(ScanClip(url, cancel));

    SequenceSetup setup;
    setup.transition = options.film.transition;
    setup.rate = NearestRate(plan, clips.front().rate);
    SayRate(plan, clips.front().rate, setup.rate, reporter);
    setup.across = PicturesIn(options.durationMs, setup.rate);
    RequireSeen(setup.across, options.durationMs, setup.rate);
    setup.threads = options.film.threads;
    CheckLengths(clips, setup.rate, setup.across);
    for (const ClipScan& clip : clips) setup.parts.push_back({&clip, clip.PicturesAt(setup.rate)});
    return RenderSequence(plugin, options.film, plan, std::move(setup), terms, reporter, cancel);
}

} // namespace aveffect
