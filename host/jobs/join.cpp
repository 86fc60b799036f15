#include <algorithm>

#include "host/effects/transition_frame.h"
#include "host/jobs/composition.h"
#include "host/jobs/sequence_render.h"
#include "host/support/stages.h"

namespace aveffect {
namespace {

constexpr AVRational kRateOfStills{25, 1};

/// The names and numbers, before any file is read.
void Check(const JoinOptions& options) {
    const size_t clips = options.clips.size(), seams = options.seams.size();
    if (clips < 2) throw Error(ErrorKind::Usage, "two clips at least are joined");
    if (seams != 1 && seams + 1 != clips)
        throw Error(ErrorKind::Usage, std::to_string(clips) + " clips have " + std::to_string(clips - 1) +
                                          (clips == 2 ? " seam, but " : " seams, but ") +
                                          std::to_string(seams) +
                                          " transitions are given; give one for all or one for each");
    for (const JoinSeam& seam : options.seams)
        if (seam.durationMs > 0 || !seam.transition.empty()) RequireTransition(seam.transition);
}

std::vector<ClipScan> ScanClips(const JoinOptions& options, const std::atomic<bool>& cancel) {
    std::vector<ClipScan> scans;
    scans.reserve(options.clips.size());
    for (const JoinClip& clip : options.clips)
        scans.push_back(ScanClip(ParseSourceUrl(clip.url).At(options.film.rate), cancel, clip.end));
    if (!options.clipSound)
        for (ClipScan& scan : scans) scan.sound.reset();
    return scans;
}

/// The first that moves; the first of all when none does.
size_t ModelOf(const std::vector<ClipScan>& clips) {
    const auto moving = std::ranges::find(clips, false, &ClipScan::still);
    return moving == clips.end() ? 0 : static_cast<size_t>(moving - clips.begin());
}

SequencePart MakePart(const ClipScan& clip, const std::optional<int64_t>& lengthMs, int64_t pictureMs,
                      AVRational rate) {
    const bool whole = !clip.still && !lengthMs;
    const int64_t pictures =
        whole ? clip.PicturesAt(rate) : std::max<int64_t>(1, PicturesIn(lengthMs.value_or(pictureMs), rate));
    SequencePart part{&clip, pictures};
    RequireLong(part, rate);
    return part;
}

Seam MakeSeam(const JoinSeam& seam, AVRational rate) {
    if (seam.durationMs == 0) return {};
    Seam made{seam.transition, PicturesIn(seam.durationMs, rate)};
    RequireSeen(made.pictures, seam.durationMs, rate);
    return made;
}

/// Every part has to hold the transitions at its ends, one after the other.
void CheckLengths(const std::vector<SequencePart>& parts, AVRational rate) {
    const auto seconds = [&](int64_t pictures) {
        return SecondsText(av_rescale_q(pictures, av_inv_q(rate), kMilliseconds));
    };
    int64_t before = 0;
    for (const SequencePart& part : parts) {
        const int64_t after = part.seam.pictures;
        if (part.pictures < before + after) {
            const std::string length = before == 0 || after == 0 ? seconds(before + after)
                                       : before == after         ? seconds(after) + " at each of its ends"
                                                         : seconds(before) + " at its beginning and one of " +
                                                               seconds(after) + " at its end";
            throw Error(ErrorKind::Usage, part.clip->request.path + " lasts " + seconds(part.pictures) +
                                              ", too short for a transition of " + length);
        }
        before = after;
    }
}

OutputPlan PlanJoin(const JoinOptions& options) {
    Check(options);
    std::vector<std::string> inputs;
    for (const JoinClip& clip : options.clips) inputs.push_back(clip.url);
    if (options.music) inputs.push_back(options.music->url);
    return PlanComposition(options.film, inputs);
}

/// The clips outlive the setup.
SequenceSetup SetUp(const JoinOptions& options, const OutputPlan& plan, const std::vector<ClipScan>& clips,
                    Reporter& reporter, const std::atomic<bool>& cancel) {
    SequenceSetup setup;
    setup.model = ModelOf(clips);
    const ClipScan& model = clips[setup.model];
    const AVRational wanted = options.film.rate.value_or(model.still ? kRateOfStills : model.rate);
    RequireFilmRate(wanted);
    setup.rate = NearestRate(plan, wanted);
    SayRate(plan, wanted, setup.rate, reporter);
    if (const auto& music = options.music)
        setup.music = Music{FindMusic(music->url, cancel), music->fadeInMs, music->fadeOutMs, music->volume};
    setup.threads = options.film.threads;
    for (size_t index = 0; index < clips.size(); ++index) {
        SequencePart part =
            MakePart(clips[index], options.clips[index].lengthMs, options.pictureMs, setup.rate);
        if (index + 1 < clips.size())
            part.seam =
                MakeSeam(options.seams.size() == 1 ? options.seams[0] : options.seams[index], setup.rate);
        setup.parts.push_back(part);
    }
    CheckLengths(setup.parts, setup.rate);
    return setup;
}

} // namespace

RenderResult RenderJoin(const Plugin& plugin, const JoinOptions& options, const RenderObserver& observer,
                        const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    const OutputPlan plan = PlanJoin(options);
    IntakeTerms terms(options.film.sdr, reporter);
    const std::vector<ClipScan> clips = ScanClips(options, cancel);
    return RenderSequence(plugin, options.film, plan, SetUp(options, plan, clips, reporter, cancel), terms,
                          reporter, cancel);
}

FilmShape ShapeOfJoin(const JoinOptions& options, const RenderObserver& observer,
                      const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    const OutputPlan plan = PlanJoin(options);
    const std::vector<ClipScan> clips = ScanClips(options, cancel);
    const SequenceSetup setup = SetUp(options, plan, clips, reporter, cancel);
    FilmShape shape{setup.rate, 0, {clips.begin(), clips.end()}};
    for (const SequencePart& part : setup.parts) shape.pictures += part.pictures - part.seam.pictures;
    return shape;
}

} // namespace aveffect
