#pragma once
/// Files of one picture.
#include <atomic>

#include "host/output/output_plan.h"

namespace aveffect {

/// Encodes one picture, which has the encoder's format, and writes it as a file. Throws Error.
void WriteStill(const OutputPlan& plan, mediabridge::AVFramePtr picture, bool overwrite,
                const std::atomic<bool>& cancel);

} // namespace aveffect
