#pragma once
/// Where the plug-in is.
#include <filesystem>

namespace aveffect::adapters {

/// Where the library that this is linked into really lies: people link modules into the folders that hosts
/// look into. Throws std::runtime_error.
std::filesystem::path OwnDirectory();

/// The directory of libAVEffect.so and its companions, counted from OwnDirectory(): "aveffect" beside it
/// where it is installed, "bin" two levels up where it is built. Throws std::runtime_error.
std::filesystem::path PluginDirectory();

} // namespace aveffect::adapters
