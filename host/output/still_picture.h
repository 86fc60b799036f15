#pragma once
/// Files of one picture.
#include <atomic>
#include <memory>

#include "host/media/photo_metadata.h"
#include "host/output/output_file.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Encodes one picture, which has the encoder's format, and writes it as a file, with what the format can
/// hold of the metadata. Its caller has it published last, for nothing may fail once the file has its name.
/// Throws Error.
[[nodiscard]] std::unique_ptr<OutputFile> WriteStill(const OutputPlan& plan, mediabridge::AVFramePtr picture,
                                                     const PhotoMetadata& metadata, bool overwrite,
                                                     const std::atomic<bool>& cancel);

} // namespace aveffect
