#include "host/media/animation.h"

#include <string_view>

#include "host/media/file_bytes.h"

namespace aveffect {
namespace {

/// Behind GIF's blocks of up to 255 bytes, of which the last is empty.
int64_t SkipBlocks(FileBytes& file, int64_t position) {
    while (position < file.Size() && file.At(position) != 0) position += 1 + file.At(position);
    return position + 1;
}

/// A count of how often the pictures begin again stands in an extension before the first one.
int64_t GifPlays(FileBytes& file) {
    constexpr int64_t kFlags = 10, kHeader = 13;
    constexpr uint8_t kExtension = 0x21, kApplication = 0xFF;
    const uint8_t flags = file.At(kFlags);
    int64_t position = kHeader + (flags & 0x80 ? int64_t{3} << ((flags & 7) + 1) : 0);
    while (position < file.Size() && file.At(position) == kExtension) {
        const int64_t blocks = position + 2;
        const bool counts =
            file.At(position + 1) == kApplication &&
            (file.Says(blocks, "\x0BNETSCAPE2.0\x03\x01") || file.Says(blocks, "\x0B"
                                                                               "ANIMEXTS1.0\x03\x01"));
        if (counts) {
            const int64_t again = file.Little(blocks + 14, 2);
            return again == 0 ? 0 : again + 1;
        }
        position = SkipBlocks(file, blocks);
    }
    return 1;
}

std::optional<int64_t> PngPlays(FileBytes& file) {
    constexpr int64_t kSignature = 8, kAroundData = 12;
    for (int64_t chunk = kSignature; chunk < file.Size(); chunk += kAroundData + file.Big(chunk, 4)) {
        if (file.Says(chunk + 4, "acTL")) return file.Big(chunk + 12, 4);
        if (file.Says(chunk + 4, "IDAT")) break;
    }
    return std::nullopt;
}

} // namespace

std::optional<int64_t> PlayCount(const Source& source) {
    const std::string_view format = source.Format().iformat->name;
    if (format != "gif" && format != "apng") return std::nullopt;
    FileBytes file(source.Path());
    if (file.Size() == 0) return std::nullopt;
    return format == "gif" ? GifPlays(file) : PngPlays(file);
}

} // namespace aveffect
