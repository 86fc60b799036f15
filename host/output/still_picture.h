#pragma once
/// Files of one picture.
#include <atomic>

#include "host/media/photo_metadata.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Encodes one picture, which has the encoder's format, and writes it as a file, with what the format can
/// hold of the metadata. Throws Error.
void WriteStill(const OutputPlan& plan, mediabridge::AVFramePtr picture, const PhotoMetadata& metadata,
                bool overwrite, const std::atomic<bool>& cancel);

} // namespace aveffect
