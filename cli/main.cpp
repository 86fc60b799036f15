/// The program `aveffect`: lists effects, renders clips and pictures through them.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "aveffect/base_tools.h"
#include "cli/arguments.h"
#include "cli/batch_report.h"
#include "cli/catalogue_json.h"
#include "cli/catalogue_text.h"
#include "cli/command_reach.h"
#include "cli/confinement/confinement.h"
#include "cli/exit_code.h"
#include "cli/film_report.h"
#include "cli/interruption.h"
#include "cli/manual_page.h"
#include "cli/messages.h"
#include "cli/option_values.h"
#include "cli/player.h"
#include "cli/progress.h"
#include "cli/refused_calls.h"
#include "cli/shared_command.h"
#include "host/effects/plugin.h"
#include "host/settings/catalogue_lookup.h"
#include "host/support/durability.h"
#include "host/support/refusals.h"
#include "timeline/jobs/film_new.h"
#include "timeline/jobs/film_page.h"
#include "timeline/jobs/film_words.h"
#include "timeline/otio/metadata_schema.h"

namespace aveffect {

namespace {

constexpr int kJsonIndent = 2;

int PrintText(const std::string& text) {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (!written || std::fflush(stdout) != 0)
        throw Error(ErrorKind::Output, "can't write to standard output");
    return kDone;
}

/// What a failure means to the outside.
struct Failure {
    std::string message;
    int exitCode;
    std::string picture = {}; ///< to be shown under the message

