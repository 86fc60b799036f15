#pragma once
/// Owners and small helpers for the container library's objects.
#include <memory>
#include <string>

#include "host/media/damage.h"
#include "mediabridge/av_ptr.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace aveffect {

/// Of what OpenDeviceInput() gives.
struct DeviceInputDeleter {
    void operator()(AVIOContext* io) const noexcept;
};
using DeviceInputPtr = std::unique_ptr<AVIOContext, DeviceInputDeleter>;

struct InputContextDeleter {
    DeviceInputPtr device;               ///< that the input reads from, if any; closed after it
    std::unique_ptr<InputDamage> damage; ///< of the input; outlives it
    void operator()(AVFormatContext* context) const noexcept { avformat_close_input(&context); }
};
using InputContextPtr = std::unique_ptr<AVFormatContext, InputContextDeleter>;

struct OutputContextDeleter {
    void operator()(AVFormatContext* context) const noexcept { avformat_free_context(context); }
};
using OutputContextPtr = std::unique_ptr<AVFormatContext, OutputContextDeleter>;

inline constexpr AVRational kMilliseconds{1, 1000};
inline constexpr AVRational kMicroseconds{1, AV_TIME_BASE};

/// The library's sentence for an error code, for messages.
std::string AvText(int code);

/// "12.5 s", for messages.
std::string SecondsText(int64_t milliseconds);

} // namespace aveffect
