#pragma once
/// How many threads of a render work at a time.
#include <semaphore>

namespace aveffect {

/// Without a limit everybody works. Workers may wait for each other's turns in their work as long as there
/// are no more of them than the limit has.
class WorkLimit {
public:
    /// 0: none.
    explicit WorkLimit(unsigned most)
        : m_free(most > 0 ? static_cast<std::ptrdiff_t>(most) : kNoLimit) {}

    /// What the work returns; what it throws comes through.
    template <typename Work>
    auto Do(const Work& work) {
        struct Place {
            explicit Place(std::counting_semaphore<>& from)
                : free(from) {
                free.acquire();
            }
            ~Place() { free.release(); }
            Place(const Place&) = delete;
            Place& operator=(const Place&) = delete;
            std::counting_semaphore<>& free;
        } const place(m_free);
        return work();
    }

private:
    static constexpr std::ptrdiff_t kNoLimit = 1 << 20;
    std::counting_semaphore<> m_free;
};

} // namespace aveffect
