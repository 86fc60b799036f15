#include "fuzz/media_tree.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace fuzzing {

namespace {

constexpr int kDeepest = 16;

uint64_t BigEndian(std::string_view bytes) {
    uint64_t value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<uint8_t>(byte);
    return value;
}

std::string BigEndianBytes(uint64_t value, size_t count) {
    std::string bytes(count, '\0');
    for (size_t i = 0; i < count; ++i) bytes[count - 1 - i] = static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string LittleEndianBytes(uint64_t value, size_t count) {
    std::string bytes = BigEndianBytes(value, count);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

struct Header {
    std::string id;
    size_t length; ///< of the header itself
    uint64_t size; ///< of what follows
};

std::optional<Header> Mp4Header(std::string_view bytes) {
    if (bytes.size() < 8) return {};
    const std::string id(bytes.substr(4, 4));
    const uint64_t size = BigEndian(bytes.substr(0, 4));
    if (size == 0) return Header{id, 8, bytes.size() - 8}; // to the file's end
    if (size != 1) return size < 8 ? std::nullopt : std::optional(Header{id, 8, size - 8});
    if (bytes.size() < 16) return {};
    const uint64_t large = BigEndian(bytes.substr(8, 8));
    return large < 16 ? std::nullopt : std::optional(Header{id, 16, large - 16});
}

// Identifier and size are as long as zeros stand before their first one (RFC 8794).
std::optional<Header> EbmlHeader(std::string_view bytes) {
    if (bytes.empty()) return {};
    const auto idLength = static_cast<size_t>(std::countl_zero(static_cast<uint8_t>(bytes[0]))) + 1;
    if (idLength > 4 || bytes.size() <= idLength) return {};
    const auto sizeLength = static_cast<size_t>(std::countl_zero(static_cast<uint8_t>(bytes[idLength]))) + 1;
    if (sizeLength > 8 || bytes.size() < idLength + sizeLength) return {};
    const uint64_t mask = (uint64_t{1} << (7 * sizeLength)) - 1;
    const uint64_t size = BigEndian(bytes.substr(idLength, sizeLength)) & mask;
    const size_t length = idLength + sizeLength;
    return Header{std::string(bytes.substr(0, idLength)), length,
                  size == mask ? bytes.size() - length : size};
}

std::optional<Header> RiffHeader(std::string_view bytes) {
    if (bytes.size() < 8) return {};
    std::string size(bytes.substr(4, 4));
    std::reverse(size.begin(), size.end());
    return Header{std::string(bytes.substr(0, 4)), 8, BigEndian(size)};
}

std::optional<Header> ReadHeader(Dialect dialect, std::string_view bytes) {
    switch (dialect) {
    case Dialect::Mp4:
        return Mp4Header(bytes);
    case Dialect::Ebml:
        return EbmlHeader(bytes);
    case Dialect::Riff:
        return RiffHeader(bytes);
    }
    return {};
}

std::string WriteHeader(Dialect dialect, const std::string& id, uint64_t size) {
    switch (dialect) {
    case Dialect::Mp4:
        return BigEndianBytes(size + 8, 4) + id;
    case Dialect::Ebml:
        return id + '\1' + BigEndianBytes(size, 7);
    case Dialect::Riff:
        return id + LittleEndianBytes(size, 4);
    }
    return {};
}

/// Bytes before the first child, of elements that hold others.
std::optional<size_t> BytesBeforeChildren(Dialect dialect, std::string_view id) {
    using namespace std::string_view_literals;
    const auto isOne = [id](std::initializer_list<std::string_view> ids) {
        return std::find(ids.begin(), ids.end(), id) != ids.end();
    };
    switch (dialect) {
    case Dialect::Mp4:
        if (isOne({"moov", "trak", "mdia", "minf", "stbl", "dinf", "edts", "udta", "mvex", "moof", "traf",
                   "mfra", "ilst", "iprp", "ipco"}))
            return 0;
        if (id == "meta" || id == "iref") return 4;
        if (id == "stsd" || id == "dref") return 8;
        if (isOne({"avc1", "mp4v", "hev1", "av01", "jpeg", "FFV1"})) return 78;
        if (isOne({"mp4a", "Opus", "fLaC", "sowt", "alac"})) return 28;
        return {};
    case Dialect::Ebml:
        // EBML, Segment, SeekHead, Seek, Info, Tracks, TrackEntry, Video, Colour, Audio, Cluster, BlockGroup,
        // Cues, CuePoint, CueTrackPositions, Chapters, EditionEntry, ChapterAtom, ChapterDisplay,
        // Attachments, AttachedFile, Tags, Tag, Targets, SimpleTag.
        if (isOne({"\x1A\x45\xDF\xA3"sv,
                   "\x18\x53\x80\x67"sv,
                   "\x11\x4D\x9B\x74"sv,
                   "\x4D\xBB"sv,
                   "\x15\x49\xA9\x66"sv,
                   "\x16\x54\xAE\x6B"sv,
                   "\xAE"sv,
                   "\xE0"sv,
                   "\x55\xB0"sv,
                   "\xE1"sv,
                   "\x1F\x43\xB6\x75"sv,
                   "\xA0"sv,
                   "\x1C\x53\xBB\x6B"sv,
                   "\xBB"sv,
                   "\xB7"sv,
                   "\x10\x43\xA7\x70"sv,
                   "\x45\xB9"sv,
                   "\xB6"sv,
                   "\x80"sv,
                   "\x19\x41\xA4\x69"sv,
                   "\x61\xA7"sv,
                   "\x12\x54\xC3\x67"sv,
                   "\x73\x73"sv,
                   "\x63\xC0"sv,
                   "\x67\xC8"sv}))
            return 0;
        return {};
    case Dialect::Riff:
        return isOne({"RIFF", "LIST"}) ? std::optional<size_t>(4) : std::nullopt;
    }
    return {};
}

std::vector<Element> ParseElements(Dialect dialect, std::string_view bytes, int depth) {
    std::vector<Element> elements;
    while (!bytes.empty()) {
        const std::optional<Header> header = ReadHeader(dialect, bytes);
        if (!header || header->size > bytes.size() - header->length) {
            elements.push_back({{}, std::string(bytes), {}, {}});
            break;
        }
        const std::string_view body = bytes.substr(header->length, header->size);
        const size_t own =
            std::min(BytesBeforeChildren(dialect, header->id).value_or(body.size()), body.size());
        Element element{header->id, std::string(body.substr(0, own)), {}, {}};
        if (depth < kDeepest) {
            element.children = ParseElements(dialect, body.substr(own), depth + 1);
        } else {
            element.bytes = body;
        }
        elements.push_back(std::move(element));
        const size_t padding = dialect == Dialect::Riff ? header->size % 2 : 0;
        bytes.remove_prefix(std::min<size_t>(header->length + header->size + padding, bytes.size()));
    }
    return elements;
}

std::string ElementBytes(Dialect dialect, const Element& element) {
    std::string body = element.bytes;
    for (const Element& child : element.children) body += ElementBytes(dialect, child);
    if (element.id.empty()) return body;
    std::string bytes = WriteHeader(dialect, element.id, element.claims.value_or(body.size()));
    bytes += body;
    if (dialect == Dialect::Riff && body.size() % 2) bytes += '\0';
    return bytes;
}

std::optional<Dialect> DialectOf(std::string_view file) {
    if (file.size() < 12) return {};
    if (file.substr(4, 4) == "ftyp") return Dialect::Mp4;
    if (file.substr(0, 4) == "\x1A\x45\xDF\xA3") return Dialect::Ebml;
    if (file.substr(0, 4) == "RIFF") return Dialect::Riff;
    return {};
}

} // namespace

std::optional<MediaTree> ParseMediaTree(const std::string& file) {
    const std::optional<Dialect> dialect = DialectOf(file);
    if (!dialect) return {};
    return MediaTree{*dialect, {{}, {}, ParseElements(*dialect, file, 0), {}}};
}

std::string MediaBytes(const MediaTree& tree) { return ElementBytes(tree.dialect, tree.root); }

} // namespace fuzzing
