#pragma once
/// Where the plug-in is.
#include <filesystem>

namespace aveffect::adapters {

/// The directory of libAVEffect.so and its companions, counted from that of the library which this is linked
/// into: "aveffect" beside it where it is installed, "bin" two levels up where it is built. People link
/// modules into the folders that hosts look into, so the library's real place counts. Throws
/// std::runtime_error.
std::filesystem::path PluginDirectory();

} // namespace aveffect::adapters
