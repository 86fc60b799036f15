#include "timeline/otio/document.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include "host/support/error.h"
#include "host/support/whole_file.h"

namespace aveffect {

namespace {

constexpr size_t kMostBytes = size_t{256} << 20, kMostMembers = 4000;
constexpr int kDeepest = 256;
constexpr char kTooLarge[] = "the file is larger than 256 MB, which no film needs";

/// Objects that are open while the text is read. Members are looked for one by one, so that their number is
/// limited.
class Watch {
public:
    using Event = OtioJson::parse_event_t;

    bool operator()(int depth, Event event, OtioJson& parsed) {
        if (event == Event::object_start || event == Event::array_start) {
            if (depth >= kDeepest)
                Refuse("objects and lists lie more than " + std::to_string(kDeepest) + " deep in each other");
            m_open.emplace_back();
        } else if (event == Event::object_end || event == Event::array_end) {
            m_open.pop_back();
        } else if (event == Event::key) {
            Add(parsed.get_ref<const std::string&>());
        }
        return true;
    }

private:
    void Add(const std::string& member) {
        std::vector<std::string>& members = m_open.back();
        const auto place = std::ranges::lower_bound(members, member);
        if (place != members.end() && *place == member)
            Refuse("member " + OtioJson(member).dump() + " stands twice in one object");
        if (members.size() >= kMostMembers)
            Refuse("an object has more than " + std::to_string(kMostMembers) + " members");
        members.insert(place, member);
    }

    std::vector<std::vector<std::string>> m_open; ///< names of members, sorted
};

/// "line 3, column 12"; the byte counts from 1, 0 for none.
std::string LineOf(const std::string& bytes, size_t byte) {
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(byte, bytes.size()));
    const auto line = std::count(bytes.begin(), end, '\n') + 1;
    const auto start = std::find(std::make_reverse_iterator(end), bytes.rend(), '\n').base();
    return "line " + std::to_string(line) + ", column " + std::to_string(end - start);
}

bool IsNoNumber(const std::string& bytes, size_t byte) {
    const size_t from = bytes.find_last_of(" \t\n:,[{", byte > 1 ? byte - 2 : 0);
    const size_t start = from == std::string::npos ? 0 : from + 1;
    for (const char* word : {"NaN", "Inf", "-Inf", "nan", "inf", "-inf"})
        if (bytes.compare(start, std::strlen(word), word) == 0) return true;
    return false;
}

} // namespace

void Refuse(const std::string& message) { throw Error(ErrorKind::Usage, message); }

OtioJson ParseDocument(const std::string& bytes) {
    if (bytes.size() > kMostBytes) Refuse(kTooLarge);
    try {
        return OtioJson::parse(bytes, Watch());
    } catch (const OtioJson::parse_error& wrong) {
        if (IsNoNumber(bytes, wrong.byte))
            Refuse(LineOf(bytes, wrong.byte) + ": NaN and Infinity are no numbers that films can use");
        Refuse(LineOf(bytes, wrong.byte) + ": this is no JSON, as .otio files are");
    } catch (const OtioJson::out_of_range&) {
        Refuse("a number is too large to be counted");
    }
}

std::string DocumentText(const OtioJson& document) {
    constexpr int kIndent = 4;
    return document.dump(kIndent) + "\n";
}

std::string DocumentBytes(const std::string& path) {
    const auto fail = [&](const char* why) { throw Error(ErrorKind::Input, path + ": " + why); };
    std::error_code failed;
    if (std::filesystem::is_directory(path, failed)) fail("is a directory, no film");
    std::optional<std::string> bytes = WholeFile(path, kMostBytes + 1);
    if (!bytes) fail("No such file or directory");
    if (bytes->size() > kMostBytes) Refuse(path + ": " + kTooLarge);
    return std::move(*bytes);
}

} // namespace aveffect
