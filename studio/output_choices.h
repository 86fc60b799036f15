#pragma once
/// What a render may be written as.
#include <nlohmann/json.hpp>

namespace aveffect {

/// Containers that people use and, for each, codecs that this FFmpeg has: [{"extension", "title", "kind",
/// "codecs"}]; kind is clip, picture or sound. Others can be named by hand.
nlohmann::json OutputChoices();

} // namespace aveffect
