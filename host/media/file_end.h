#pragma once
/// Whether a file goes on to its own end.
#include <optional>
#include <string>

#include "host/media/file_bytes.h"

namespace aveffect {

/// What is missing at the file's end, as a clause ("it ends before its end mark"); absent when all is there,
/// when the format has no end that can be told, and for pipes and devices. Looks at the kinds of files whose
/// end the container library takes as it comes.
std::optional<std::string> MissingEnd(const std::string& path);

/// The size that a file has at least, going by what it says: kNoMark when it never comes to its end mark, 0
/// when it doesn't tell.
inline constexpr int64_t kNoMark = INT64_MAX;
int64_t GifEnd(FileBytes& file);
int64_t PngEnd(FileBytes& file);
int64_t JpegEnd(FileBytes& file);
int64_t TiffEnd(FileBytes& file);
int64_t QoiEnd(FileBytes& file);
int64_t SunEnd(FileBytes& file);
int64_t ExrEnd(FileBytes& file);

} // namespace aveffect
