#pragma once
/// How photos say that they are turned, where the libraries don't look.
#include <string>

struct AVFormatContext;
struct AVPacket;
struct AVStream;

namespace aveffect {

/// Finds the EXIF orientation in a packet that holds a whole PNG, TIFF or WebP picture and adds it to the
/// packet as a display matrix, which decoders hand on.
void SayPhotoOrientation(const AVStream& stream, AVPacket& packet);

/// The turn and mirror of an AVIF file, which stand beside its picture, become its streams' display matrix.
void SayPhotoOrientation(const std::string& path, AVFormatContext& input);

} // namespace aveffect
