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

// The index at the end, whose last bytes tell its length.
int64_t NutEnd(FileBytes& file) {
    const int64_t index = file.Size() - file.Big(file.Size() - 12, 8);
    return file.Says(index, "NX\xdd\x67\x2f\x23\xe6\x4e") ? file.Size() : kNoMark;
}

// Broadcasters' exchange files end with a packet that says so.
int64_t GxfEnd(FileBytes& file) {
    constexpr uint8_t kEndOfStream = 0xfb;
    constexpr int64_t kHead = 16;
    uint8_t kind = 0;
    const int64_t end = PartsEnd(file, 0, [&](int64_t position) -> int64_t {
        if (!file.Says(position, "\0\0\0\0\1"sv)) return 0;
        kind = file.At(position + 5);
        return std::max<int64_t>(kHead, file.Big(position + 6, 4));
    });
    return end == file.Size() && kind != kEndOfStream ? kNoMark : end;
}

// Camcorders' pictures have one of few sizes, twice or four times as much for better ones.
int64_t DvEnd(FileBytes& file) {
    constexpr int64_t kKind = 451; // of the picture, in the first block's sixth packet
    const int64_t usual = file.At(3) & 0x80 ? 144000 : 120000;
    const int kind = file.At(kKind) & 0x1f;
    const int64_t length = usual * (kind == 0x14 || kind == 0x15 ? 4 : kind == 0x04 || kind == 0x18 ? 2 : 1);
    return (file.Size() + length - 1) / length * length;
}

int64_t SwfEnd(FileBytes& file) {
    constexpr int64_t kStreamed = 100 << 20; // what libavformat says when it can't go back
    const int64_t length = file.Little(4, 4);
    return length == kStreamed ? 0 : length;
}

int64_t RoqEnd(FileBytes& file) {
    return PartsEnd(file, 8, [&file](int64_t position) -> int64_t {
        return file.At(position + 1) == 0x10 ? 8 + file.Little(position + 2, 4) : 0;
    });
}

int64_t DiracEnd(FileBytes& file) {
    constexpr int64_t kHead = 13;
    constexpr uint8_t kEndOfSequence = 0x10;
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        if (!file.Says(position, "BBCD")) return 0;
        const bool isLast = file.At(position + 4) == kEndOfSequence || position + kHead > file.Size();
        return isLast ? kHead : file.Big(position + 5, 4);
    });
}

int64_t Av1End(FileBytes& file) {
    return PartsEnd(file, 0, [&file](int64_t position) -> int64_t {
        const uint8_t head = file.At(position);
        if ((head & 0x81) || !(head & 2)) return 0; // no such unit, or one that does not say its length
        int64_t length = 0, at = position + (head & 4 ? 2 : 1);
        for (int shift = 0; shift < 56; shift += 7) {
            length |= int64_t{file.At(at) & 0x7f} << shift;
            if (!(file.At(at++) & 0x80)) break;
        }
        return at - position + length;
    });
}

// The packs near the end, from one from which they go on to the end. The mark behind the last one is seldom
// written.
int64_t ProgramEnd(FileBytes& file) {
    constexpr int64_t kNear = 1 << 18;
    constexpr auto kPack = "\0\0\1\xba"sv;
    const auto lengthAt = [&file](int64_t position) -> int64_t {
        if (file.Big(position, 3) != 1) return 0;
        const uint8_t kind = file.At(position + 3);
        if (kind == 0xb9) return 4;
        if (kind == 0xba) return file.At(position + 4) >> 6 == 1 ? 14 + (file.At(position + 13) & 7) : 12;
        return kind > 0xba ? 6 + file.Big(position + 4, 2) : 0;
    };
    int64_t position = std::max<int64_t>(0, file.Size() - kNear);
    for (; position < file.Size(); ++position) {
        if (!file.Says(position, kPack)) continue;
        if (const int64_t end = PartsEnd(file, position, lengthAt); end >= file.Size()) return end;
    }
    return 0;
}

// Of sound with a header of 8 bytes.
int64_t RsoEnd(FileBytes& file) {
    constexpr int64_t kMost = 0xffff; // what writers say of more, too
    const int64_t length = file.Big(2, 2);
    return length == kMost ? 0 : 8 + length;
}

// In sectors, whose size the header tells too.
int64_t WtvEnd(FileBytes& file) { return file.Little(0x5c, 4) * file.Little(0x28, 4); }

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
    {0, "\x0a\5\1"sv, PcxEnd},
    {0, "\1\xda"sv, SgiEnd},
    {0, "#define "sv, XbmEnd},
    {0, "\0\0\0\0\1\xbc"sv, GxfEnd},
    {0, "\0\0\1\xba"sv, ProgramEnd},
    {0, "\xb7\xd8\0\x20\x37\x49\xda\x11"sv, WtvEnd},
    {0, "\x1f\7\0"sv, DvEnd},
    {0, "FWS"sv, SwfEnd},
    {0, "\x84\x10\xff\xff\xff\xff"sv, RoqEnd},
    {0, "BBCD"sv, DiracEnd},
    {0, "\x12\0"sv, Av1End},
    {0, "\x0b\x77"sv, Ac3End},
    {0, "\x7f\xfe\x80\1"sv, DtsEnd},
    {4, "\xf8\x72\x6f"sv, MlpEnd},
    {0, "TTA1"sv, TtaEnd},
    {0, "Creative Voice File\x1a"sv, VocEnd},
    {0, ".SoX"sv, SoxEnd},
    {0, "\x80\0"sv, AdxEnd},
    {0, "ID3"sv, MpegSoundEnd},
    {0, "\xff"sv, MpegSoundEnd},
    {0, ""sv, TransportEnd},
};

// Those that begin with nothing of their own are known by their names.
int64_t EndOf(const std::string& path, FileBytes& file) {
    if (path.ends_with(".tga") || path.ends_with(".TGA")) return TgaEnd(file);
    if (path.ends_with(".rso") || path.ends_with(".RSO")) return RsoEnd(file);
    const auto kind =
        std::ranges::find_if(kKinds, [&file](const Kind& each) { return file.Says(each.at, each.mark); });
    return kind->end(file);
}

} // namespace

std::optional<std::string> MissingEnd(const std::string& path) {
    FileBytes file(path);
    if (file.Size() == 0) return std::nullopt;
    const int64_t end = EndOf(path, file);
    if (end <= file.Size()) return std::nullopt;
    if (end == kNoMark) return "it ends before its end mark";
    return "it is cut off at " + std::to_string(file.Size()) + " of " + std::to_string(end) + " bytes";
}

} // namespace aveffect
