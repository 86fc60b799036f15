#include "host/media/photo_orientation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

extern "C" {
#include <libavformat/avformat.h>
}

#include "host/media/file_bytes.h"
#include "host/media/photo_metadata.h"

namespace aveffect {
namespace {

/// Part of a packet; reads behind its end give 0.
class Bytes {
public:
    explicit Bytes(std::string_view bytes)
        : m_bytes(bytes) {}

    int64_t Size() const noexcept { return static_cast<int64_t>(m_bytes.size()); }
    int64_t Number(int64_t position, int length, bool big) const {
        int64_t number = 0;
        for (int index = 0; index < length; ++index) {
            const int64_t at = position + (big ? index : length - 1 - index);
            number = number << 8 | (at < Size() ? static_cast<uint8_t>(m_bytes[static_cast<size_t>(at)]) : 0);
        }
        return number;
    }
    bool Says(int64_t position, std::string_view text) const {
        return position < Size() && m_bytes.substr(static_cast<size_t>(position)).starts_with(text);
    }

private:
    std::string_view m_bytes;
};

/// The orientation, 1 to 8, in the first directory; 0 when it says none. EXIF data are built as TIFF files
/// are.
int InTiff(const Bytes& tiff) {
    constexpr int64_t kOrientation = 274, kEntry = 12;
    const bool big = tiff.Says(0, "MM");
    if (!big && !tiff.Says(0, "II")) return 0;
    const int64_t directory = tiff.Number(4, 4, big);
    const int64_t entries = tiff.Number(directory, 2, big);
    for (int64_t entry = directory + 2; entry < directory + 2 + kEntry * entries; entry += kEntry) {
        if (tiff.Number(entry, 2, big) != kOrientation) continue;
        const int64_t value = tiff.Number(entry + 8, 2, big);
        return value >= 1 && value <= 8 ? static_cast<int>(value) : 0;
    }
    return 0;
}

int OrientationOf(AVCodecID codec, std::string_view picture) {
    switch (codec) {
    case AV_CODEC_ID_PNG:
    case AV_CODEC_ID_WEBP:
        return InTiff(Bytes(FindExif(picture)));
    case AV_CODEC_ID_TIFF:
        return InTiff(Bytes(picture));
    default:
        return 0;
    }
}

/// Boxes of a file, one in the other.
struct Box {
    int64_t begin = 0, end = 0; ///< of what it holds; both 0 when there is none
};

/// The first such box at or behind a place.
Box FindBox(FileBytes& file, int64_t position, int64_t end, std::string_view name) {
    constexpr int64_t kHead = 8;
    while (position + kHead <= end) {
        const int64_t length = file.Big(position, 4);
        if (length < kHead) break;
        if (file.Says(position + 4, name)) return {position + kHead, std::min(end, position + length)};
        position += length;
    }
    return {};
}

/// The property with that number, counted from 1.
Box PropertyAt(FileBytes& file, const Box& properties, int64_t number) {
    int64_t position = properties.begin;
    while (--number > 0 && position < properties.end) position += std::max<int64_t>(8, file.Big(position, 4));
    return {position, properties.end};
}

/// The numbers of an item's properties, which stand in one list for all items.
template <typename See>
void ForProperties(FileBytes& file, const Box& list, int64_t item, See see) {
    const bool longItems = file.At(list.begin) > 0, longNumbers = (file.At(list.begin + 3) & 1) != 0;
    const int itemBytes = longItems ? 4 : 2, numberBytes = longNumbers ? 2 : 1;
    int64_t position = list.begin + 8;
    for (int64_t left = file.Big(list.begin + 4, 4); left > 0 && position < list.end; --left) {
        const bool wanted = file.Big(position, itemBytes) == item;
        position += itemBytes;
        for (int count = file.At(position++); count > 0 && position < list.end;
             --count, position += numberBytes)
            if (wanted) see(file.Big(position, numberBytes) & (longNumbers ? 0x7fff : 0x7f));
    }
}

/// Quarter turns to the left come first, then the mirror: none, upside down, left to right.
int InAvif(FileBytes& file) {
    static constexpr int kOrientations[3][4] = {{1, 8, 3, 6}, {4, 5, 2, 7}, {2, 7, 4, 5}};
    constexpr int64_t kVersion = 4; // bytes before what a box holds
    const Box meta = FindBox(file, 0, file.Size(), "meta");
    const Box primary = FindBox(file, meta.begin + kVersion, meta.end, "pitm");
    const Box about = FindBox(file, meta.begin + kVersion, meta.end, "iprp");
    const Box properties = FindBox(file, about.begin, about.end, "ipco");
    const Box list = FindBox(file, about.begin, about.end, "ipma");
    if (!primary.end || !properties.end || !list.end) return 0;
    const int64_t item = file.Big(primary.begin + kVersion, file.At(primary.begin) ? 4 : 2);
    int turn = 0, mirror = 0;
    ForProperties(file, list, item, [&](int64_t number) {
        const Box property = PropertyAt(file, properties, number);
        if (file.Says(property.begin + 4, "irot")) turn = file.At(property.begin + 8) & 3;
        if (file.Says(property.begin + 4, "imir")) mirror = 1 + (file.At(property.begin + 8) & 1);
    });
    return kOrientations[mirror][turn];
}

using Matrix = std::array<int32_t, 9>;

/// The display matrix for orientations 1 to 8: (x, y) goes to (a x + c y, b x + d y).
Matrix MatrixFor(int orientation) {
    static constexpr int kTurns[8][4] = {{1, 0, 0, 1}, {-1, 0, 0, 1}, {-1, 0, 0, -1}, {1, 0, 0, -1},
                                         {0, 1, 1, 0}, {0, 1, -1, 0}, {0, -1, -1, 0}, {0, -1, 1, 0}};
    constexpr int32_t kOne = 1 << 16;
    const auto& [a, b, c, d] = kTurns[orientation - 1];
    return {a * kOne, b * kOne, 0, c * kOne, d * kOne, 0, 0, 0, 1 << 30};
}

} // namespace

void SayPhotoOrientation(const AVStream& stream, AVPacket& packet) {
    if (!packet.data) return;
    const std::string_view bytes(reinterpret_cast<const char*>(packet.data),
                                 static_cast<size_t>(packet.size));
    const int orientation = OrientationOf(stream.codecpar->codec_id, bytes);
    if (orientation <= 1) return;
    const Matrix matrix = MatrixFor(orientation);
    if (uint8_t* data = av_packet_new_side_data(&packet, AV_PKT_DATA_DISPLAYMATRIX, sizeof matrix))
        std::memcpy(data, matrix.data(), sizeof matrix);
}

void SayPhotoOrientation(const std::string& path, AVFormatContext& input) {
    FileBytes file(path);
    if (!file.Says(4, "ftypavif") && !file.Says(4, "ftypavis") && !file.Says(4, "ftypmif1")) return;
    const int orientation = InAvif(file);
    if (orientation <= 1) return;
    const Matrix matrix = MatrixFor(orientation);
    for (unsigned index = 0; index < input.nb_streams; ++index)
        if (uint8_t* data =
                av_stream_new_side_data(input.streams[index], AV_PKT_DATA_DISPLAYMATRIX, sizeof matrix))
            std::memcpy(data, matrix.data(), sizeof matrix);
}

} // namespace aveffect
