#pragma once
/// What files of one picture say besides it: read from one file, written into the next.
#include <cstdint>
#include <string>
#include <string_view>

namespace aveffect {

struct PhotoMetadata {
    std::string exif;                    ///< built as TIFF files are
    std::string profile;                 ///< of the colours, as the ICC defines it
    std::string texts;                   ///< PNG's chunks of text, whole
    uint32_t densityX = 0, densityY = 0; ///< pixels a metre; 0 when nothing is said
};

/// The EXIF data in the bytes of a JPEG, PNG or WebP file; empty when there are none.
std::string_view FindExif(std::string_view picture);

/// Of a JPEG, PNG or WebP file, for a picture that was turned upright and changed: EXIF says so and loses its
/// small picture. Strip keeps only what tells how the picture looks: colour profile and density. Empty for
/// other files and those that can't be read.
PhotoMetadata ReadPhotoMetadata(const std::string& path, bool strip);

/// The bytes of a finished JPEG, PNG or WebP file with what it can hold of these; others stay as they are. A
/// profile goes where it suits the picture: one for grey into grey ones.
std::string AddPhotoMetadata(std::string picture, const PhotoMetadata& metadata);

} // namespace aveffect
