#pragma once
/// Small files, read in one go.
#include <cstddef>
#include <limits>
#include <optional>
#include <string>

namespace aveffect {

/// The bytes of a file, no more of them than the most; absent where there is no file of that name. Throws
/// Error (Input) when it can't be read to there.
std::optional<std::string> WholeFile(const std::string& path,
                                     size_t most = std::numeric_limits<size_t>::max());

} // namespace aveffect