    void Print() const noexcept {
        try {
            PrintMessage(message);
            PrintLines(picture);
        } catch (const std::bad_alloc&) {
            PrintNoMemory();
        }
    }
};

/// What --timeout ended says so first, and keeps the rest: "interrupted; nothing was written".
std::string TimedOut(const std::string& message) {
    const size_t rest = message.starts_with("interrupted") ? message.find(';') : 0;
    const std::string kept = rest == 0                   ? "; " + message
                             : rest == std::string::npos ? ""
                                                         : message.substr(rest);
    return "--timeout: the run took longer than " + std::to_string(EndedAfter()) + " ms" + kept;
}

/// Call from a catch block.
Failure CurrentFailure() noexcept {
    try {
        throw;
    } catch (const Error& error) {
        // Whatever fails behind a signal may do so because of it: reading that was given up looks like
        // damage.
        const int signal = InterruptingSignal();
        if (signal == 0 && TakeRefusal()) return {std::string("out of memory: ") + error.what(), kUnexpected};
        return {EndedAfter() > 0 ? TimedOut(error.what()) : error.what(),
                ExitCodeFor(signal != 0 ? ErrorKind::Interrupted : error.Kind(), signal), error.Picture()};
    } catch (const NoMemory& shortage) {
        return {shortage.what(), kUnexpected};
    } catch (const std::bad_alloc&) {
        return {"out of memory", kUnexpected};
    } catch (const std::exception& error) {
        return {std::string("unexpected error: ") + error.what(), kUnexpected};
    } catch (...) {
        return {"unexpected error", kUnexpected};
    }
}

RenderObserver MakeObserver(Progress& progress, int verbosity) {
    const auto say = [&progress](const std::string& text) {
        progress.Clear();
        PrintMessage(text);
    };
    RenderObserver observer;
    observer.progress = [&progress](const RenderProgress& state) { progress.Update(state); };
    observer.warning = [say](const std::string& text) { say("warning: " + text); };
    observer.remark = say;
    observer.note = [say, verbosity](const std::string& text) {
        if (verbosity > 0) say(text);
    };
    return observer;
}

constexpr char kOutputHolds[] = "; the output holds what could be decoded";

/// Before the first byte of media is parsed.
void Confine(const RunArguments& run, const Reach& reach, const RenderObserver& observer) {
    const std::string open = run.limits.noSandbox ? "" : Confine(reach);
    if (!open.empty()) observer.note(open);
}

/// Sets up what the commands that read media share, makes their options, raises the walls around what these
/// reach, runs the work, which takes the options and an observer, and tells how it ended, with what follows
/// from damage.
template <typename Make, typename Fence, typename Work>
int RunMedia(const RunArguments& run, ProgressStyle style, const std::string& output, Make make, Fence fence,
             Work work, const char* afterDamage = kOutputHolds) {
    RequireOwnOutput(style, output);
    CatchInterruptions();
    if (SeesRefusals()) CatchCrashesBehindRefusals();
    if (!output.empty()) RefusalsDoom(); // what is one run; others may go on with the next
    const auto progress = MakeProgress(style);
    try {
        if (run.verbosity > 1) AVBasedSetLogLevel(0);
        g_durableOutputs = run.sync;
        const RenderObserver observer = MakeObserver(*progress, run.verbosity);
        if (const std::string warning = ApplyCpuLevel(run.cpuLevel); !warning.empty())
            observer.warning(warning);
        ApplyLimits(run.limits);
        ApplySeed(run);
        const auto options = make();
        Confine(run, fence(options), observer);
        const RenderResult result = work(options, observer);
        // Files that were published are whole.
        if (output.empty() || output == "-") RequireNothingRefused("the answer");
        const int exitCode = result.inputDamage ? kDamagedInput : kDone;
        progress->Done(result, exitCode);
        if (result.inputDamage) PrintLines(*result.inputDamage + afterDamage);
        return exitCode;
    } catch (...) {
        const Failure failure = CurrentFailure();
        progress->Failed(failure.message, failure.exitCode);
        failure.Print();
        return failure.exitCode;
    }
}

int Run(const TextCommand& command) { return PrintText(command.text); }

int Run(const ListCommand& command) {
    return PrintText(command.json ? CatalogueJson().dump(kJsonIndent) + "\n" : ListText());
}

int Run(const DescribeCommand& command) {
    const AVBased::EffectInfo& effect = RequireEffect(command.effect);
    if (command.json) return PrintText(EffectJson(effect).dump(kJsonIndent) + "\n");
    const std::filesystem::path page = ManualPage(effect, ExecutableDirectory());
    return PrintText(DescribeText(effect) +
                     (page.empty() ? "" : "\nWith pictures\n  file://" + page.string() + "\n"));
}

constexpr auto kReachOf = [](const auto& options) { return ReachOf(options); };

int Run(const RenderCommand& command) {
    return RunMedia(
        command.media.run, command.progress, command.media.output,
        [&command] { return MakeRenderOptions(command); }, kReachOf,
        [](const RenderOptions& options, const RenderObserver& observer) {
            return Render(Plugin(), options, observer, Interrupted());
        });
}

int Run(const BatchCommand& command) {
    BatchReport report(command.json);
    const auto tell = [&report](const BatchOutcome& outcome) {
        PrintText(report.Line(outcome));
        PrintLines(BatchReport::Message(outcome));
    };
    const int exitCode = RunMedia(
        command.render.media.run, ProgressStyle::None, "",
        [&command] {
            BatchOptions options = MakeBatchOptions(command);
            PrepareBatch(options);
            return options;
        },
        kReachOf,
        [&tell](const BatchOptions& options, const RenderObserver& observer) {
            RenderBatch(Plugin(), options, observer, tell, Interrupted());
            return RenderResult{};
        });
    if (exitCode == kDone || exitCode >= kInterrupted) PrintText(report.Summary());
    return exitCode == kDone ? report.ExitCode() : exitCode;
}

int Run(const PlayCommand& command) {
    return RunMedia(
        command.render.media.run, ProgressStyle::None, "",
        [&command] { return MakeRenderOptions(command.render); }, ReachOfPlayer,
        [](const RenderOptions& options, const RenderObserver& observer) {
            Play(Plugin(), options, observer, Interrupted());
            return RenderResult{};
        });
}

int Run(const FrameCommand& command) {
    return RunMedia(
        command.media.run, ProgressStyle::None, command.media.output,
        [&command] { return MakeFrameOptions(command); }, kReachOf,
        [](const FrameOptions& options, const RenderObserver& observer) {
            return RenderFrame(Plugin(), options, observer, Interrupted());
        });
}

int Run(const TransitionCommand& command) {
    return RunMedia(
        command.film.run, command.film.progress, command.output,
        [&command] { return MakeTransitionOptions(command); }, kReachOf,
        [](const TransitionOptions& options, const RenderObserver& observer) {
            return RenderTransition(Plugin(), options, observer, Interrupted());
        });
}

int Run(const JoinCommand& command) {
    return RunMedia(
        command.film.run, command.film.progress, command.files.back(),
        [&command] { return MakeJoinOptions(command); }, kReachOf,
        [](const JoinOptions& options, const RenderObserver& observer) {
            return RenderJoin(Plugin(), options, observer, Interrupted());
        });
}

int Run(const SheetCommand& command) {
    return RunMedia(
        command.run, ProgressStyle::None, command.output, [&command] { return MakeSheetOptions(command); },
        kReachOf,
        [](const SheetOptions& options, const RenderObserver& observer) {
            return RenderSheet(Plugin(), options, observer, Interrupted());
        });
}

int Run(const CompareCommand& command) {
    bool same = true;
    const auto tell = [&](const Comparison& found) {
        same = found.Same();
        PrintText(command.json ? ComparisonJson(found) : ComparisonText(command.options, found));
    };
    const int exitCode = RunMedia(
        command.run, ProgressStyle::None, command.options.difference,
        [&command] { return MakeCompareOptions(command); }, kReachOf,
        [&tell](const CompareOptions& options, const RenderObserver& observer) {
            Comparison found = Compare(options, observer, tell, Interrupted());
            return RenderResult{found.pairs, std::move(found.inputDamage)};
        },
        "; what could be decoded was compared");
    return exitCode == kDone && !same ? kDifferent : exitCode;
}

int Run(const FilmRenderCommand& command) {
    return RunMedia(
        command.film.run, command.film.progress, command.output,
        [&command] { return MakeFilmRenderOptions(command); },
        [&command](const FilmRenderOptions& options) {
            return ReachOf(command.source, options.output, options.work);
        },
        [&command](const FilmRenderOptions& options, const RenderObserver& observer) {
            return RenderFilm(Plugin(), FaultlessFilm(command.source, observer, Interrupted()), options,
                              observer, Interrupted());
        });
}

int Check(const FilmCheckCommand& command) {
    MediaHeaders headers(&Interrupted());
    FilmReport report{command.source.film, {}, {}, {}};
    report.read = ReadOtioFile(report.path, {MakeMediaTerms(command.source), &headers});
    report.check = CheckFilm(report.read.film, headers);
    if (Interrupted()) throw Error(ErrorKind::Interrupted, "interrupted");
    report.faults = AllFaults(report.read, report.check, command.source.strict);
    RequireNothingRefused("the report");
    PrintLines(ReportMessages(report, command.source.strict));
    if (command.json)
        PrintText(ReportJson(report));
    else if (report.Good())
        PrintText(ReportText(report));
    return ReportExitCode(report);
}

int Run(const FilmCheckCommand& command) {
    RunArguments run;
    run.limits = command.limits;
    int found = kDone;
    const int exitCode = RunMedia(
        run, ProgressStyle::None, "", [&command] { return command.source; }, kReachOf,
        [&](const FilmSourceArguments&, const RenderObserver&) {
            found = Check(command);
            return RenderResult{};
        });
    return exitCode == kDone ? found : exitCode;
}

int Run(const FilmShowCommand& command) {
    return RunMedia(
        command.run, ProgressStyle::None, command.html, [&command] { return command.source; },
        [&command](const FilmSourceArguments& source) { return ReachOfPage(source, command.html); },
        [&command](const FilmSourceArguments& source, const RenderObserver& observer) {
            MediaHeaders headers(&Interrupted());
            const ReadFilm read = ReadOtioFile(source.film, {MakeMediaTerms(source), &headers});
            RequireFaultless(AllFaults(read, {}, source.strict));
            for (const std::string& unknown : read.unknown) observer.warning("not used: " + unknown);
            if (command.html.empty())
                PrintText(FilmText(read.film));
            else
                WriteFilmPage(Plugin(), read.film, {source.film, command.html, command.run.overwrite},
                              observer, Interrupted());
            return RenderResult{};
        });
}

int Run(const FilmNewCommand& command) {
    return RunMedia(
        command.join.film.run, ProgressStyle::None, "", [&command] { return MakeNewOptions(command); },
        kReachOf,
        [](const JoinOptions& options, const RenderObserver&) {
            WriteNewFilm(options, Interrupted());
            return RenderResult{};
        });
}

int Run(const FilmSetCommand& command) {
    return RunMedia(
        command.run, ProgressStyle::None, "", [&command] { return MakeSetOptions(command); },
        [&command](const FilmSetOptions& options) {
            return ReachOf(command.source, options.output.empty() ? options.film : options.output);
        },
        [](const FilmSetOptions& options, const RenderObserver&) {
            SetInFilm(options, Interrupted());
            return RenderResult{};
        });
}

int Run(const FilmSchemaCommand&) { return PrintText(MetadataSchema().dump(kJsonIndent) + "\n"); }

int Run(const TimelineCommand& command) {
    return std::visit([](const auto& chosen) { return Run(chosen); }, command);
}

/// A folder and the command that is shared out there.
struct FarmWork {
    std::string folder;
    FarmPlan plan;
    SharedCommand command;
};

/// What a plan's machines all do first.
FarmWork EnterFarm(const std::string& folder, const std::string& mediaRoot) {
    FarmWork work{std::filesystem::absolute(folder), {}, {}};
    work.plan = ReadPlan(work.folder);
    EnterRoot(mediaRoot);
    work.command = ParseShared(work.plan.words);
    return work;
}

std::string PlanWords(const PlanCommand& command, const FarmPlan& plan) {
    if (const std::optional<Engine> engine = MakeEngine(command))
        return EngineText(*engine, {"aveffect", command.folder, command.mediaRoot, plan.Parts()});
    return std::to_string(plan.Parts()) + " parts: `aveffect work " + command.folder + " PART` for 0 to " +
           std::to_string(plan.Parts() - 1) + ", then `aveffect finish " + command.folder + "`\n";
}

/// The commands may run as soon as they are printed, so that the plan is there before. It goes where nobody
/// was told of it.
int TellPlan(const PlanCommand& command, const FarmPlan& plan, const std::string& file) {
    try {
        return PrintText(PlanWords(command, plan));
    } catch (...) {
        if (!command.words.empty()) std::remove(file.c_str());
        throw;
    }
}

int Run(const PlanCommand& command) {
    FarmPlan plan;
    std::string file;
    const int exitCode = RunMedia(
        command.run, ProgressStyle::None, "",
        [&] {
            FarmWork work{MakeFolder(command.folder), {}, {}};
            file = PlanPath(work.folder).string();
            EnterRoot(command.mediaRoot);
            work.plan.words = WithoutRoot(command.words);
            if (!command.words.empty()) work.command = ParseShared(work.plan.words);
            return work;
        },
        [](const FarmWork& work) { return ReachOfPart(work.command, work.folder); },
        [&](const FarmWork& work, const RenderObserver& observer) {
            const std::optional<Engine> engine = MakeEngine(command);
            if (command.words.empty() && !engine)
                throw Error(ErrorKind::Usage,
                            "no command to share out follows: render, join or timeline render");
            if (command.words.empty()) {
                plan = ReadPlan(work.folder);
                return RenderResult{};
            }
            const Plugin plugin;
            const JobTools tools{plugin, observer, Interrupted()};
            FarmCommand shared{work.plan.words, MakeJob(work.command, tools)};
            RequireRelative(*shared.job);
            plan = MakePlan(work.folder, std::move(shared), MakeChunkSize(command), Interrupted());
            return RenderResult{};
        });
    return exitCode == kDone ? TellPlan(command, plan, file) : exitCode;
}

int Run(const WorkCommand& command) {
    return RunMedia(
        command.run, command.progress, "", [&] { return EnterFarm(command.folder, command.mediaRoot); },
        [](const FarmWork& work) { return ReachOfPart(work.command, work.folder); },
        [&](const FarmWork& work, const RenderObserver& observer) {
            const Plugin plugin;
            const JobTools tools{plugin, observer, Interrupted()};
            const int64_t part = WholeOption("PART", command.part, 0);
            const std::unique_ptr<ChunkedJob> job = MakeJob(work.command, tools);
            return WorkOn(work.folder, work.plan, *job, part, Interrupted());
        });
}

int Run(const FinishCommand& command) {
    return RunMedia(
        command.run, ProgressStyle::None, "", [&] { return EnterFarm(command.folder, command.mediaRoot); },
        [](const FarmWork& work) { return ReachOfJoin(work.command, work.folder); },
        [&](const FarmWork& work, const RenderObserver& observer) {
            const Plugin plugin;
            const JobTools tools{plugin, observer, Interrupted()};
            const std::unique_ptr<ChunkedJob> job = MakeJob(work.command, tools);
            if (command.run.overwrite) job->Output().overwrite = true;
            return FinishFilm(work.folder, work.plan, *job, Interrupted());
        });
}

int Run(const StatusCommand& command) {
    const FarmPlan plan = ReadPlan(command.folder);
    const FarmStatus status = StatusOf(command.folder, plan);
    return PrintText(command.json ? StatusJson(status, plan) : StatusText(status, plan));
}

int Run(const StudioCommand& command) {
    return RunMedia(
        command.run, ProgressStyle::None, "",
        [&command] {
            auto session = OpenStudio(command);
            const std::string address = session->studio->Address();
            PrintText(address + "\n");
            if (command.noBrowser || !ShowInBrowser(*session))
                PrintMessage("open this address in a browser of this machine; Ctrl-C ends the studio");
            return session;
        },
        [](const std::unique_ptr<StudioSession>& session) { return ReachOf(*session); },
        [](const std::unique_ptr<StudioSession>& session, const RenderObserver&) {
            session->studio->Serve(Plugin(), Interrupted());
            return RenderResult{};
        });
}

// Before anything is made that lives as long as the program, and where nothing may throw, nobody catches.
[[noreturn]] void EndUncaught() {
    if (const std::exception_ptr thrown = std::current_exception()) {
        try {
            std::rethrow_exception(thrown);
        } catch (const std::bad_alloc&) {
            PrintNoMemory();
            std::_Exit(kUnexpected);
        } catch (...) { // its name is the system's to tell
        }
    }
    std::abort();
}

constexpr int kFirstOfAll = 101; ///< the lowest priority that the compiler leaves to programs
[[gnu::init_priority(kFirstOfAll)]] const struct UncaughtGuard {
    UncaughtGuard() noexcept { std::set_terminate(EndUncaught); }
} g_uncaughtGuard;

} // namespace

} // namespace aveffect

int main(int count, char** arguments) {
    aveffect::SeesRefusals();
    setenv("SVT_LOG", "0", 0); // libsvtav1 prints on its own unless told not to
    try {
        const aveffect::Command command = aveffect::ParseCommandLine(count, arguments);
        return std::visit([](const auto& chosen) { return aveffect::Run(chosen); }, command);
    } catch (...) {
        const aveffect::Failure failure = aveffect::CurrentFailure();
        failure.Print();
        return failure.exitCode;
    }
}
