#pragma once
/// A moment of a transition between two pictures of a host.
#include "adapters/support/shown_pictures.h"
#include "host/effects/plugin.h"

namespace aveffect::adapters {

/// How far a transition has come, of how much: in milliseconds, or as a part of kWhole.
struct Moment {
    int64_t time, length;

    /// There is the second picture alone then, whatever the effect would draw: some show the first one again.
    bool Over() const { return time >= length; }
};

/// Draws a moment that is not over into a picture, whose memory may be that of one of the two: the
/// transition by its name. Throws Error, std::bad_alloc.
void DrawMoment(const Plugin& plugin, const char* transition, const HostPicture& first,
                const HostPicture& second, const HostPicture& drawn, const Moment& moment);

} // namespace aveffect::adapters
