#include "studio/roots.h"

#include <algorithm>
#include <array>

#include "host/support/error.h"

namespace aveffect {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr size_t kMostEntries = 5000; // of a folder

// Names may hold bytes that are no UTF-8, which JSON can't say; such files are left out.
bool IsSayable(const std::string& name) {
    try {
        return !json(name).dump().empty();
    } catch (const json::exception&) {
        return false;
    }
}

std::string KindOf(const fs::path& file) {
    constexpr std::array kMedia = {"3gp",  "aac", "apng", "avi", "avif", "bmp",  "dv",  "flac", "flv", "gif",
                                   "jpeg", "jpg", "m2ts", "m4a", "m4v",  "mkv",  "mov", "mp3",  "mp4", "mpeg",
                                   "mpg",  "mts", "mxf",  "nut", "oga",  "ogg",  "ogv", "opus", "png", "tif",
                                   "tiff", "ts",  "vob",  "wav", "webm", "webp", "wmv", "y4m"};
    std::string extension = file.extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    if (extension == ".otio") return "film";
    const bool media = extension.size() > 1 && std::ranges::find(kMedia, extension.substr(1)) != kMedia.end();
    return media ? "clip" : "other";
}

[[noreturn]] void RefuseElsewhere(ErrorKind kind, const std::string& path,
                                  const std::vector<std::string>& folders) {
    std::string list;
    for (const std::string& folder : folders) list += (list.empty() ? "" : ", ") + folder;
    throw Error(kind, path + " does not lie below " + list + "; start with --folder to reach more");
}

} // namespace

Roots::Roots(const std::vector<std::string>& folders, const std::vector<std::string>& files) {
    std::vector<fs::path> wanted(folders.begin(), folders.end());
    for (const std::string& file : files) {
        const fs::path parent = fs::path(file).parent_path();
        wanted.push_back(parent.empty() ? "." : parent);
    }
    if (wanted.empty()) wanted.emplace_back(".");
    for (const fs::path& folder : wanted) {
        std::error_code failed;
        const fs::path place = fs::canonical(folder, failed);
        if (failed || !fs::is_directory(place, failed))
            throw Error(ErrorKind::Input, folder.string() + " is no folder that can be read");
        if (std::ranges::find(m_folders, place.string()) == m_folders.end())
            m_folders.push_back(place.string());
    }
}

bool Roots::Hold(const fs::path& place) const {
    return std::ranges::any_of(m_folders, [&](const fs::path& folder) {
        return std::ranges::mismatch(folder, place).in1 == folder.end();
    });
}

std::string Roots::File(const std::string& path) const {
    std::error_code failed;
    const fs::path place = path.find('\0') == std::string::npos ? fs::canonical(path, failed) : fs::path();
    if (failed || place.empty()) throw Error(ErrorKind::Input, path + " is not there");
    if (!Hold(place)) RefuseElsewhere(ErrorKind::Input, path, m_folders);
    if (!fs::is_regular_file(place, failed)) throw Error(ErrorKind::Input, path + " is no file");
    return place.string();
}

std::string Roots::Output(const std::string& path) const {
    const fs::path named(path);
    std::error_code failed;
    if (path.find('\0') != std::string::npos || !named.is_absolute() || !named.has_filename() ||
        named.filename() == "." || named.filename() == "..")
        throw Error(ErrorKind::Output,
                    "'" + path + "' is no place for a file; write its folder and its name");
    const fs::path folder = fs::canonical(named.parent_path(), failed);
    if (failed) throw Error(ErrorKind::Output, "there is no folder " + named.parent_path().string());
    const fs::path place = folder / named.filename();
    if (!Hold(folder)) RefuseElsewhere(ErrorKind::Output, path, m_folders);
    const fs::file_status status = fs::symlink_status(place, failed);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw Error(ErrorKind::Output, path + " is there and no file that could be replaced");
    return place.string();
}

json Roots::List(const std::string& path) const {
    json entries = json::array();
    if (path.empty()) {
        for (const std::string& folder : m_folders)
            entries.push_back({{"name", folder}, {"path", folder}, {"folder", true}, {"kind", "other"}});
        return {{"path", ""}, {"parent", nullptr}, {"entries", entries}};
    }
    std::error_code failed;
    const fs::path place = path.find('\0') == std::string::npos ? fs::canonical(path, failed) : fs::path();
    if (failed || !fs::is_directory(place, failed)) throw Error(ErrorKind::Input, path + " is no folder");
    if (!Hold(place)) RefuseElsewhere(ErrorKind::Input, path, m_folders);
    for (const fs::directory_entry& entry : fs::directory_iterator(place, failed)) {
        const std::string name = entry.path().filename().string();
        const fs::path target = fs::canonical(entry.path(), failed);
        if (failed || name.starts_with('.') || !Hold(target) || !IsSayable(name)) continue;
        const bool folder = fs::is_directory(target, failed);
        entries.push_back({{"name", name},
                           {"path", entry.path().string()},
                           {"folder", folder},
                           {"kind", folder ? "other" : KindOf(name)}});
        if (entries.size() == kMostEntries) break;
    }
    std::sort(entries.begin(), entries.end(), [](const json& a, const json& b) {
        return std::pair(!a["folder"].get<bool>(), a["name"].get<std::string>()) <
               std::pair(!b["folder"].get<bool>(), b["name"].get<std::string>());
    });
    const std::string parent =
        Hold(place.parent_path()) && place.has_relative_path() ? place.parent_path().string() : "";
    return {{"path", place.string()}, {"parent", parent}, {"entries", entries}};
}

} // namespace aveffect
