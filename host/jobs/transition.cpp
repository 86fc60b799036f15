#include "host/jobs/transition.h"

#include <utility>

#include "host/effects/media_check.h"
#include "host/effects/transition_frame.h"
#include "host/jobs/composition.h"
#include "host/jobs/film_framing.h"
#include "host/jobs/sequence_render.h"
#include "host/media/media_manager.h"
#include "host/media/media_reader.h"
#include "host/picture/framer.h"
#include "host/picture/light_metadata.h"
#include "host/support/ordered_workers.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;

/// Where the result's pictures begin to be others. Each is rounded for itself, so that the whole is as long
/// as was asked for.
struct Marks {
    int64_t begin; ///< of the transition's span
    int64_t start; ///< of the transition in it
    int64_t end;   ///< of both
    int64_t count; ///< of all pictures
};

Marks MarksOf(const TransitionOptions& options, AVRational rate) {
    const auto at = [&](int64_t milliseconds) {
        return PicturesIn(options.holdBeforeMs + milliseconds, rate);
    };
    const Marks marks{at(0), at(options.startMs), at(options.durationMs),
                      at(options.durationMs + options.holdAfterMs)};
    RequireSeen(marks.end - marks.start, options.durationMs - options.startMs, rate);
    return marks;
}

AVRational RateOf(const TransitionOptions& options, const std::atomic<bool>& cancel) {
    if (options.film.rate) return *options.film.rate;
    return Source(ParseSourceUrl(options.first), Source::Others::None, 1, cancel).FrameRate();
}

/// Gives a picture what the clip's first one and its stream say of the light.
void KeepLightOf(const std::string& url, AVFrame& picture, const std::atomic<bool>& cancel) {
    Source source(ParseSourceUrl(url), Source::Others::None, 1, cancel);
    while (const std::optional<SourceItem> item = source.Next()) {
        if (!item->picture) continue;
        KeepLight(*item->picture, picture);
        break;
    }
    KeepLight(source.Pictures(), picture);
}

/// The URL of a clip's last picture, unless it says which one it means. A server's URL stays as it is.
std::string LastOf(const std::string& url) {
    if (!IsLocalPath(url) || LastPictureWanted(url)) return url;
    return url + (ParseSourceUrl(url).path.size() < url.size() ? "&" : "?") + "picture=last";
}

/// Which picture stands for a clip that has several and does not say so itself; else its name.
struct Standing {
    std::string text;
    bool chosen; ///< by the program
};

bool IsStill(const SourceRequest& request, const std::atomic<bool>& cancel) {
    Source source(request, Source::Others::None, 1, cancel);
    return !source.Next() || !source.Next();
}

Standing StandingFor(const std::string& url, bool last, const std::atomic<bool>& cancel) {
    const SourceRequest request = ParseSourceUrl(url);
    if (LastPictureWanted(url) || IsStill(request, cancel)) return {request.path, false};
    return {std::string(last ? "the last" : "the first") + " picture of " + request.path, true};
}

void SayPictures(const std::string& first, const TransitionOptions& options, Reporter& reporter,
                 const std::atomic<bool>& cancel) {
    const Standing from = StandingFor(options.first, first != options.first, cancel);
    const Standing to = StandingFor(options.second, false, cancel);
    if (from.chosen || to.chosen)
        reporter.Remark("the transition shows " + from.text + " and " + to.text + "; with --live clips play");
}

/// A transition between two pictures that stand still.
class StillTransition {
public:
    StillTransition(const Plugin& plugin, const TransitionOptions& options, const OutputPlan& plan,
                    IntakeTerms& terms, Reporter& reporter, const std::atomic<bool>& cancel)
        : m_options(options)
        , m_first(LastOf(options.first))
        , m_manager(&cancel)
        , m_canvas(MakeCanvas(terms, reporter, cancel))
        , m_wanted(RequireFilmRate(RateOf(options, cancel)))
        , m_rate(NearestRate(plan, m_wanted))
        , m_marks(MarksOf(options, m_rate))
        , m_plugin(plugin)
        , m_chains(WorkerCount(options.film.threads)) {}

    AVRational WantedRate() const { return m_wanted; }
    AVRational Rate() const { return m_rate; }
    int64_t Pictures() const { return m_marks.count; }
    const std::string& First() const { return m_first; }
    DamageReport Damage() const { return m_manager.Damage(); }

    AVFramePtr Draw(int64_t index, unsigned worker) {
        const int64_t time = av_rescale_q(index, av_inv_q(m_rate), kMilliseconds) - m_options.holdBeforeMs;
        Chains& chains = m_chains[worker];
        if (index < m_marks.end) return DrawTransition(Made(chains.across, m_first), m_canvas, time);
        // Transitions go on beyond their end in ways of their own; before their start they show a picture.
        return DrawTransition(Made(chains.last, m_options.second), m_canvas, m_options.startMs - 1);
    }

