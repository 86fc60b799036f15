#include "studio/job_queue.h"

#include <algorithm>

#include "host/support/error.h"
#include "host/support/refusals.h"

namespace aveffect {

namespace {

constexpr size_t kMostWaiting = 100, kMostKept = 200;

} // namespace

JobQueue::JobQueue()
    : m_thread([this] { Work(); }) {}

JobQueue::~JobQueue() {
    {
        const std::scoped_lock lock(m_mutex);
        m_ending = true;
        for (const auto& entry : m_entries) entry->cancel = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

std::string JobQueue::Add(std::string output, Job job) {
    const std::scoped_lock lock(m_mutex);
    const auto waits = [](const auto& entry) { return entry->state == State::Waiting; };
    if (std::ranges::count_if(m_entries, waits) >= static_cast<ptrdiff_t>(kMostWaiting))
        throw Error(ErrorKind::Usage, std::to_string(kMostWaiting) + " renders wait already");
    const auto same = [&](const auto& entry) {
        return entry->output == output && (waits(entry) || entry->state == State::Running);
    };
    if (std::ranges::any_of(m_entries, same))
        throw Error(ErrorKind::Usage, output + " is being rendered already; choose another name");
    if (m_entries.size() >= kMostKept) {
        const auto old =
            std::ranges::find_if(m_entries, [](const auto& entry) { return entry->state > State::Running; });
        if (old != m_entries.end()) m_entries.erase(old);
    }
    auto entry = std::make_unique<Entry>();
    entry->id = "j" + std::to_string(++m_count);
    entry->output = std::move(output);
    entry->job = std::move(job);
    m_entries.push_back(std::move(entry));
    ++m_version;
    m_changed.notify_all();
    return m_entries.back()->id;
}

JobQueue::Entry& JobQueue::Find(const std::string& id) const {
    const auto found = std::ranges::find_if(m_entries, [&](const auto& entry) { return entry->id == id; });
    if (found == m_entries.end()) throw Error(ErrorKind::Usage, "there is no render '" + id + "'");
    return **found;
}

void JobQueue::Cancel(const std::string& id) {
    const std::scoped_lock lock(m_mutex);
    Entry& entry = Find(id);
    entry.cancel = true;
    if (entry.state == State::Waiting) {
        entry.state = State::Cancelled;
        ++m_version;
    }
}

std::string JobQueue::OutputOf(const std::string& id) const {
    const std::scoped_lock lock(m_mutex);
    const Entry& entry = Find(id);
    if (entry.state != State::Done) throw Error(ErrorKind::Usage, "the render '" + id + "' has no file");
    return entry.output;
}

bool JobQueue::Busy() const {
    const std::scoped_lock lock(m_mutex);
    return std::ranges::any_of(m_entries, [](const auto& entry) { return entry->state <= State::Running; });
}

nlohmann::json JobQueue::Words() const {
    constexpr const char* kStates[] = {"waiting", "running", "done", "failed", "cancelled"};
    const std::scoped_lock lock(m_mutex);
    nlohmann::json words = nlohmann::json::array();
    for (const auto& entry : m_entries)
        words.push_back({{"id", entry->id},
                         {"output", entry->output},
                         {"state", kStates[static_cast<size_t>(entry->state)]},
                         {"progress", entry->progress},
                         {"message", entry->message}});
    return words;
}

uint64_t JobQueue::Version() const {
    const std::scoped_lock lock(m_mutex);
    return m_version;
}

void JobQueue::Work() {
    std::unique_lock lock(m_mutex);
    while (true) {
        Entry* next = nullptr;
        m_changed.wait(lock, [&] {
            const auto found = std::ranges::find_if(
                m_entries, [](const auto& entry) { return entry->state == State::Waiting; });
            next = found == m_entries.end() ? nullptr : found->get();
            return m_ending || next;
        });
        if (m_ending) return;
        next->state = State::Running;
        ++m_version;
        lock.unlock();
        Run(*next);
        lock.lock();
        next->job = nullptr;
    }
}

void JobQueue::Run(Entry& entry) {
    try {
        const RenderResult result = entry.job(ObserverOf(entry), entry.cancel);
        Change(entry, State::Done, result.inputDamage.value_or(""));
    } catch (const Error& error) {
        Change(entry, error.Kind() == ErrorKind::Interrupted ? State::Cancelled : State::Failed,
               error.what());
    } catch (const std::bad_alloc&) {
        Change(entry, State::Failed, "out of memory");
    } catch (const std::exception& error) {
        Change(entry, State::Failed, error.what());
    }
    TakeRefusal(); // was this job's
}

void JobQueue::Change(Entry& entry, State state, const std::string& message) {
    const std::scoped_lock lock(m_mutex);
    entry.state = state;
    if (state == State::Done) entry.progress = 1;
    if (!message.empty()) entry.message = message;
    ++m_version;
}

RenderObserver JobQueue::ObserverOf(Entry& entry) {
    RenderObserver observer;
    observer.progress = [this, &entry](const RenderProgress& state) {
        const std::scoped_lock lock(m_mutex);
        if (state.framesExpected && *state.framesExpected > 0)
            entry.progress = std::min(1.0, static_cast<double>(state.framesDone) /
                                               static_cast<double>(*state.framesExpected));
        ++m_version;
    };
    observer.warning = [this, &entry](const std::string& text) { Change(entry, State::Running, text); };
    return observer;
}

} // namespace aveffect
