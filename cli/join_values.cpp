#include "cli/join_values.h"

#include <unistd.h>

#include "cli/option_values.h"
#include "host/media/source_request.h"
#include "host/settings/value_text.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

bool IsFile(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

} // namespace

JoinClip JoinClipOf(const std::string& text) {
    const size_t mark = text.rfind('@');
    if (mark == std::string::npos || IsFile(text)) return {text};
    const std::string file = text.substr(0, mark), length = text.substr(mark + 1);
    const auto time = ParseTime(length);
    if (time && *time > 0) return {file, time};
    if (!IsFile(ParseSourceUrl(file).path)) return {text};
    throw Error(ErrorKind::Usage,
                file + "@ takes a time above 0: seconds, mm:ss or hh:mm:ss.ms, not '" + length + "'");
}

JoinSeam JoinSeamOf(const std::string& text, int64_t usualMs) {
    const size_t mark = text.find('@');
    const std::string name = text.substr(0, mark);
    const bool cut = name == "cut";
    if (mark == std::string::npos) return cut ? JoinSeam{} : JoinSeam{name, usualMs};
    if (cut) throw Error(ErrorKind::Usage, "'" + text + "': a cut takes no time");
    return {name, TimeOption("--effect NAME@TIME", text.substr(mark + 1))};
}

} // namespace aveffect
