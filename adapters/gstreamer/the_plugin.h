#pragma once
/// The effects' own plug-in, as GStreamer's has it.
#include "host/effects/plugin.h"

namespace aveffect::gst {

/// Loaded by the first call, for the life of the process. Safe from any thread. Throws Error (Effect) that
/// names the file and the reason.
const Plugin& ThePlugin();

} // namespace aveffect::gst
