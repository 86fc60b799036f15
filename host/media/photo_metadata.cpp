#include "host/media/photo_metadata.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <zlib.h>

#include "host/media/tiff.h"
#include "host/support/error.h"
#include "host/support/whole_file.h"

namespace aveffect {
namespace {

using namespace std::string_view_literals;

constexpr auto kPng = "\x89PNG\r\n\x1a\n"sv;
constexpr auto kJpeg = "\xff\xd8\xff"sv;
constexpr auto kExif = "Exif\0\0"sv; // before EXIF in JPEG, and by some writers' habit in WebP
constexpr auto kProfile = "ICC_PROFILE\0"sv;
constexpr double kInch = 0.0254;

std::string Bytes(uint32_t number, size_t length, bool big) {
    std::string bytes;
    for (size_t index = 0; index < length; ++index)
        bytes += static_cast<char>(number >> 8 * (big ? length - 1 - index : index));
    return bytes;
}

std::string_view Part(std::string_view bytes, size_t at, size_t length) {
    return at < bytes.size() ? bytes.substr(at, length) : std::string_view();
}

bool IsWebp(std::string_view bytes) { return bytes.starts_with("RIFF") && Part(bytes, 8, 4) == "WEBP"; }

/// See is given each chunk's name, what it holds, and all of it.
template <typename See>
void ForPngChunks(std::string_view png, See see) {
    constexpr size_t kAround = 12;
    for (size_t at = kPng.size(); at + kAround <= png.size();) {
        const size_t length = NumberAt(png, at, 4, true);
        if (length > png.size() - at - kAround) return;
        see(png.substr(at + 4, 4), png.substr(at + 8, length), png.substr(at, kAround + length));
        at += kAround + length;
    }
}

template <typename See>
void ForWebpChunks(std::string_view webp, See see) {
    constexpr size_t kHead = 8;
    for (size_t at = 12; at + kHead <= webp.size();) {
        const size_t length = NumberAt(webp, at + 4, 4, false);
        see(webp.substr(at, 4), Part(webp, at + kHead, length), Part(webp, at, kHead + (length + 1) / 2 * 2));
        at += kHead + (length + 1) / 2 * 2;
    }
}

/// The segments before the picture; see is given each one's mark, what it holds, and where it ends.
template <typename See>
void ForJpegSegments(std::string_view jpeg, See see) {
    constexpr uint32_t kScan = 0xda;
    for (size_t at = 2; at + 4 <= jpeg.size() && jpeg[at] == '\xff';) {
        const uint32_t mark = static_cast<uint8_t>(jpeg[at + 1]);
        const size_t length = NumberAt(jpeg, at + 2, 2, true);
        if (mark == kScan || length < 2) return;
        see(mark, Part(jpeg, at + 4, length - 2), at + 2 + length);
        at += 2 + length;
    }
}

std::string Inflated(std::string_view packed) {
    constexpr size_t kMost = 64 << 20;
    std::string bytes;
    for (size_t room = 1 << 16; room <= kMost; room *= 4) {
        bytes.resize(room);
        uLongf length = room;
        const int code = uncompress(reinterpret_cast<Bytef*>(bytes.data()), &length,
                                    reinterpret_cast<const Bytef*>(packed.data()), packed.size());
        if (code == Z_OK) return bytes.substr(0, length);
        if (code != Z_BUF_ERROR) break;
    }
    return {};
}

std::string Deflated(std::string_view bytes) {
    uLongf length = compressBound(bytes.size());
    std::string packed(length, '\0');
    const int code = compress(reinterpret_cast<Bytef*>(packed.data()), &length,
                              reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    return code == Z_OK ? packed.substr(0, length) : std::string();
}

std::string PngChunk(std::string_view name, std::string_view data) {
    const std::string body = std::string(name).append(data);
    const uLong sum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return Bytes(static_cast<uint32_t>(data.size()), 4, true) + body +
           Bytes(static_cast<uint32_t>(sum), 4, true);
}

std::string WebpChunk(std::string_view name, std::string_view data) {
    std::string chunk = std::string(name) + Bytes(static_cast<uint32_t>(data.size()), 4, false);
    return chunk.append(data).append(data.size() % 2, '\0');
}

std::string JpegSegment(char mark, std::string_view data) {
    return std::string("\xff") + mark + Bytes(static_cast<uint32_t>(data.size() + 2), 2, true) +
           std::string(data);
}

// Texts that hold other kinds of metadata may say that the picture lies on its side.
bool IsPlainText(std::string_view chunk, std::string_view data) {
    return (chunk == "tEXt" || chunk == "zTXt" || chunk == "iTXt") && !data.starts_with("Raw profile type") &&
           !data.starts_with("XML:com.adobe.xmp");
}

PhotoMetadata ReadPng(std::string_view png) {
    PhotoMetadata found;
    ForPngChunks(png, [&](std::string_view name, std::string_view data, std::string_view whole) {
        const size_t packed = data.find('\0');
        if (name == "iCCP" && packed != std::string_view::npos)
            found.profile = Inflated(Part(data, packed + 2, data.size()));
        if (IsPlainText(name, data)) found.texts += whole;
        if (name == "pHYs" && data.size() == 9 && data[8] == 1) {
            found.densityX = NumberAt(data, 0, 4, true);
            found.densityY = NumberAt(data, 4, 4, true);
        }
    });
    return found;
}

PhotoMetadata ReadJpeg(std::string_view jpeg) {
    PhotoMetadata found;
    ForJpegSegments(jpeg, [&](uint32_t mark, std::string_view data, size_t) {
        if (mark == 0xe2 && data.starts_with(kProfile))
            found.profile += Part(data, kProfile.size() + 2, data.size());
        if (mark != 0xe0 || !data.starts_with("JFIF\0"sv)) return;
        const uint32_t unit = NumberAt(data, 7, 1, true);
        if (unit != 1 && unit != 2) return;
        const auto density = [&](size_t at) {
            return static_cast<uint32_t>(
                std::lround(NumberAt(data, at, 2, true) / (unit == 1 ? kInch : 0.01)));
        };
        found.densityX = density(8);
        found.densityY = density(10);
    });
    return found;
}

PhotoMetadata ReadWebp(std::string_view webp) {
    PhotoMetadata found;
    ForWebpChunks(webp, [&](std::string_view name, std::string_view data, std::string_view) {
        if (name == "ICCP") found.profile = data;
    });
    return found;
}

// The small picture in the second directory would show what the effects were to change.
void MakeUpright(std::string& exif) {
    constexpr uint32_t kPicture = 0x201, kPictureLength = 0x202;
    const Tiff tiff(exif);
    if (!tiff.Valid()) return exif.clear();
    const size_t directory = tiff.First(), link = tiff.LinkOf(directory);
    if (link + 4 > exif.size()) return;
    const size_t second = tiff.Number(link, 4);
    const size_t picture = second ? tiff.ValueOf(second, kPicture) : 0;
    const size_t length = second ? tiff.ValueOf(second, kPictureLength) : 0;
    const size_t begin = picture && length ? std::min<size_t>(tiff.Number(picture, 4), exif.size()) : 0;
    const size_t end = picture && length ? std::min(begin + tiff.Number(length, 4), exif.size()) : 0;
    std::fill(exif.begin() + static_cast<std::ptrdiff_t>(begin),
              exif.begin() + static_cast<std::ptrdiff_t>(end), '\0');
    std::fill_n(exif.begin() + static_cast<std::ptrdiff_t>(link), 4, '\0');
    if (const size_t value = tiff.ValueOf(directory, Tiff::kOrientation))
        exif.replace(value, 2, Bytes(1, 2, tiff.Big()));
}

std::string_view ProfileFor(const PhotoMetadata& metadata, bool grey) {
    const bool suits = Part(metadata.profile, 16, 4) == (grey ? "GRAY" : "RGB ");
    return suits ? std::string_view(metadata.profile) : std::string_view();
}

// The encoder's own word on the colours gives way to the profile, its density to the one that is known.
std::string AddToPng(std::string_view png, const PhotoMetadata& metadata) {
    std::string result(kPng);
    std::string_view profile;
    ForPngChunks(png, [&](std::string_view name, std::string_view data, std::string_view whole) {
        const bool replaced =
            (metadata.densityX && name == "pHYs") ||
            (!profile.empty() && (name == "iCCP" || name == "sRGB" || name == "gAMA" || name == "cHRM"));
        if (!replaced) result += whole;
        if (name != "IHDR") return;
        constexpr uint32_t kColour = 2; // bit of the kind of picture
        profile = ProfileFor(metadata, !(NumberAt(data, 9, 1, true) & kColour));
        if (!profile.empty())
            result += PngChunk("iCCP", std::string("ICC profile\0\0"sv) + Deflated(profile));
        if (metadata.densityX)
            result += PngChunk("pHYs",
                               Bytes(metadata.densityX, 4, true) + Bytes(metadata.densityY, 4, true) + "\1");
        if (!metadata.exif.empty()) result += PngChunk("eXIf", metadata.exif);
        result += metadata.texts;
    });
    return result;
}

std::string AddToJpeg(std::string jpeg, const PhotoMetadata& metadata) {
    constexpr size_t kMost = 65533;
    size_t behindHead = 2;
    bool grey = false, hasProfile = false;
    ForJpegSegments(jpeg, [&](uint32_t mark, std::string_view data, size_t end) {
        if (mark == 0xe0) behindHead = end;
        if (mark == 0xe2 && data.starts_with(kProfile)) hasProfile = true;
        if (mark >= 0xc0 && mark <= 0xcf && mark != 0xc4 && mark != 0xc8 && mark != 0xcc)
            grey = NumberAt(data, 5, 1, true) == 1;
    });
    const auto dots = [](uint32_t density) {
        return Bytes(static_cast<uint32_t>(std::lround(density * kInch)), 2, true);
    };
    constexpr size_t kDensity = 13, kDensityEnd = 18; // unit and both numbers
    if (metadata.densityX && behindHead >= kDensityEnd)
        jpeg.replace(kDensity, kDensityEnd - kDensity,
                     "\1" + dots(metadata.densityX) + dots(metadata.densityY));
    std::string added;
    if (!metadata.exif.empty() && metadata.exif.size() + kExif.size() <= kMost)
        added += JpegSegment('\xe1', std::string(kExif) + metadata.exif);
    const std::string_view profile = hasProfile ? std::string_view() : ProfileFor(metadata, grey);
    const size_t room = kMost - kProfile.size() - 2, parts = (profile.size() + room - 1) / room;
    for (size_t part = 0; part < parts && parts < 256; ++part)
        added += JpegSegment('\xe2', std::string(kProfile) + static_cast<char>(part + 1) +
                                         static_cast<char>(parts) +
                                         std::string(profile.substr(part * room, room)));
    return jpeg.insert(behindHead, added);
}

// The head that files with metadata have, made from the picture's own.
std::string WebpHead(std::string_view name, std::string_view data) {
    uint32_t width = 0, height = 0, flags = 0;
    if (name == "VP8L") {
        const uint32_t bits = NumberAt(data, 1, 4, false);
        width = bits & 0x3fff;
        height = bits >> 14 & 0x3fff;
        flags = bits >> 28 & 1 ? 0x10 : 0;
    } else {
        width = (NumberAt(data, 6, 2, false) & 0x3fff) - 1;
        height = (NumberAt(data, 8, 2, false) & 0x3fff) - 1;
    }
    return Bytes(flags, 4, false) + Bytes(width, 3, false) + Bytes(height, 3, false);
}

std::string AddToWebp(std::string_view webp, const PhotoMetadata& metadata) {
    const std::string_view profile = ProfileFor(metadata, false);
    if (metadata.exif.empty() && profile.empty()) return std::string(webp);
    std::string head, chunks;
    ForWebpChunks(webp, [&](std::string_view name, std::string_view data, std::string_view whole) {
        if (name == "VP8X") head = data;
        if ((name == "VP8 " || name == "VP8L") && head.empty()) head = WebpHead(name, data);
        const bool replaced = name == "VP8X" || name == "EXIF" || (name == "ICCP" && !profile.empty());
        if (!replaced) chunks += whole;
    });
    if (head.empty()) return std::string(webp);
    constexpr int kHasExif = 0x08, kHasProfile = 0x20;
    head[0] = static_cast<char>(head[0] | (metadata.exif.empty() ? 0 : kHasExif) |
                                (profile.empty() ? 0 : kHasProfile));
    std::string body = "WEBP" + WebpChunk("VP8X", head);
    if (!profile.empty()) body += WebpChunk("ICCP", profile);
    body += chunks;
    if (!metadata.exif.empty()) body += WebpChunk("EXIF", metadata.exif);
    return "RIFF" + Bytes(static_cast<uint32_t>(body.size()), 4, false) + body;
}

} // namespace

std::string_view FindExif(std::string_view picture) {
    std::string_view exif;
    const auto inChunk = [&exif](std::string_view wanted) {
        return [&exif, wanted](std::string_view name, std::string_view data, std::string_view) {
            if (name == wanted && exif.empty()) exif = data;
        };
    };
    if (picture.starts_with(kPng)) ForPngChunks(picture, inChunk("eXIf"));
    if (IsWebp(picture)) ForWebpChunks(picture, inChunk("EXIF"));
    if (picture.starts_with(kJpeg))
        ForJpegSegments(picture, [&exif](uint32_t mark, std::string_view data, size_t) {
            if (mark == 0xe1 && data.starts_with(kExif) && exif.empty()) exif = data;
        });
    return exif.starts_with(kExif) ? exif.substr(kExif.size()) : exif;
}

PhotoMetadata ReadPhotoMetadata(const std::string& path, bool strip) {
    constexpr size_t kMost = 1 << 30;
    std::error_code failed;
    if (!std::filesystem::is_regular_file(path, failed) || std::filesystem::file_size(path, failed) > kMost)
        return {};
    constexpr size_t kSignature = 12;
    const std::string begin = WholeFile(path, kSignature).value_or("");
    if (!begin.starts_with(kPng) && !begin.starts_with(kJpeg) && !IsWebp(begin)) return {};
    const std::string picture = WholeFile(path, kMost).value_or("");
    PhotoMetadata found = IsWebp(picture)             ? ReadWebp(picture)
                          : picture.starts_with(kPng) ? ReadPng(picture)
                                                      : ReadJpeg(picture);
    if (strip) {
        found.texts.clear();
        return found;
    }
    found.exif = FindExif(picture);
    MakeUpright(found.exif);
    return found;
}

std::string AddPhotoMetadata(std::string picture, const PhotoMetadata& metadata) {
    if (picture.starts_with(kPng)) return AddToPng(picture, metadata);
    if (picture.starts_with(kJpeg)) return AddToJpeg(std::move(picture), metadata);
    return IsWebp(picture) ? AddToWebp(picture, metadata) : picture;
}

} // namespace aveffect
