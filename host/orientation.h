#pragma once
/// Turning pictures upright as a clip's display matrix says.
#include <cstdint>
#include <optional>
#include <string>

#include "host/av_owner.h"

namespace aveffect {

/// The display matrix of a stream, null when it has none or the pictures are upright as they are stored.
const int32_t* DisplayMatrix(const AVStream& stream);

/// libavfilter's words for what a display matrix asks for; absent when it is no multiple of a quarter turn.
std::optional<std::string> TurnFilter(const int32_t matrix[9]);

} // namespace aveffect
