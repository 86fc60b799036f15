#pragma once
/// The page's files, which are part of the program.
#include <span>
#include <string_view>

namespace aveffect {

struct PageFile {
    std::string_view name, bytes;
};

/// index.html, modules, style and icon. Made by the build from studio/page/.
std::span<const PageFile> PageFiles();

} // namespace aveffect
