/// Where files of sound alone end.
#include <algorithm>
#include <array>

extern "C" {
#include <libavcodec/ac3_parser.h>
}

#include "host/media/file_end.h"

namespace aveffect {
namespace {

/// Bytes of a frame of MPEG sound; 0 where there is none.
int64_t MpegFrameLength(FileBytes& file, int64_t position) {
    static constexpr int kRates[] = {44100, 48000, 32000};
    static constexpr int kKilobits[][15] = {
        {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448}, // MPEG 1: layers 1 to 3
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
        {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256}, // MPEG 2: layer 1, 2 and 3
        {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}};
    const int64_t head = file.Big(position, 4);
    const int version = static_cast<int>(head >> 19 & 3), layer = 4 - static_cast<int>(head >> 17 & 3);
    const auto bits = static_cast<size_t>(head >> 12 & 15), rate = static_cast<size_t>(head >> 10 & 3);
    if ((head >> 21) != 0x7ff || version == 1 || layer == 4 || bits == 0 || bits == 15 || rate == 3) return 0;
    const bool first = version == 3;
    const int kind = first ? layer - 1 : layer == 1 ? 3 : 4;
    const int64_t hertz = kRates[rate] / (first ? 1 : version == 2 ? 2 : 4);
    const int64_t bitRate = int64_t{1000} * kKilobits[kind][bits], padding = head >> 9 & 1;
    if (layer == 1) return (12 * bitRate / hertz + padding) * 4;
    return (layer == 3 && !first ? 72 : 144) * bitRate / hertz + padding;
}

} // namespace

// Frame by frame; the first may hold no sound but say how many bytes there are from it on.
int64_t MpegSoundEnd(FileBytes& file) {
    int64_t start = 0;
    if (file.Says(0, "ID3")) {
        start = 10;
        int64_t length = 0;
        for (int index = 6; index < 10; ++index) length = length << 7 | (file.At(index) & 0x7f);
        start += length;
    }
    const int64_t first = MpegFrameLength(file, start);
    if (first == 0 || MpegFrameLength(file, start + first) == 0) return 0;
    for (const int offset : {13, 21, 36}) { // behind the side information of mono and stereo
        const bool tagged = file.Says(start + offset, "Xing") || file.Says(start + offset, "Info");
        const int64_t flags = file.Big(start + offset + 4, 4);
        if (tagged && (flags & 2)) {
            const int64_t bytes = file.Big(start + offset + 8 + (flags & 1 ? 4 : 0), 4);
            if (bytes > 0) return start + bytes;
        }
    }
    return PartsEnd(file, start, [&file](int64_t position) { return MpegFrameLength(file, position); });
}

namespace {

/// Behind the tag that may follow at a place.
int64_t TagEnd(FileBytes& file, int64_t position) {
    constexpr int64_t kHead = 32;
    return file.Says(position, "APETAGEX") ? position + kHead + file.Little(position + 12, 4) : position;
}

} // namespace

int64_t WavpackEnd(FileBytes& file) {
    int64_t tag = 0;
    const int64_t end = PartsEnd(file, 0, [&](int64_t position) -> int64_t {
        tag = position;
        return file.Says(position, "wvpk") ? 8 + file.Little(position + 4, 4) : 0;
    });
    return end > 0 ? end : TagEnd(file, tag);
}

int64_t Ac3End(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        std::array<uint8_t, 16> head{};
        for (size_t byte = 0; byte < head.size(); ++byte)
            head[byte] = file.At(position + static_cast<int64_t>(byte));
        uint8_t kind = 0;
        uint16_t length = 0;
        if (av_ac3_parse_header(head.data(), head.size(), &kind, &length) >= 0) return length;
        return head[0] == 0x0b && position + 1 == file.Size() ? 2 : 0; // the first half of its mark
    });
}

// The plain sound and its extension take turns.
int64_t DtsEnd(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        constexpr int64_t kHead = 10;
        if (position + kHead > file.Size()) return file.At(position) == 0x7f ? kHead : 0;
        const int64_t head = file.Big(position + 5, 5);
        if (file.Says(position, "\x7f\xfe\x80\1")) return (head >> 20 & 0x3fff) + 1;
        const bool isLong = (head >> 37 & 1) != 0;
        if (file.Says(position, "dX %")) return (isLong ? head >> 5 & 0xfffff : head >> 13 & 0xffff) + 1;
        return 0;
    });
}

int64_t MlpEnd(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        return position + 1 == file.Size() ? 2 : (file.Big(position, 2) & 0xfff) * 2;
    });
}

// A table behind the header holds the frames' lengths; all are of 256/245 s.
int64_t TtaEnd(FileBytes& file) {
    constexpr int64_t kHeader = 22, kSum = 4;
    const int64_t samples = file.Little(14, 4), frame = file.Little(10, 4) * 256 / 245;
    if (frame == 0) return 0;
    const int64_t frames = (samples + frame - 1) / frame;
    int64_t end = kHeader + 4 * frames + kSum;
    for (int64_t index = 0; index < frames && end <= file.Size(); ++index)
        end += file.Little(kHeader + 4 * index, 4);
    return TagEnd(file, end);
}

// Blocks up to an empty one.
int64_t VocEnd(FileBytes& file) {
    int64_t position = file.Little(20, 2);
    while (position < file.Size()) {
        if (file.At(position) == 0) return position + 1;
        position += 4 + file.Little(position + 1, 3);
    }
    return position == file.Size() ? kNoMark : position;
}

int64_t SoxEnd(FileBytes& file) {
    const int64_t samples = file.Little(8, 8);
    return samples > INT64_MAX / 8 ? 0 : 4 + file.Little(4, 4) + 4 * samples;
}

// Blocks of one size up to one that says it is the last, and how long it is.
int64_t AdxEnd(FileBytes& file) {
    constexpr int64_t kLast = 0x8001;
    const int64_t block = file.At(5), sound = file.Big(2, 2) + 4;
    if (block == 0 || !file.Says(sound - 6, "(c)CRI")) return 0;
    for (int64_t position = sound; position < file.Size(); position += block)
        if (file.Big(position, 2) == kLast) return position + 4 + file.Big(position + 2, 2);
    return kNoMark;
}

} // namespace aveffect
