#include "host/log_capture.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "host/av_owner.h"

extern "C" {
#include <libavutil/log.h>
}

namespace aveffect {
namespace {

thread_local std::string firstError;

// Called from C: nothing may be thrown, so the line is cut to a fixed size and an allocation failure loses
// it.
void Keep(void* /*origin*/, int level, const char* format, va_list arguments) noexcept {
    if (level > AV_LOG_ERROR || !firstError.empty()) return;
    char line[512];
    if (std::vsnprintf(line, sizeof line, format, arguments) < 0) return;
    try {
        std::string text = line;
        text = text.substr(0, text.find('\n')); // some errors go on for lines
        text.erase(text.find_last_not_of(" .:") + 1);
        firstError = std::move(text);
    } catch (...) {
        firstError.clear();
    }
}

} // namespace

void CaptureLibraryLog() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(Keep); });
}

std::string TakeLibraryError() { return std::exchange(firstError, {}); }

std::string AvText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

std::string SecondsText(int64_t milliseconds) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3f", static_cast<double>(milliseconds) / 1000);
    std::string seconds = text;
    while (seconds.back() == '0') seconds.pop_back();
    if (seconds.back() == '.') seconds.pop_back();
    return seconds + " s";
}

} // namespace aveffect
