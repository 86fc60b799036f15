#pragma once
/// What animated pictures say of themselves beyond what the libraries hand on.
#include <cstdint>
#include <optional>

#include "host/media/source.h"

namespace aveffect {

/// How often the file wants to be played; 0 for ever. Absent for what is neither GIF nor APNG, and for what
/// can't be read.
std::optional<int64_t> PlayCount(const Source& source);

} // namespace aveffect
