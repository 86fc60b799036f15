#include "host/support/unfinished.h"

#include <unistd.h>

namespace aveffect {
namespace {

constexpr int kMost = 256;
std::atomic<const char*> g_paths[kMost];
std::atomic<bool> g_ending{false};
static_assert(std::atomic<const char*>::is_always_lock_free, "signal handlers read these");

} // namespace

void RemoveUnfinished() noexcept {
    g_ending = true;
    for (const auto& slot : g_paths)
        if (const char* const path = slot.load()) unlink(path);
}

Unfinished::Unfinished(const char* path) noexcept {
    for (auto& slot : g_paths) {
        const char* none = nullptr;
        if (!slot.compare_exchange_strong(none, path)) continue;
        m_slot = &slot;
        return;
    }
}

// Either the handler finds the slot empty, or its beginning is seen here, and the path is left to it.
Unfinished::~Unfinished() {
    if (!m_slot) return;
    m_slot->store(nullptr);
    while (g_ending) pause();
}

} // namespace aveffect
