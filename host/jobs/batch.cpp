#include "host/jobs/batch.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>

#include "host/support/ordered_workers.h"
#include "host/support/refusals.h"

namespace aveffect {
namespace {

namespace fs = std::filesystem;

struct Item {
    std::string input, output;
};

std::string OutputFor(const BatchOptions& options, const std::string& input) {
    fs::path name = fs::path(ParseSourceUrl(input).path).filename();
    if (!options.extension.empty()) name.replace_extension(options.extension);
    return (fs::path(options.directory) / name).string();
}

std::vector<Item> PlanItems(const BatchOptions& options) {
    std::vector<Item> items;
    std::map<std::string, std::string> owners; // of output names
    for (const std::string& input : options.inputs) {
        const std::string output = OutputFor(options, input);
        const auto [owner, first] = owners.emplace(output, input);
        if (!first)
            throw Error(ErrorKind::Usage, owner->second + " and another input would both become " + output +
                                              "; render them into two directories");
        items.push_back({input, output});
    }
    std::error_code ignored; // of files that don't exist
    for (const Item& item : items)
        for (const Item& other : items)
            if (fs::equivalent(item.output, ParseSourceUrl(other.input).path, ignored))
                throw Error(ErrorKind::Usage, item.input + " would become " + item.output +
                                                  ", which is an input; name another directory");
    return items;
}

void MakeDirectory(const std::string& directory) {
    std::error_code error;
    fs::create_directories(directory, error);
    if (!fs::is_directory(directory))
        throw Error(ErrorKind::Output, directory + " can't be made: " +
                                           (error ? error.message() : "it exists and is no directory"));
}

/// A failure, told from the exception in flight; nothing when the user asked to stop.
bool TakeFailure(BatchOutcome& outcome) {
    outcome.status = BatchStatus::Failed;
    try {
        throw;
    } catch (const Error& error) {
        if (error.Kind() == ErrorKind::Interrupted) return false;
        outcome.message = error.what();
        if (TakeRefusal())
            outcome.message = "out of memory: " + outcome.message;
        else
            outcome.kind = error.Kind();
    } catch (const NoMemory& shortage) {
        outcome.message = shortage.what();
    } catch (const std::bad_alloc&) {
        outcome.message = "out of memory";
    } catch (const std::exception& error) {
        outcome.message = std::string("unexpected error: ") + error.what();
    }
    return true;
}

/// Hands out the items to the workers and their outcomes to the caller.
class Batch {
public:
    Batch(const Plugin& plugin, const BatchOptions& options, const RenderObserver& observer,
          const std::function<void(const BatchOutcome&)>& tell, const std::atomic<bool>& cancel)
        : m_plugin(plugin)
        , m_options(options)
        , m_observer(observer)
        , m_tell(tell)
        , m_cancel(cancel)
        , m_items(PlanItems(options)) {}

    void Run() {
        MakeDirectory(m_options.directory);
        const auto items = static_cast<unsigned>(std::min<size_t>(m_items.size(), UINT_MAX));
        const unsigned workers = std::min(WorkerCount(m_options.workers), items);
        m_share = std::max(1u, workers);
        StageGroup group([this] { m_next = m_items.size(); });
        for (unsigned worker = 0; worker < workers; ++worker) group.Start([this] { Work(); });
        group.Join();
        CheckCancel(m_cancel);
    }

private:
    void Work() {
        for (size_t index = m_next++; index < m_items.size() && !m_cancel; index = m_next++)
            Render(m_items[index]);
    }

    void Render(const Item& item) {
        BatchOutcome outcome{item.input, item.output, BatchStatus::Done, {}, {}, 0};
        if (std::error_code ignored; m_options.skipExisting && fs::exists(item.output, ignored)) {
            outcome.status = BatchStatus::Skipped;
            return Tell(outcome);
        }
        try {
            const RenderResult result =
                aveffect::Render(m_plugin, OptionsFor(item), ObserverFor(item), m_cancel);
            outcome.frames = result.frames;
            if (result.inputDamage) outcome.status = BatchStatus::Damaged;
            outcome.message = result.inputDamage.value_or("");
        } catch (...) {
            if (!TakeFailure(outcome)) return;
        }
        Tell(outcome);
    }

    RenderOptions OptionsFor(const Item& item) const {
        RenderOptions options = m_options.render;
        options.input = item.input;
        options.output = item.output;
        options.threads = std::max(1u, WorkerCount(options.threads) / m_share);
        options.memory = std::max(size_t{1}, options.memory / m_share);
        return options;
    }

    RenderObserver ObserverFor(const Item& item) {
        const auto about = [this, &item](const auto& told) {
            return [this, &item, &told](const std::string& text) {
                const std::scoped_lock lock(m_mutex);
                if (told) told(item.input + ": " + text);
            };
        };
        return {{}, about(m_observer.note), about(m_observer.warning), about(m_observer.remark)};
    }

    void Tell(const BatchOutcome& outcome) {
        const std::scoped_lock lock(m_mutex);
        m_tell(outcome);
    }

    const Plugin& m_plugin;
    const BatchOptions& m_options;
    const RenderObserver& m_observer;
    const std::function<void(const BatchOutcome&)>& m_tell;
    const std::atomic<bool>& m_cancel;
    std::vector<Item> m_items;
    unsigned m_share = 1; ///< renders that share threads and memory
    std::atomic<size_t> m_next{0};
    std::mutex m_mutex;
};

} // namespace

void PrepareBatch(const BatchOptions& options) {
    PlanItems(options);
    MakeDirectory(options.directory);
}

void RenderBatch(const Plugin& plugin, const BatchOptions& options, const RenderObserver& observer,
                 const std::function<void(const BatchOutcome&)>& tell, const std::atomic<bool>& cancel) {
    Batch(plugin, options, observer, tell, cancel).Run();
}

} // namespace aveffect
