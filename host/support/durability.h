#pragma once
/// Whether outputs survive a power cut.
#include <atomic>

namespace aveffect {

/// On: an output is on its disk, its name too, before it counts as done; off, as it is to begin with, the
/// system writes it when it likes. For the whole process, from any thread, of outputs that are finished from
/// then on.
inline std::atomic<bool> g_durableOutputs{false};

} // namespace aveffect
