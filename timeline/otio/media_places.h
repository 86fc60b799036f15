#pragma once
/// Where media are that films name, and which of them may be opened.
#include <filesystem>
#include <optional>
#include <string>

namespace aveffect {

struct MediaTerms {
    std::filesystem::path folder; ///< that relative names count from; empty: the current one
    std::optional<std::filesystem::path> root = {}; ///< files lie in it, symbolic links followed
    bool urls = false;                              ///< devices, pipes and protocols' resources may be named
};

/// The source URL for what a film names: "file:" URLs, paths, protocols' URLs. Throws Error (Usage) for what
/// may not be opened. Whether there is such a file is not looked at.
std::string MediaPlace(const std::string& named, const MediaTerms& terms);

/// The same for all files of a folder whose names begin so: folder and prefix together.
std::string NumberedPlace(const std::string& folder, const std::string& prefix, const MediaTerms& terms);

/// The name for a file in a film that will lie in that folder: relative when it is in the folder or below, a
/// "file:" URL otherwise. What follows a source URL's "?" stays behind it.
std::string MediaName(const std::string& url, const std::filesystem::path& folder);

} // namespace aveffect
