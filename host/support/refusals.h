#pragma once
/// Memory and threads that were refused to the media libraries, of which not all of them tell.
#include <atomic>
#include <string>

#include "host/support/error.h"

namespace aveffect {

/// Set by programs that see each refusal: something may be missing from what is being made.
inline std::atomic<bool> g_refused{false};

/// Whether something was refused since the last call. Safe from any thread.
inline bool TakeRefusal() noexcept { return g_refused.exchange(false); }

/// Before what was made counts. Throws NoMemory.
inline void RequireNothingRefused(const std::string& what) {
    if (TakeRefusal()) throw NoMemory(what + " is not written: out of memory");
}

} // namespace aveffect
