#include "host/support/log_capture.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "host/support/av_owner.h"

extern "C" {
#include <libavutil/log.h>
}

namespace aveffect {
namespace {

thread_local std::string firstError;

// Objects of other parts of the process have opaque pointers too, so only those known here are followed.
std::mutex collectorsMutex;
std::unordered_set<const void*> collectors;

// Errors about what is neither picture nor sound.
constexpr std::array<std::string_view, 4> kBesides = {"EXIF", "Exif", "APP fields", "ICC"};

// The opaque pointer of the container or codec that an object of the libraries belongs to.
void* OpaqueOf(void* object) {
    constexpr int kDeepest = 4;
    for (int depth = 0; object && depth < kDeepest; ++depth) {
        const AVClass* const about = *static_cast<const AVClass* const*>(object);
        if (!about) return nullptr;
        if (about == avcodec_get_class()) return static_cast<AVCodecContext*>(object)->opaque;
        if (about == avformat_get_class()) return static_cast<AVFormatContext*>(object)->opaque;
        if (about->parent_log_context_offset == 0) return nullptr;
        object = *reinterpret_cast<void**>(static_cast<char*>(object) + about->parent_log_context_offset);
    }
    return nullptr;
}

// Called from C: nothing may be thrown, so the line is cut to a fixed size and an allocation failure loses
// it.
void Keep(void* origin, int level, const char* format, va_list arguments) noexcept {
    if (level > AV_LOG_ERROR) return;
    char line[512];
    if (std::vsnprintf(line, sizeof line, format, arguments) < 0) return;
    try {
        std::string text = line;
        text = text.substr(0, text.find('\n')); // some errors go on for lines
        text.erase(text.find_last_not_of(" .:") + 1);
        ErrorLines::Add(origin, text);
        if (firstError.empty()) firstError = std::move(text);
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

ErrorLines::ErrorLines() {
    const std::scoped_lock lock(collectorsMutex);
    collectors.insert(this);
}

ErrorLines::~ErrorLines() {
    const std::scoped_lock lock(collectorsMutex);
    collectors.erase(this);
}

int64_t ErrorLines::Count() const {
    const std::scoped_lock lock(collectorsMutex);
    return m_count;
}

std::string ErrorLines::First() const {
    const std::scoped_lock lock(collectorsMutex);
    return m_first;
}

void ErrorLines::Forget() {
    const std::scoped_lock lock(collectorsMutex);
    m_count = 0;
    m_first.clear();
}

void ErrorLines::Add(void* origin, const std::string& line) {
    void* const opaque = OpaqueOf(origin);
    if (!opaque || std::ranges::any_of(kBesides, [&line](std::string_view word) {
            return line.find(word) != std::string::npos;
        }))
        return;
    const std::scoped_lock lock(collectorsMutex);
    if (!collectors.contains(opaque)) return;
    auto* const lines = static_cast<ErrorLines*>(opaque);
    if (lines->m_count++ == 0) lines->m_first = line;
}

std::string AvText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

void RequireMemory(int code, const std::string& text) {
    if (code == AVERROR(ENOMEM)) throw NoMemory(text + ": out of memory");
}

void ThrowFailure(ErrorKind kind, const std::string& text, int code) {
    RequireMemory(code, text);
    throw Error(kind, text + ": " + AvText(code));
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
