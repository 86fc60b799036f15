#pragma once
/// Frame-table pixel formats and those of the installed libavutil, matched by name: the numbers of the two
/// differ.
#include <optional>
#include <string>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace mediabridge {

/// The library's format for a frame-table id, AV_PIX_FMT_NONE for ids outside the table or unknown to the
/// library.
AVPixelFormat LibraryFormat(unsigned frameFormat);

/// The frame-table id for a library format. Full range turns the 4:2:0, 4:2:2 and 4:4:4 formats into their J
/// ids.
std::optional<unsigned> FrameFormat(AVPixelFormat format, AVColorRange range);

/// A frame-table id by its lower-case library name ("bgra", "yuv420p"); the library's aliases count too.
std::optional<unsigned> FrameFormatByName(const std::string& name);

/// The lower-case name of a frame-table id, for messages. Other ids come as "format" and the number.
std::string FrameFormatName(unsigned frameFormat);

/// Bytes of picture a row and rows of one plane as the frame table counts them: chroma rounded down, where
/// the library rounds up; 10-bit formats with one byte a sample. Both 0 for a plane that the format does not
/// have.
struct PlaneSize {
    unsigned widthBytes = 0;
    unsigned rows = 0;
};
PlaneSize TablePlaneSize(unsigned frameFormat, unsigned plane, unsigned width, unsigned height);

/// The same with chroma planes rounded up, as pictures have them.
PlaneSize PicturePlaneSize(unsigned frameFormat, unsigned plane, unsigned width, unsigned height);

/// Bytes of a plane's rows that the frame table hides when so many columns are cropped at the right.
unsigned TableCropBytes(unsigned frameFormat, unsigned plane, unsigned right);

/// Planes of a frame-table format as frames report them; 0 for ids outside the table.
unsigned TablePlaneCount(unsigned frameFormat);

/// Whether frames of a frame-table format count as packed.
bool TableIsPacked(unsigned frameFormat);

/// The full-range 4:2:0, 4:2:2 and 4:4:4 formats have a name of their own, which libswscale calls deprecated:
/// the same layout without the range. All other formats come back as they are.
AVPixelFormat WithoutRange(AVPixelFormat format);

/// Whether samples of the format come in full and limited range: YUV and grey, but not RGB, palettes and
/// bitmaps.
bool HasColourRange(AVPixelFormat format);

/// The range of a picture that does not tell: full for J formats, grey and RGB, else limited.
AVColorRange UsualRange(AVPixelFormat format);

} // namespace mediabridge
