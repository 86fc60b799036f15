#pragma once
/// Clips and seams of `join` as people write them. Everything throws Error (Usage) that names the value and
/// says what would be right.
#include <string>

#include "host/jobs/transition.h"

namespace aveffect {

/// "photo.jpg@3": a file and how long it is shown. An '@' that belongs to an existing file's name stays part
/// of it, and so does one without a time behind it.
JoinClip JoinClipOf(const std::string& text);

/// "crossfade", "crossfade@0.5" with a duration of its own, or "cut".
JoinSeam JoinSeamOf(const std::string& text, int64_t usualMs);

} // namespace aveffect
