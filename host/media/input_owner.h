#pragma once
/// Owners of what an input is read through.
#include <memory>

#include "host/media/damage.h"
#include "host/support/av_owner.h"

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

} // namespace aveffect
