/// Where files of single pictures end.
#include <algorithm>

#include "host/media/file_end.h"

namespace aveffect {
namespace {

/// Behind GIF's blocks of up to 255 bytes, of which the last is empty.
int64_t SkipBlocks(FileBytes& file, int64_t position) {
    while (position < file.Size()) {
        const int64_t length = file.At(position);
        position += 1 + length;
        if (length == 0) break;
    }
    return position;
}

int64_t GifColours(uint8_t flags) { return flags & 0x80 ? int64_t{3} << ((flags & 7) + 1) : 0; }

/// TIFF's numbers in either order.
struct TiffFile {
    FileBytes& bytes;
    bool big;
    int64_t listed =
        0; ///< in directories and lists that were looked at, which are fewer than a file has bytes

    int64_t Number(int64_t position, int length) const {
        return big ? bytes.Big(position, length) : bytes.Little(position, length);
    }
};

int64_t TiffSize(int64_t type) {
    static constexpr int kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    return type < 13 ? kSizes[type] : 0;
}

/// The end of what a directory points at.
int64_t TiffDirectoryEnd(TiffFile& tiff, int64_t directory) {
    constexpr int64_t kStripOffsets = 273, kStripBytes = 279, kTileOffsets = 324, kTileBytes = 325;
    struct List {
        int64_t at = 0, count = 0, size = 0;
    } offsets, lengths;
    const int64_t entries = tiff.Number(directory, 2);
    const int64_t last = directory + 2 + 12 * entries;
    int64_t end = last + 4;
    if (end > tiff.bytes.Size()) return end;
    for (int64_t entry = directory + 2; entry < last; entry += 12) {
        const int64_t tag = tiff.Number(entry, 2), size = TiffSize(tiff.Number(entry + 2, 2));
        const int64_t count = tiff.Number(entry + 4, 4);
        const bool inside = size * count <= 4;
        const int64_t at = inside ? entry + 8 : tiff.Number(entry + 8, 4);
        end = std::max(end, inside ? 0 : at + size * count);
        if (tag == kStripOffsets || tag == kTileOffsets) offsets = {at, count, size};
        if (tag == kStripBytes || tag == kTileBytes) lengths = {at, count, size};
    }
    if (end > tiff.bytes.Size() || offsets.count != lengths.count) return end;
    // Types that are not known have no size, and directories may lead back: both would be looked at for long.
    tiff.listed += entries + offsets.count;
    if (offsets.size == 0 || lengths.size == 0 || tiff.listed > tiff.bytes.Size()) return end;
    for (int64_t index = 0; index < offsets.count; ++index)
        end =
            std::max(end, tiff.Number(offsets.at + index * offsets.size, static_cast<int>(offsets.size)) +
                              tiff.Number(lengths.at + index * lengths.size, static_cast<int>(lengths.size)));
    return end;
}

} // namespace

int64_t GifEnd(FileBytes& file) {
    constexpr uint8_t kExtension = 0x21, kImage = 0x2c, kTrailer = 0x3b;
    int64_t position = 13 + GifColours(file.At(10));
    while (position < file.Size()) {
        const uint8_t kind = file.At(position);
        if (kind == kTrailer) return position + 1;
        if (kind == kExtension)
            position = SkipBlocks(file, position + 2);
        else if (kind == kImage)
            position = SkipBlocks(file, position + 11 + GifColours(file.At(position + 9)));
        else
            return 0;
    }
    return kNoMark;
}

int64_t PngEnd(FileBytes& file) {
    for (int64_t position = 8; position < file.Size();) {
        const bool last = file.Says(position + 4, "IEND");
        position += 12 + file.Big(position, 4);
        if (last) return position;
    }
    return kNoMark;
}

namespace {

// Markers with their lengths, and behind each start of a scan its bytes, in which 255 is followed by 0, by
// one of the restart marks, or begins the next marker.
int64_t JpegEnd(FileBytes& file, int64_t start) {
    constexpr uint8_t kEnd = 0xd9, kScan = 0xda, kRestart = 0xd0, kLastWithoutLength = 0xd9;
    bool scan = false;
    for (int64_t position = start + 2; position + 1 < file.Size();) {
        if (file.At(position) != 0xff) {
            if (!scan) return 0;
            ++position;
            continue;
        }
        const uint8_t mark = file.At(position + 1);
        if (mark == kEnd) return position + 2;
        const bool stuffed = scan && mark < 0x80; // JPEG-LS stuffs one bit only
        if (mark == 0xff) {
            ++position;
        } else if (stuffed || mark == 1 || (mark >= kRestart && mark <= kLastWithoutLength)) {
            position += 2;
        } else {
            scan = mark == kScan;
            position += 2 + file.Big(position + 2, 2);
        }
    }
    return kNoMark;
}

} // namespace

// One picture, or one behind the other.
int64_t JpegEnd(FileBytes& file) {
    int64_t end = 0;
    do {
        const int64_t next = JpegEnd(file, end);
        if (next == 0 || next == kNoMark) return next;
        end = next;
    } while (file.Says(end, "\xff\xd8\xff"));
    return end;
}

int64_t TiffEnd(FileBytes& file) {
    constexpr int kMostDirectories = 10000;
    TiffFile tiff{file, file.At(0) == 'M'};
    int64_t end = 8;
    int64_t directory = tiff.Number(4, 4);
    for (int count = 0; directory != 0 && count < kMostDirectories; ++count) {
        end = std::max(end, TiffDirectoryEnd(tiff, directory));
        if (end > file.Size() || tiff.listed > file.Size()) break;
        directory = tiff.Number(directory + 2 + 12 * tiff.Number(directory, 2), 4);
    }
    return end;
}

int64_t QoiEnd(FileBytes& file) { return file.Big(file.Size() - 8, 8) == 1 ? 0 : kNoMark; }

// Old files say no length.
int64_t SunEnd(FileBytes& file) {
    const int64_t length = file.Big(16, 4);
    return length > 0 ? 32 + file.Big(28, 4) + length : 0;
}

// The header's properties, then a table of where the parts of the picture lie, of which the first may come
// last. Files of several pictures are not looked at.
int64_t ExrEnd(FileBytes& file) {
    constexpr int64_t kTiled = 0x200, kSeveralOrDeep = 0x1800;
    const int64_t flags = file.Little(4, 4);
    if (flags & kSeveralOrDeep) return 0;
    int64_t position = 8;
    while (position < file.Size() && file.At(position) != 0) {
        for (int text = 0; text < 2; ++text, ++position)
            while (position < file.Size() && file.At(position) != 0) ++position;
        position += 4 + file.Little(position, 4);
    }
    int64_t first = file.Size(), last = 0;
    for (++position; position < first; position += 8) {
        const int64_t part = file.Little(position, 8);
        if (part == 0) return kNoMark; // writers fill the table in at the end
        first = std::min(first, part);
        last = std::max(last, part);
    }
    if (last > file.Size()) return last;
    const int64_t head = flags & kTiled ? 16 : 4;
    return last + head + 4 + (last + head + 4 <= file.Size() ? file.Little(last + head, 4) : 0);
}

// Two bits set begin a run: how often the next byte counts.
int64_t PcxEnd(FileBytes& file) {
    constexpr int64_t kHeader = 128;
    const int64_t rows = file.Little(10, 2) - file.Little(6, 2) + 1;
    int64_t left = rows * file.At(65) * file.Little(66, 2);
    int64_t position = kHeader;
    for (; left > 0 && position < file.Size(); ++position) {
        const uint8_t byte = file.At(position);
        const bool run = byte >= 0xc0;
        left -= run ? byte & 0x3f : 1;
        if (run) ++position;
    }
    return left > 0 ? kNoMark : position;
}

// Rows as they are, or packed ones with a table of where each lies and one of their lengths.
int64_t SgiEnd(FileBytes& file) {
    constexpr int64_t kHeader = 512;
    const int64_t dimensions = file.Big(4, 2);
    const int64_t rows = (dimensions > 1 ? file.Big(8, 2) : 1) * (dimensions > 2 ? file.Big(10, 2) : 1);
    if (file.At(2) == 0) return kHeader + rows * file.Big(6, 2) * file.At(3);
    int64_t end = kHeader + 8 * rows;
    for (int64_t row = 0; row < rows && end <= file.Size(); ++row)
        end = std::max(end, file.Big(kHeader + 4 * row, 4) + file.Big(kHeader + 4 * (rows + row), 4));
    return end;
}

// Newer files end with a mark; what is left of it shows that there was one.
int64_t TgaEnd(FileBytes& file) {
    constexpr std::string_view kMark("TRUEVISION-XFILE.\0", 18);
    constexpr int64_t kHeader = 18, kFewest = 4;
    constexpr uint8_t kPacked = 8;
    const int64_t pixel = (file.At(16) + 7) / 8, colour = (file.At(7) + 7) / 8;
    int64_t left = file.Little(12, 2) * file.Little(14, 2);
    int64_t position = kHeader + file.At(0) + (file.At(1) == 1 ? file.Little(5, 2) * colour : 0);
    if (!(file.At(2) & kPacked)) position += left * pixel;
    while ((file.At(2) & kPacked) && left > 0 && position < file.Size()) {
        const int64_t count = (file.At(position) & 0x7f) + 1;
        position += 1 + (file.At(position) & 0x80 ? 1 : count) * pixel;
        left -= count;
    }
    for (int64_t cut = kFewest; cut < static_cast<int64_t>(kMark.size()); ++cut)
        if (file.Size() - cut >= position &&
            file.Says(file.Size() - cut, kMark.substr(0, static_cast<size_t>(cut))))
            return kNoMark;
    return (file.At(2) & kPacked) && left > 0 ? kNoMark : position;
}

// C's text of a table.
int64_t XbmEnd(FileBytes& file) {
    int64_t last = file.Size() - 1;
    while (last > 0 && file.At(last) <= ' ') --last;
    return file.At(last) == ';' ? 0 : kNoMark;
}

} // namespace aveffect
