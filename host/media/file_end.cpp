#include "host/media/file_end.h"

#include <algorithm>
#include <charconv>

namespace aveffect {
namespace {

using namespace std::string_view_literals;

// Programs that can't go back to it leave one of these in the place of a length.
bool IsUnknown(int64_t length) {
    return length == 0 || length == 0xffffffff || (length >= 0x7ffff000 && length <= 0x7fffffff);
}

// Long clips are several such chunks.
int64_t RiffEnd(FileBytes& file) {
    int64_t end = 0;
    for (int64_t next = 0; file.Says(next, "RIFF") || file.Says(next, "RIFX"); next = end + end % 2) {
        const int64_t length = file.At(next + 3) == 'X' ? file.Big(next + 4, 4) : file.Little(next + 4, 4);
        if (IsUnknown(length)) return 0;
        end = next + 8 + length;
    }
    return end;
}

int64_t LongRiffEnd(FileBytes& file) {
    const int64_t length = file.Says(12, "ds64") ? file.Little(20, 8) : 0;
    return IsUnknown(length) ? 0 : 8 + length;
}

int64_t IffEnd(FileBytes& file) {
    const int64_t length = file.Big(4, 4);
    return IsUnknown(length) ? 0 : 8 + length;
}

int64_t SoundOfSunEnd(FileBytes& file) {
    const int64_t length = file.Big(8, 4);
    return IsUnknown(length) ? 0 : file.Big(4, 4) + length;
}

// A file as a row of parts, each of which tells its length; lengthAt gives 0 where none begins any more.
template <typename LengthAt>
int64_t PartsEnd(FileBytes& file, int64_t position, LengthAt lengthAt) {
    while (position < file.Size()) {
        const int64_t length = lengthAt(position);
        if (length <= 0 || length > INT64_MAX - position) return length <= 0 ? 0 : kNoMark;
        position += length;
    }
    return position;
}

int64_t BoxesEnd(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        const int64_t length = file.Big(position, 4);
        const bool isLong = length == 1;
        if (length < 8 && !isLong) return 0; // 0: it goes on to the end, whatever that is
        return isLong ? std::max<int64_t>(16, file.Big(position + 8, 8)) : length;
    });
}

int64_t MatroskaEnd(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        const auto bytes = [&file](int64_t at) { // that the number there takes, going by its first bits
            int count = 1;
            for (int bit = 0x80; bit && !(file.At(at) & bit); bit >>= 1) ++count;
            return count;
        };
        const int id = bytes(position);
        const int size = bytes(position + id);
        if (id > 4 || size > 8) return 0;
        const int64_t ones = (int64_t{1} << 7 * size) - 1;
        const int64_t length = file.Big(position + id, size) & ones;
        return length == ones ? 0 : id + size + length; // streams leave it open
    });
}

int64_t FlashEnd(FileBytes& file) {
    return PartsEnd(file, file.Big(5, 4) + 4, [&file](int64_t position) -> int64_t {
        const uint8_t kind = file.At(position) & 0x1f;
        return kind == 8 || kind == 9 || kind == 18 ? 11 + file.Big(position + 1, 3) + 4 : 0;
    });
}

int64_t MxfEnd(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        if (!file.Says(position, "\x06\x0e\x2b\x34")) return 0;
        const uint8_t first = file.At(position + 16);
        const int more = first & 0x80 ? first & 0x7f : 0;
        if (more > 8) return 0;
        return 17 + more + (more ? file.Big(position + 17, more) : first);
    });
}

int64_t WavpackEnd(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        return file.Says(position, "wvpk") ? 8 + file.Little(position + 4, 4) : 0;
    });
}

// The header's object about the file tells its size, unless it was made while it was sent.
int64_t AsfEnd(FileBytes& file) {
    constexpr auto kFileObject = "\xa1\xdc\xab\x8c\x47\xa9\xcf\x11\x8e\xe4\x00\xc0\x0c\x20\x53\x65"sv;
    const int64_t header = file.Little(16, 8);
    for (int64_t position = 30; position < header && position < file.Size();) {
        if (file.Says(position, kFileObject))
            return file.Little(position + 88, 4) & 1 ? 0 : file.Little(position + 40, 8);
        position += std::max<int64_t>(24, std::min(file.Little(position + 16, 8), file.Size()));
    }
    return 0;
}

// The last page says that it is the last.
int64_t OggEnd(FileBytes& file) {
    constexpr int64_t kLongestPage = 27 + 255 + 255 * 255;
    constexpr uint8_t kLast = 4;
    for (int64_t page = file.Size() - 4; page >= std::max<int64_t>(0, file.Size() - 2 * kLongestPage);
         --page) {
        if (!file.Says(page, "OggS\0"sv)) continue;
        if (page + 27 > file.Size() || !(file.At(page + 5) & kLast)) return kNoMark;
        const int64_t segments = file.At(page + 26);
        int64_t end = page + 27 + segments;
        for (int64_t segment = 0; segment < segments; ++segment) end += file.At(page + 27 + segment);
        return end;
    }
    return kNoMark;
}

