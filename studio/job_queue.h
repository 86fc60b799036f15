#pragma once
/// Renders one after the other, while the page goes on.
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <nlohmann/json.hpp>

#include "host/jobs/render.h"

namespace aveffect {

/// Safe from any thread.
class JobQueue {
public:
    /// What a job does; throws Error.
    using Job = std::function<RenderResult(const RenderObserver&, const std::atomic<bool>&)>;

    JobQueue();
    /// Cancels what is not done and waits for it.
    ~JobQueue();
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    /// Returns the job's id. Throws Error (Usage) when too many wait.
    std::string Add(std::string output, Job job);
    /// Of one that waits or runs; others stay as they are. Throws Error (Usage) for an unknown id.
    void Cancel(const std::string& id);
    /// Where a job that is done has written. Throws Error (Usage) for others.
    std::string OutputOf(const std::string& id) const;
    /// Whether any waits or runs.
    bool Busy() const;
    /// All jobs, the oldest first, as the page is told.
    nlohmann::json Words() const;
    /// Changes whenever Words() does.
    uint64_t Version() const;

private:
    enum class State { Waiting, Running, Done, Failed, Cancelled };
    struct Entry {
        std::string id, output;
        Job job;
        State state = State::Waiting;
        double progress = 0;
        std::string message;
        std::atomic<bool> cancel = false;
    };

    Entry& Find(const std::string& id) const;
    void Work();
    void Run(Entry& entry);
    void Change(Entry& entry, State state, const std::string& message = {});
    RenderObserver ObserverOf(Entry& entry);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::unique_ptr<Entry>> m_entries;
    uint64_t m_version = 0;
    int m_count = 0;
    bool m_ending = false;
    std::thread m_thread; ///< last: uses the others
};

} // namespace aveffect
