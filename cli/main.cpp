/// The program `aveffect`: lists effects, renders clips and pictures through them.
#include <cstdio>
#include <exception>

#include "aveffect/base_tools.h"
#include "cli/arguments.h"
#include "cli/batch_report.h"
#include "cli/catalogue_json.h"
#include "cli/catalogue_text.h"
#include "cli/exit_code.h"
#include "cli/film_report.h"
#include "cli/interruption.h"
#include "cli/manual_page.h"
#include "cli/messages.h"
#include "cli/player.h"
#include "cli/progress.h"
#include "host/effects/plugin.h"
#include "host/settings/catalogue_lookup.h"
#include "host/support/durability.h"
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

    void Print() const {
        PrintMessage(message);
        PrintLines(picture);
    }
};

/// Call from a catch block.
Failure CurrentFailure() {
    try {
        throw;
    } catch (const Error& error) {
        // Whatever fails behind a signal may do so because of it: reading that was given up looks like
        // damage.
        const int signal = InterruptingSignal();
        return {error.what(), ExitCodeFor(signal != 0 ? ErrorKind::Interrupted : error.Kind(), signal),
                error.Picture()};
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

/// Sets up what the commands that read media share, runs the work, which takes an observer, and tells how it
/// ended, with what follows from damage.
template <typename Work>
int RunMedia(const RunArguments& run, ProgressStyle style, const std::string& output, Work work,
             const char* afterDamage = kOutputHolds) {
    RequireOwnOutput(style, output);
    CatchInterruptions();
    const auto progress = MakeProgress(style);
    try {
        if (run.verbosity > 1) AVBasedSetLogLevel(0);
        g_durableOutputs = run.sync;
        const RenderObserver observer = MakeObserver(*progress, run.verbosity);
        if (const std::string warning = ApplyCpuLevel(run.cpuLevel); !warning.empty())
            observer.warning(warning);
        const RenderResult result = work(observer);
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

int Run(const RenderCommand& command) {
    return RunMedia(command.media.run, command.progress, command.media.output,
                    [&command](const RenderObserver& observer) {
                        const RenderOptions options = MakeRenderOptions(command);
                        return Render(Plugin(), options, observer, Interrupted());
                    });
}

int Run(const BatchCommand& command) {
    BatchReport report(command.json);
    const auto tell = [&report](const BatchOutcome& outcome) {
        PrintText(report.Line(outcome));
        PrintLines(BatchReport::Message(outcome));
    };
    const int exitCode =
        RunMedia(command.render.media.run, ProgressStyle::None, "", [&](const RenderObserver& observer) {
            RenderBatch(Plugin(), MakeBatchOptions(command), observer, tell, Interrupted());
            return RenderResult{};
        });
    if (exitCode == kDone || exitCode >= kInterrupted) PrintText(report.Summary());
    return exitCode == kDone ? report.ExitCode() : exitCode;
}

int Run(const PlayCommand& command) {
    return RunMedia(command.render.media.run, ProgressStyle::None, "", [&](const RenderObserver& observer) {
        const RenderOptions options = MakeRenderOptions(command.render);
        Play(Plugin(), options, observer, Interrupted());
        return RenderResult{};
    });
}

int Run(const FrameCommand& command) {
    return RunMedia(command.media.run, ProgressStyle::None, command.media.output,
                    [&command](const RenderObserver& observer) {
                        const FrameOptions options = MakeFrameOptions(command);
                        return RenderFrame(Plugin(), options, observer, Interrupted());
                    });
}

int Run(const TransitionCommand& command) {
    return RunMedia(command.film.run, command.film.progress, command.output,
                    [&command](const RenderObserver& observer) {
                        const TransitionOptions options = MakeTransitionOptions(command);
                        return RenderTransition(Plugin(), options, observer, Interrupted());
                    });
}

int Run(const JoinCommand& command) {
    return RunMedia(command.film.run, command.film.progress, command.files.back(),
                    [&command](const RenderObserver& observer) {
                        const JoinOptions options = MakeJoinOptions(command);
                        return RenderJoin(Plugin(), options, observer, Interrupted());
                    });
}

int Run(const SheetCommand& command) {
    return RunMedia(command.run, ProgressStyle::None, command.output,
                    [&command](const RenderObserver& observer) {
                        const SheetOptions options = MakeSheetOptions(command);
                        return RenderSheet(Plugin(), options, observer, Interrupted());
                    });
}

int Run(const CompareCommand& command) {
    Comparison found;
    const int exitCode = RunMedia(
        command.run, ProgressStyle::None, command.options.difference,
        [&](const RenderObserver& observer) {
            found = Compare(MakeCompareOptions(command), observer, Interrupted());
            return RenderResult{found.pairs, found.inputDamage};
        },
        "; what could be decoded was compared");
    if (found.pairs == 0) return exitCode;
    PrintText(command.json ? ComparisonJson(found) : ComparisonText(command.options, found));
    return exitCode == kDone && !found.Same() ? kDifferent : exitCode;
}

int Run(const FilmRenderCommand& command) {
    return RunMedia(
        command.film.run, command.film.progress, command.output, [&command](const RenderObserver& observer) {
            const FilmRenderOptions options = MakeFilmRenderOptions(command);
            MediaHeaders headers;
            ReadFilm read = ReadOtioFile(command.source.film, {MakeMediaTerms(command.source), &headers});
            const FilmCheck check = CheckFilm(read.film, headers);
            RequireFaultless(AllFaults(read, check, command.source.strict));
            for (const std::string& text : read.unknown) observer.warning("not used: " + text);
            for (const std::string& text : check.remarks) observer.remark(text);
            return RenderFilm(Plugin(), read.film, options, observer, Interrupted());
        });
}

int Run(const FilmCheckCommand& command) {
    MediaHeaders headers;
    FilmReport report{command.source.film, {}, {}, {}};
    report.read = ReadOtioFile(report.path, {MakeMediaTerms(command.source), &headers});
    report.check = CheckFilm(report.read.film, headers);
    report.faults = AllFaults(report.read, report.check, command.source.strict);
    PrintLines(ReportMessages(report, command.source.strict));
    if (command.json)
        PrintText(ReportJson(report));
    else if (report.Good())
        PrintText(ReportText(report));
    return ReportExitCode(report);
}

int Run(const FilmShowCommand& command) {
    return RunMedia(
        command.run, ProgressStyle::None, command.html, [&command](const RenderObserver& observer) {
            MediaHeaders headers;
            const ReadFilm read =
                ReadOtioFile(command.source.film, {MakeMediaTerms(command.source), &headers});
            RequireFaultless(AllFaults(read, {}, command.source.strict));
            for (const std::string& unknown : read.unknown) observer.warning("not used: " + unknown);
            if (command.html.empty())
                PrintText(FilmText(read.film));
            else
                WriteFilmPage(Plugin(), read.film, {command.source.film, command.html, command.run.overwrite},
                              Interrupted());
            return RenderResult{};
        });
}

int Run(const FilmNewCommand& command) {
    return RunMedia(command.join.film.run, ProgressStyle::None, "", [&command](const RenderObserver&) {
        WriteNewFilm(MakeNewOptions(command), Interrupted());
        return RenderResult{};
    });
}

int Run(const FilmSetCommand& command) {
    return RunMedia(command.run, ProgressStyle::None, "", [&command](const RenderObserver&) {
        SetInFilm(MakeSetOptions(command), Interrupted());
        return RenderResult{};
    });
}

int Run(const FilmSchemaCommand&) { return PrintText(MetadataSchema().dump(kJsonIndent) + "\n"); }

int Run(const TimelineCommand& command) {
    return std::visit([](const auto& chosen) { return Run(chosen); }, command);
}

} // namespace

} // namespace aveffect

int main(int count, char** arguments) {
    try {
        const aveffect::Command command = aveffect::ParseCommandLine(count, arguments);
        return std::visit([](const auto& chosen) { return aveffect::Run(chosen); }, command);
    } catch (...) {
        const aveffect::Failure failure = aveffect::CurrentFailure();
        failure.Print();
        return failure.exitCode;
    }
}
