#include "python/core/job.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <pybind11/stl.h>

#include "cli/arguments.h"
#include "cli/film_report.h"
#include "host/support/durability.h"
#include "python/core/failures.h"
#include "python/core/the_plugin.h"
#include "python/core/unlocked.h"

namespace aveffect::python {

namespace py = pybind11;

namespace {

constexpr std::chrono::milliseconds kListening(50); // for Ctrl-C

/// What a job's threads have to say, for the thread that listens.
class Ear {
public:
    void Progress(const RenderProgress& progress) {
        const std::scoped_lock lock(m_mutex);
        m_progress = progress;
        m_heard.notify_one();
    }
    void Warning(const std::string& text) {
        const std::scoped_lock lock(m_mutex);
        m_warnings.push_back(text);
        m_heard.notify_one();
    }
    void End() {
        const std::scoped_lock lock(m_mutex);
        m_ended = true;
        m_heard.notify_one();
    }

    struct News {
        std::optional<RenderProgress> progress;
        std::vector<std::string> warnings;
        bool ended;
    };
    News Listen() {
        std::unique_lock lock(m_mutex);
        m_heard.wait_for(lock, kListening, [this] { return m_ended || m_progress || !m_warnings.empty(); });
        return {std::exchange(m_progress, {}), std::exchange(m_warnings, {}), m_ended};
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_heard;
    std::optional<RenderProgress> m_progress;
    std::vector<std::string> m_warnings;
    bool m_ended = false;
};

struct Runner {
    const RenderObserver& observer;
    const std::atomic<bool>& cancel;

    RenderResult operator()(const RenderCommand& command) const {
        Prepare(command.media.run);
        return Render(ThePlugin(), MakeRenderOptions(command), observer, cancel);
    }
    RenderResult operator()(const FrameCommand& command) const {
        Prepare(command.media.run);
        return RenderFrame(ThePlugin(), MakeFrameOptions(command), observer, cancel);
    }
    RenderResult operator()(const TransitionCommand& command) const {
        Prepare(command.film.run);
        return RenderTransition(ThePlugin(), MakeTransitionOptions(command), observer, cancel);
    }
    RenderResult operator()(const JoinCommand& command) const {
        Prepare(command.film.run);
        return RenderJoin(ThePlugin(), MakeJoinOptions(command), observer, cancel);
    }
    RenderResult operator()(const SheetCommand& command) const {
        Prepare(command.run);
        return RenderSheet(ThePlugin(), MakeSheetOptions(command), observer, cancel);
    }
    RenderResult operator()(const TimelineCommand& command) const {
        const auto* const film = std::get_if<FilmRenderCommand>(&command);
        if (!film) throw Wrong("of the commands on films, this is done with render alone");
        Prepare(film->film.run);
        return RenderFilm(ThePlugin(), FaultlessFilm(film->source, observer, cancel),
                          MakeFilmRenderOptions(*film), observer, cancel);
    }
    template <class Other>
    RenderResult operator()(const Other&) const {
        throw Wrong("this command is the program's alone");
    }

    // Limits of the whole process are its own business.
    static void Prepare(const RunArguments& run) {
        g_durableOutputs = run.sync;
        ApplySeed(run);
    }
};

// Calls back what is heard, until the job has ended. What is raised ends it.
void Follow(Ear& ear, const py::object& progress, const py::object& warning, std::atomic<bool>& cancel) {
    std::optional<py::error_already_set> raised;
    for (bool ended = false; !ended;) {
        Ear::News news;
        {
            const Unlocked unlocked;
            news = ear.Listen();
        }
        ended = news.ended;
        if (raised) continue;
        try {
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
            for (const std::string& text : news.warnings) warning(text);
            if (news.progress && !progress.is_none())
                progress(news.progress->framesDone, news.progress->framesExpected,
                         news.progress->secondsLeft);
        } catch (py::error_already_set& error) {
            raised = std::move(error);
            cancel = true;
        }
    }
    if (raised) throw std::move(*raised);
}

} // namespace

py::tuple RunJob(std::vector<std::string> arguments, const py::object& progress, const py::object& warning) {
    std::vector<const char*> words;
    for (const std::string& argument : arguments) words.push_back(argument.c_str());
    const Command command = ParseCommandLine(static_cast<int>(words.size()), words.data());

    Ear ear;
    std::atomic<bool> cancel = false;
    RenderObserver observer;
    observer.progress = [&ear](const RenderProgress& state) { ear.Progress(state); };
    observer.warning = [&ear](const std::string& text) { ear.Warning(text); };
    observer.remark = observer.note = [](const std::string&) {};
    RenderResult result;
    std::exception_ptr failure;
    std::thread worker([&] {
        try {
            result = std::visit(Runner{observer, cancel}, command);
        } catch (...) {
            failure = std::current_exception();
        }
        ear.End();
    });
    const auto end = [&worker] {
        const Unlocked unlocked;
        worker.join();
    };
    try {
        Follow(ear, progress, warning, cancel);
    } catch (...) {
        end();
        throw;
    }
    end();
    if (failure) std::rethrow_exception(failure);
    return py::make_tuple(result.frames, result.inputDamage);
}

} // namespace aveffect::python
