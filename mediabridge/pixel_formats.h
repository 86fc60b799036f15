#pragma once
/// Frame-table pixel formats and those of the installed libavutil, matched by name: the numbers of the two differ.
#include <optional>
#include <string>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace mediabridge {

/// The library's format for a frame-table id, AV_PIX_FMT_NONE for ids outside the table or unknown to the library.
AVPixelFormat LibraryFormat(unsigned frameFormat);

/// The frame-table id for a library format. Full range turns the 4:2:0, 4:2:2 and 4:4:4 formats into their J ids.
std::optional<unsigned> FrameFormat(AVPixelFormat format, AVColorRange range);

/// A frame-table id by its lower-case library name ("bgra", "yuv420p").
std::optional<unsigned> FrameFormatByName(const std::string& name);

/// The lower-case name of a frame-table id, for messages.
std::string FrameFormatName(unsigned frameFormat);

/// Bytes of picture a row and rows of one plane as the frame table counts them: chroma rounded down, where the library
/// rounds up. Both 0 for a plane that the format does not have.
struct PlaneSize {
    unsigned widthBytes = 0;
    unsigned rows = 0;
};
PlaneSize TablePlaneSize(unsigned frameFormat, unsigned plane, unsigned width, unsigned height);

/// Planes of a frame-table format as frames report them.
unsigned TablePlaneCount(unsigned frameFormat);

} // namespace mediabridge
