#pragma once
/// Outputs that have a name before they are whole, for those who end the process without their destructors.
#include <atomic>

namespace aveffect {

/// Removes them all. For a signal handler that ends the process next: what other threads are about to do with
/// their files waits for that.
void RemoveUnfinished() noexcept;

/// One such file, while this object lives. Of more than there is room for at a time the last stay.
class Unfinished {
public:
    /// The path outlives this object.
    explicit Unfinished(const char* path) noexcept;
    ~Unfinished();
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

private:
    std::atomic<const char*>* m_slot = nullptr;
};

} // namespace aveffect