    unsigned Workers() const { return static_cast<unsigned>(m_chains.size()); }

private:
    Canvas MakeCanvas(IntakeTerms& terms, Reporter& reporter, const std::atomic<bool>& cancel) {
        m_manager.TakeOn(terms);
        Canvas canvas = RequirePicture(m_manager, m_first);
        RequirePicture(m_manager, m_options.second);
        m_manager.Match(canvas);
        const SourceRequest request = ParseSourceUrl(m_first);
        const Framing framing =
            FilmFraming(m_options.film.framing, {request.path, canvas, IsStill(request, cancel)}, reporter);
        m_manager.Frame(framing);
        const PictureSize size = Framer(framing).SizeFor({canvas.width, canvas.height}, 1);
        canvas.width = size.width;
        canvas.height = size.height;
        return canvas;
    }

    /// A worker's own; each reads the pictures for itself.
    struct Chains {
        std::unique_ptr<EffectChain> across;
        std::unique_ptr<EffectChain> last; ///< from the second picture to itself
    };

    EffectChain& Made(std::unique_ptr<EffectChain>& chain, const std::string& first) {
        const std::vector<EffectSpec> effects = {TransitionSpec(m_options.transition, first, m_options.second,
                                                                m_options.startMs, m_options.durationMs)};
        if (!chain)
            chain = std::make_unique<EffectChain>(m_plugin, &m_manager, effects,
                                                  TimeSpan{0, m_options.durationMs});
        return *chain;
    }

    const TransitionOptions& m_options;
    std::string m_first; ///< where its picture is read
    MediaManager m_manager;
    Canvas m_canvas;
    AVRational m_wanted;
    AVRational m_rate;
    Marks m_marks;
    const Plugin& m_plugin;
    std::vector<Chains> m_chains; ///< by workers
};

RenderResult RenderStill(const Plugin& plugin, const TransitionOptions& options, const OutputPlan& plan,
                         IntakeTerms& terms, Reporter& reporter, const std::atomic<bool>& cancel) {
    StillTransition transition(plugin, options, plan, terms, reporter, cancel);
    Composition composition{transition.Rate(), transition.Pictures(),
                            [&](int64_t index) -> Drawing {
                                return [&, index](unsigned worker) { return transition.Draw(index, worker); };
                            },
                            [&] { return transition.Damage(); }, transition.Workers()};
    SayPictures(transition.First(), options, reporter, cancel);
    SayRate(plan, transition.WantedRate(), transition.Rate(), reporter);
    AVFramePtr look = transition.Draw(0, 0);
    if (IsHighDynamicRange(*look)) KeepLightOf(options.first, *look, cancel);
    return RenderComposition(std::move(composition), plan, options.film, std::move(look), terms, reporter,
                             cancel);
}

/// Both clips play; see TransitionOptions::live.
RenderResult RenderLive(const Plugin& plugin, const TransitionOptions& options, const OutputPlan& plan,
                        IntakeTerms& terms, Reporter& reporter, const std::atomic<bool>& cancel) {
    const std::optional<AVRational> asked = options.film.rate;
    const ClipScan first = ScanClip(ParseSourceUrl(options.first).At(asked), cancel);
    const ClipScan second = ScanClip(ParseSourceUrl(options.second).At(asked), cancel);
    const AVRational wanted = asked.value_or(first.rate);
    RequireFilmRate(wanted);
    const AVRational rate = NearestRate(plan, wanted);
    SayRate(plan, wanted, rate, reporter);
    const Marks marks = MarksOf(options, rate);
    SequenceSetup sequence{rate,
                           {{&first, marks.end, {options.transition, marks.end - marks.start}},
                            {&second, marks.count - marks.start}}};
    for (const SequencePart& part : sequence.parts) RequireLong(part, rate);
    sequence.squarePixels = true;
    sequence.threads = options.film.threads;
    return RenderSequence(plugin, options.film, plan, std::move(sequence), terms, reporter, cancel);
}

} // namespace

RenderResult RenderTransition(const Plugin& plugin, const TransitionOptions& options,
                              const RenderObserver& observer, const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    RequireTransition(options.transition);
    const OutputPlan plan = PlanComposition(options.film, {options.first, options.second});
    if (options.durationMs < 1) throw Error(ErrorKind::Usage, "the transition has no duration");
    if (options.startMs >= options.durationMs)
        throw Error(ErrorKind::Usage, "the transition starts at " + SecondsText(options.startMs) +
                                          ", which is not before its end at " +
                                          SecondsText(options.durationMs));
    IntakeTerms terms(options.film.sdr, reporter);
    return options.live ? RenderLive(plugin, options, plan, terms, reporter, cancel)
                        : RenderStill(plugin, options, plan, terms, reporter, cancel);
}

} // namespace aveffect
