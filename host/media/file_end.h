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
int64_t PcxEnd(FileBytes& file);
int64_t SgiEnd(FileBytes& file);
int64_t TgaEnd(FileBytes& file);
int64_t XbmEnd(FileBytes& file);
int64_t MpegSoundEnd(FileBytes& file);
int64_t Ac3End(FileBytes& file);
int64_t DtsEnd(FileBytes& file);
int64_t MlpEnd(FileBytes& file);
int64_t TtaEnd(FileBytes& file);
int64_t VocEnd(FileBytes& file);
int64_t SoxEnd(FileBytes& file);
int64_t AdxEnd(FileBytes& file);
int64_t WavpackEnd(FileBytes& file);

/// A file as a row of parts, each of which tells its length; lengthAt gives 0 where none begins any more.
template <typename LengthAt>
int64_t PartsEnd(FileBytes& file, int64_t position, LengthAt lengthAt) {
    while (position < file.Size()) {
        const int64_t length = lengthAt(position);
        if (length <= 0 || length > INT64_MAX - position) return length <= 0 ? 0 : kNoMark;
        position += length;
    }
    return position;
}

} // namespace aveffect
