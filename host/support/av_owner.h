#pragma once
/// Owners and small helpers for the container library's objects.
#include <memory>
#include <string>

#include "host/support/error.h"
#include "mediabridge/av_ptr.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace aveffect {

struct OutputContextDeleter {
    void operator()(AVFormatContext* context) const noexcept { avformat_free_context(context); }
};
using OutputContextPtr = std::unique_ptr<AVFormatContext, OutputContextDeleter>;

inline constexpr AVRational kMilliseconds{1, 1000};
inline constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

/// The library's sentence for an error code, for messages.
std::string AvText(int code);

/// Throws NoMemory where a library's code says so.
void RequireMemory(int code, const std::string& text);

/// Throws Error of that kind with the library's sentence behind the text, or NoMemory.
[[noreturn]] void ThrowFailure(ErrorKind kind, const std::string& text, int code);

/// "12.5 s", for messages.
std::string SecondsText(int64_t milliseconds);

} // namespace aveffect
