#pragma once
/// How many threads of a render work at a time.
#include <condition_variable>
#include <mutex>
#include <thread>

namespace aveffect {

/// Without a limit everybody works. Workers may wait for each other's turns in their work as long as there
/// are no more of them than the limit has.
class WorkLimit {
public:
    /// 0: none. Neither is there one where no fewer may work than there are processors: the system keeps to
    /// those anyway, and who only waits for the decoder's or the encoder's own threads holds up nobody.
    explicit WorkLimit(unsigned most)
        : m_limited(most > 0 && most < std::thread::hardware_concurrency())
        , m_free(most) {}

    /// What the work returns; what it throws comes through.
    template <typename Work>
    auto Do(const Work& work) {
        const Place place(*this);
        return work();
    }

private:
    // The standard library's semaphores can sleep for ever with g++ 12.
    struct Place {
        explicit Place(WorkLimit& from)
            : limit(from) {
            if (!limit.m_limited) return;
            std::unique_lock lock(limit.m_mutex);
            limit.m_freed.wait(lock, [this] { return limit.m_free > 0; });
            --limit.m_free;
        }
        ~Place() {
            if (!limit.m_limited) return;
            {
                const std::scoped_lock lock(limit.m_mutex);
                ++limit.m_free;
            }
            limit.m_freed.notify_one();
        }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;
        WorkLimit& limit;
    };

    const bool m_limited;
    unsigned m_free;
    std::mutex m_mutex;
    std::condition_variable m_freed;
};

} // namespace aveffect
