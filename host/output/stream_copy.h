#pragma once
/// What an output takes over from its input as it is.
#include <optional>
#include <string>

#include "host/media/span.h"
#include "host/output/container.h"

namespace aveffect {

/// Tags that describe the work; those that describe the input file are left out.
void CopyTags(AVDictionary** to, const AVDictionary* from);

/// A stream for the input stream's packets. Throws Error (Output).
AVStream* AddCopiedStream(Container& output, const AVStream& stream);

/// The same for pictures, with their shape, rate and the marks that their decoders look for.
AVStream* AddCopiedPictures(Container& output, const AVStream& stream);

/// The damage that so many refused packets are.
DamageReport CopyDamage(const std::string& path, int64_t refused);

/// Chapters, moved with the span and cut to it. Call before the output is started.
void CopyChapters(Container& output, const AVFormatContext& input, const SpanLimits& limits);

} // namespace aveffect
