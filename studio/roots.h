#pragma once
/// The folders below which the page may read and write.
#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace aveffect {

class Roots {
public:
    /// Those folders and the files' own. Throws Error (Input) for what is not there.
    Roots(const std::vector<std::string>& folders, const std::vector<std::string>& files);

    const std::vector<std::string>& Folders() const noexcept { return m_folders; }

    /// The place of an existing file, links followed. Throws Error (Input) when there is none, it is no file,
    /// or it lies elsewhere.
    std::string File(const std::string& path) const;

    /// The place of a file to be written, whose folder exists and which is no link. Throws Error (Output).
    std::string Output(const std::string& path) const;

    /// What a folder holds, as the page is told: {"path", "parent", "entries"}; without a path the folders
    /// themselves. Hidden names and what lies elsewhere are left out. Throws Error (Input).
    nlohmann::json List(const std::string& path) const;

private:
    bool Hold(const std::filesystem::path& place) const;

    std::vector<std::string> m_folders; ///< links followed
};

} // namespace aveffect
