#include "timeline/otio/media_places.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <string_view>

#include <sys/stat.h>

#include "host/media/input.h"
#include "host/media/source_request.h"
#include "host/support/error.h"
#include "timeline/otio/document.h"

namespace aveffect {

namespace fs = std::filesystem;

namespace {

bool Exists(const fs::path& path) {
    std::error_code failed;
    return fs::exists(path, failed);
}

/// Length of "http" in "http://..."; 0 without. One letter is a drive's, of other systems.
size_t SchemeLength(const std::string& text) {
    const auto inScheme = [](unsigned char letter) {
        return std::isalnum(letter) || letter == '+' || letter == '-' || letter == '.';
    };
    const auto end = std::ranges::find_if_not(text, inScheme);
    const auto length = static_cast<size_t>(end - text.begin());
    return length > 1 && end != text.end() && *end == ':' ? length : 0;
}

int HexDigit(char letter) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const size_t place = kDigits.find(static_cast<char>(std::tolower(static_cast<unsigned char>(letter))));
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

/// Signs of percent that no two digits follow are meant: not all programs escape.
std::string PercentDecoded(const std::string& text) {
    std::string result;
    for (size_t index = 0; index < text.size(); ++index) {
        const int high = index + 2 < text.size() ? HexDigit(text[index + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[index + 2]) : -1;
        if (text[index] == '%' && low >= 0) {
            result += static_cast<char>(high * 16 + low);
            index += 2;
        } else {
            result += text[index];
        }
    }
    return result;
}

std::string PercentEncoded(const std::string& text) {
    constexpr std::string_view kPlain = "/-_.~";
    std::string result;
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if ((code < 0x80 && std::isalnum(code)) || kPlain.find(letter) != std::string_view::npos) {
            result += letter;
        } else {
            std::array<char, 4> escape{};
            std::snprintf(escape.data(), escape.size(), "%%%02X", static_cast<unsigned>(code));
            result += escape.data();
        }
    }
    return result;
}

/// What a "file:" URL names: its path, the text behind "?" as it is.
std::string PathInUrl(const std::string& url) {
    std::string rest = url.substr(std::string_view("file:").size());
    if (rest.starts_with("//")) {
        const size_t slash = rest.find('/', 2);
        const std::string host = rest.substr(2, slash == std::string::npos ? slash : slash - 2);
        if (!host.empty() && host != "localhost")
            Refuse("'" + url + "' names the machine '" + host +
                   "'; files of this one are written file:///folder/name");
        rest = slash == std::string::npos ? "" : rest.substr(slash);
    }
    const size_t query = std::min(rest.find('?'), rest.size());
    return PercentDecoded(rest.substr(0, query)) + rest.substr(query);
}

bool IsFileUrl(const std::string& text) {
    constexpr std::string_view kScheme = "file:";
    return text.size() > kScheme.size() &&
           std::equal(kScheme.begin(), kScheme.end(), text.begin(), [](char wanted, char letter) {
               return wanted == std::tolower(static_cast<unsigned char>(letter));
           });
}

/// Whether opening it may wait, or do something.
bool IsDevice(const fs::path& path) {
    const std::string text = path.lexically_normal();
    if ((text.starts_with("/dev/") && !text.starts_with("/dev/shm/")) || text.starts_with("/proc/"))
        return true;
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    return S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode) || S_ISFIFO(status.st_mode) ||
           S_ISSOCK(status.st_mode);
}

bool LiesIn(const fs::path& path, const fs::path& folder) {
    const auto [rest, unused] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return rest == folder.end() || (std::next(rest) == folder.end() && rest->empty());
}

fs::path Resolved(const fs::path& path) {
    std::error_code failed;
    fs::path whole = fs::weakly_canonical(fs::absolute(path, failed), failed);
    if (failed) Refuse(path.string() + ": " + failed.message());
    return whole;
}

void RequireInRoot(const fs::path& path, const MediaTerms& terms) {
    if (terms.root && !LiesIn(Resolved(path), Resolved(*terms.root)))
        Refuse("'" + path.string() + "' lies outside of the media's folder, '" + terms.root->string() + "'");
}

void RequireOpenable(const fs::path& path, const MediaTerms& terms) {
    if (!terms.urls && IsDevice(path))
        Refuse("'" + path.string() + "' is no file but a device or a pipe, which --allow-urls allows");
    RequireInRoot(path, terms);
}

/// Every file that a pattern may stand for.
void RequireAllOpenable(const fs::path& prefix, const MediaTerms& terms) {
    const std::string start = prefix.filename();
    const fs::path folder = prefix.has_parent_path() ? prefix.parent_path() : ".";
    RequireOpenable(folder, terms);
    if (!terms.root) return; // links into other folders are welcome
    std::error_code failed;
    for (fs::directory_iterator file(folder, failed), end; !failed && file != end; file.increment(failed))
        if (file->path().filename().string().starts_with(start)) RequireOpenable(file->path(), terms);
}

/// Such that no part of it reads as a protocol.
fs::path InFolder(const std::string& path, const MediaTerms& terms) {
    if (path.find('\0') != std::string::npos) Refuse("a file's name has a byte 0 in it");
    const bool plain = path.find(':') == std::string::npos;
    return (terms.folder.empty() && !plain ? fs::path(".") : terms.folder) / path;
}

} // namespace

