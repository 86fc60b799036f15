#pragma once
/// Files that are almost right: random bytes end at a file's first header, a wrong number in a right place
/// does not.
#include <cstdint>
#include <string>

namespace fuzzing {

/// The file with one thing or a few changed: a number in an element, an element's size, elements doubled,
/// left out, exchanged, cut off. Bytes are changed where the file is of another kind than media trees. The
/// seed decides.
std::string MutateMedia(const std::string& file, uint32_t seed);

} // namespace fuzzing
