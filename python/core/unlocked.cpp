#include "python/core/unlocked.h"

#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace aveffect::python {

namespace py = pybind11;

namespace {

/// Threads that are unlocked, or on their way back. The interpreter ends those that want its lock from then
/// on, in the middle of C++, which does not survive it.
class Threads {
public:
    /// With the lock.
    void Leave() {
        std::unique_lock lock(m_mutex);
        ++m_away;
    }
    /// Without it. Does not return when the interpreter ends.
    void ComeBack() {
        std::unique_lock lock(m_mutex);
        if (!m_ending || std::this_thread::get_id() == m_last) return;
        --m_away;
        m_changed.notify_all();
        lock.unlock();
        while (true) pause();
    }
    /// With the lock again.
    void BeBack() {
        const std::scoped_lock lock(m_mutex);
        --m_away;
        m_changed.notify_all();
    }
    /// Of the thread that ends the interpreter, without the lock.
    void End() {
        std::unique_lock lock(m_mutex);
        m_ending = true;
        m_last = std::this_thread::get_id();
        m_changed.wait(lock, [this] { return m_away == 0; });
    }
    /// A forked process has one thread alone.
    void Forget() {
        new (&m_mutex) std::mutex;
        new (&m_changed) std::condition_variable;
        m_away = 0;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_away = 0;
    bool m_ending = false;
    std::thread::id m_last;
};

Threads& TheThreads() {
    static Threads& threads = *new Threads; // outlives the module
    return threads;
}

} // namespace

Unlocked::Unlocked() {
    TheThreads().Leave();
    m_state = PyEval_SaveThread();
}

Unlocked::~Unlocked() {
    TheThreads().ComeBack();
    PyEval_RestoreThread(m_state);
    TheThreads().BeBack();
}

void WaitForUnlockedAtExit() {
    py::module_::import("atexit").attr("register")(py::cpp_function([] {
        const py::gil_scoped_release unlocked;
        TheThreads().End();
    }));
    py::module_::import("os").attr("register_at_fork")(py::arg("after_in_child") =
                                                           py::cpp_function([] { TheThreads().Forget(); }));
}

} // namespace aveffect::python
