#pragma once
/// How much memory there is.
#include <cstdint>
#include <filesystem>

namespace aveffect {

/// Bytes that the control groups of this process, and those around them, may take; the largest number where
/// none says. The root is where /proc and /sys lie.
uint64_t GroupMemory(const std::filesystem::path& root = "/");

/// Bytes of memory that this process could have to itself: the machine's, or what its groups leave of it.
uint64_t MachineMemory();

} // namespace aveffect