int64_t TransportEnd(FileBytes& file) {
    struct Layout {
        int first, length;
    };
    for (const auto& [first, length] : {Layout{0, 188}, Layout{4, 192}, Layout{0, 204}}) {
        bool synchronized = true;
        for (int packet = 0; packet < 3; ++packet)
            synchronized = synchronized && file.At(first + packet * length) == 0x47;
        if (synchronized) return (file.Size() + length - 1) / length * length;
    }
    return 0;
}

int64_t Y4mEnd(FileBytes& file) {
    int64_t width = 0, height = 0;
    std::string colours = "420";
    int64_t position = 0;
    std::string word;
    for (; position < file.Size() && (position == 0 || file.At(position - 1) != '\n'); ++position) {
        const char letter = static_cast<char>(file.At(position));
        if (letter != ' ' && letter != '\n') {
            word += letter;
            continue;
        }
        if (word[0] == 'W') std::from_chars(word.data() + 1, word.data() + word.size(), width);
        if (word[0] == 'H') std::from_chars(word.data() + 1, word.data() + word.size(), height);
        if (word[0] == 'C') colours = word.substr(1);
        word.clear();
    }
    const auto is = [&colours](std::string_view kind) { return colours.starts_with(kind); };
    const int64_t half = (width + 1) / 2;
    int64_t picture = width * height;
    if (is("420")) picture += 2 * half * ((height + 1) / 2);
    if (is("422")) picture += 2 * half * height;
    if (is("411")) picture += 2 * ((width + 3) / 4) * height;
    if (is("444")) picture *= is("444alpha") ? 4 : 3;
    const size_t depth = colours.find_first_of("p1", 3); // 420p10, but 420jpeg and 420paldv; mono16
    const bool deep = depth != std::string::npos && depth + 1 < colours.size() && colours[depth + 1] >= '0' &&
                      colours[depth + 1] <= '9';
    if (deep) picture *= 2;
    return PartsEnd(file, position, [&](int64_t at) -> int64_t {
        int64_t line = 0;
        while (at + line < file.Size() && file.At(at + line) != '\n') ++line;
        return picture + line + 1;
    });
}

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

// The index at the end, whose last bytes tell its length.
int64_t NutEnd(FileBytes& file) {
    const int64_t index = file.Size() - file.Big(file.Size() - 12, 8);
    return file.Says(index, "NX\xdd\x67\x2f\x23\xe6\x4e") ? file.Size() : kNoMark;
}

struct Kind {
    int at;
    std::string_view mark;
    int64_t (*end)(FileBytes& file);
};
constexpr Kind kKinds[] = {
    {0, "RIFF"sv, RiffEnd},
    {0, "RIFX"sv, RiffEnd},
    {0, "RF64"sv, LongRiffEnd},
    {0, "FORM"sv, IffEnd},
    {0, ".snd"sv, SoundOfSunEnd},
    {4, "ftyp"sv, BoxesEnd},
    {4, "moov"sv, BoxesEnd},
    {4, "mdat"sv, BoxesEnd},
    {4, "wide"sv, BoxesEnd},
    {4, "jP  "sv, BoxesEnd},
    {0, "\x1a\x45\xdf\xa3"sv, MatroskaEnd},
    {0, "FLV\1"sv, FlashEnd},
    {0, "\x06\x0e\x2b\x34"sv, MxfEnd},
    {0, "wvpk"sv, WavpackEnd},
    {0, "\x30\x26\xb2\x75\x8e\x66\xcf\x11"sv, AsfEnd},
    {0, "OggS"sv, OggEnd},
    {0, "nut/multimedia container\0"sv, NutEnd},
    {0, "YUV4MPEG2 "sv, Y4mEnd},
    {0, "GIF8"sv, GifEnd},
    {0, "\x89PNG\r\n\x1a\n"sv, PngEnd},
    {0, "\xff\xd8\xff"sv, JpegEnd},
    {0, "II*\0"sv, TiffEnd},
    {0, "MM\0*"sv, TiffEnd},
    {0, "qoif"sv, QoiEnd},
    {0, "\x59\xa6\x6a\x95"sv, SunEnd},
    {0, "\x76\x2f\x31\x01"sv, ExrEnd},
    {0, "ID3"sv, MpegSoundEnd},
    {0, "\xff"sv, MpegSoundEnd},
    {0, ""sv, TransportEnd},
};

} // namespace

std::optional<std::string> MissingEnd(const std::string& path) {
    FileBytes file(path);
    if (file.Size() == 0) return std::nullopt;
    const auto kind =
        std::ranges::find_if(kKinds, [&file](const Kind& each) { return file.Says(each.at, each.mark); });
    const int64_t end = kind->end(file);
    if (end <= file.Size()) return std::nullopt;
    if (end == kNoMark) return "it ends before its end mark";
    return "it is cut off at " + std::to_string(file.Size()) + " of " + std::to_string(end) + " bytes";
}

} // namespace aveffect
