#pragma once
/// A clip's sound through effects, to be heard and to be looked at.
#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "host/jobs/render.h"

namespace aveffect {

/// Lowest and highest sample of each of so many equal parts of what the options ask for, of all channels,
/// from -1 to 1. Sound is read once, and only a little of it is kept. Throws Error.
std::vector<std::pair<float, float>> FindPeaks(const Plugin& plugin, const RenderOptions& options,
                                               int columns, const std::atomic<bool>& cancel);

} // namespace aveffect