std::string MediaPlace(const std::string& named, const MediaTerms& terms) {
    if (named.empty()) Refuse("the name of the file is empty");
    std::string path = named;
    if (IsFileUrl(named)) {
        path = PathInUrl(named);
    } else if (SchemeLength(named) > 0 && !Exists(InFolder(named, terms))) {
        if (!terms.urls || terms.root)
            Refuse("'" + named + "' is no file but a URL, which --allow-urls allows" +
                   (terms.root ? " without --media-root" : ""));
        return named;
    }
    if (path.empty() || path.starts_with('?')) Refuse("'" + named + "' names no file");
    std::string url = InFolder(path, terms);
    const std::string file = ParseSourceUrl(url).path;
    if (IsNumbered(file))
        RequireAllOpenable(file.substr(0, file.find('%')), terms);
    else
        RequireOpenable(file, terms);
    return url;
}

std::string NumberedPlace(const std::string& folder, const std::string& prefix, const MediaTerms& terms) {
    if (!IsFileUrl(folder) && SchemeLength(folder) > 0 && !Exists(InFolder(folder, terms)))
        Refuse("'" + folder + "' is no folder but a URL; numbered pictures are files");
    const std::string path = IsFileUrl(folder) ? PathInUrl(folder) : folder;
    std::string base = InFolder(path, terms);
    if (!base.ends_with('/')) base += '/';
    if (prefix.find('\0') != std::string::npos) Refuse("name_prefix has a byte 0 in it");
    RequireAllOpenable(base + prefix, terms);
    return base + prefix;
}

std::string MediaName(const std::string& url, const fs::path& folder) {
    if (!IsLocalPath(url) || SchemeLength(url) > 0) return url;
    const std::string path = ParseSourceUrl(url).path, query = url.substr(path.size());
    std::error_code failed;
    const fs::path file = fs::absolute(path, failed).lexically_normal();
    const fs::path base = fs::absolute(folder.empty() ? "." : folder, failed).lexically_normal();
    const std::string relative = file.lexically_relative(base);
    const auto isPlain = [](unsigned char letter) { return letter >= ' ' && letter < 0x7f; };
    const bool below = !relative.empty() && !relative.starts_with("..") && SchemeLength(relative) == 0;
    if (below && std::ranges::all_of(relative, isPlain)) return relative + query;
    return "file://" + PercentEncoded(file) + query;
}

} // namespace aveffect
