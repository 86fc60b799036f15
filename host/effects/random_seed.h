#pragma once
/// Where random numbers begin.
#include <atomic>

namespace aveffect {

/// Of the process's one generator, from which every picture of an effect that draws begins anew. For all
/// effects that are made from then on, from any thread.
inline std::atomic<unsigned> g_randomSeed{1};

} // namespace aveffect
