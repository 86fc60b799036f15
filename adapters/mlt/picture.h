#pragma once
/// Pictures as the host has them.
#include <cstdint>
#include <string_view>

#include <framework/mlt.h>

#include "adapters/support/shown_pictures.h"

namespace aveffect::mlt {

/// What the clip's reader says of the stream that it plays: "pix_fmt" of "video", "sample_fmt" of "audio";
/// empty where it says nothing.
std::string_view ClipFact(mlt_frame frame, const char* kind, const char* fact) noexcept;

/// Of the two formats that effects are given, the one in which a frame's pictures are asked for: planar 4:2:0
/// where its clip has nothing else, of that size, and a picture's chroma covers it, which is not so with odd
/// sides; rgba otherwise. The host scales and cuts packed pictures alone: planar ones would come in another
/// size.
mlt_image_format FormatFor(mlt_frame frame, int width, int height) noexcept;

/// A place in what a service works on; the service has a profile.
int64_t Milliseconds(mlt_position position, mlt_service service) noexcept;

/// The planes of a picture in rgba, whose bytes are to be in the order BGRA, or yuv420p.
adapters::HostPicture PictureOf(uint8_t* image, mlt_image_format format, int width, int height);

/// Exchanges the first and the third byte of each pixel: RGBA becomes BGRA, and the other way round.
void SwapRedAndBlue(uint8_t* image, int width, int height) noexcept;

} // namespace aveffect::mlt
