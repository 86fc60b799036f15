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
#include "host/media/tiff.h"

namespace aveffect {
namespace {

/// 1 to 8; 0 when the first directory says none.
int InTiff(std::string_view bytes) {
    const Tiff tiff(bytes);
    const size_t place = tiff.ValueOf(tiff.First(), Tiff::kOrientation);
    const uint32_t value = place ? tiff.Number(place, 2) : 0;
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 0;
}

int OrientationOf(AVCodecID codec, std::string_view picture) {
    switch (codec) {
    case AV_CODEC_ID_PNG:
    case AV_CODEC_ID_WEBP:
        return InTiff(FindExif(picture));
    case AV_CODEC_ID_TIFF:
        return InTiff(picture);
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
