#pragma once
/// A window that plays a clip or sound through effects.
#include "host/jobs/render.h"

namespace aveffect {

/// The keys, for --help.
inline constexpr char kPlayerKeys[] =
    "Keys: space pauses, left and right go 5 seconds back and on, down and up a minute,\n"
    "home to the start, . shows the next picture, f fills the screen, q or escape ends.\n";

/// Opens a window and plays until the end, or until it is closed; a still picture stays until then. Sound
/// alone gets a small one that shows how far it is, or none without a display. Of the options those count
/// that Playback names. Pictures keep time with the sound, and are left out where effects can't keep up.
/// Throws Error: Output without a display for pictures, or a device for sound alone, Interrupted once the
/// flag is set.
void Play(const Plugin& plugin, const RenderOptions& options, const RenderObserver& observer,
          const std::atomic<bool>& cancel);

} // namespace aveffect
