#pragma once
/// The pixel formats that frames can have: their ids, and the one table of how they lie in memory.
///
/// The numbers follow libavutil 56's enumeration and are fixed here; an installed libavutil may number its
/// formats otherwise, so formats are matched by name, never by casting the number.

#include <array>
#include <cstddef>
#include <cstdint>

namespace AVBased {

enum PixelFormat : unsigned {
    YUV420P = 0,
    YUYV422 = 1,
    RGB24 = 2,
    BGR24 = 3,
    YUV422P = 4,
    YUV444P = 5,
    YUV410P = 6,
    YUV411P = 7,
    GRAY8 = 8,
    MONOWHITE = 9,
    MONOBLACK = 10,
    PAL8 = 11,
    YUVJ420P = 12, ///< full range, as are the other J formats
    YUVJ422P = 13,
    YUVJ444P = 14,
    UYVY422 = 15,
    UYYVYY411 = 16,
    NV12 = 23,
    ARGB = 25,
    RGBA = 26,
    ABGR = 27,
    BGRA = 28, ///< bytes B, G, R, A in memory
    YUV440P = 31,
    YUVA420P = 33,
    RGB48BE = 34,
    RGB48LE = 35,
    RGB565BE = 36,
    RGB565LE = 37,
    RGB555BE = 38,
    RGB555LE = 39,
    BGR565BE = 40,
    BGR565LE = 41,
    BGR555BE = 42,
    BGR555LE = 43,
    YUV420P10LE = 64,
    YUV422P10LE = 66,
    YUVA444P = 81,
    XYZ12LE = 101,
};

/// One plane. A row has width * bytes / pixels bytes of picture; there are height >> rowShift rows. Both
/// round down.
struct PlaneLayout {
    uint8_t pixels = 1;
    uint8_t bytes = 1;
    uint8_t rowShift = 0;
    uint8_t cropPixels = 1; ///< columns that hide so many bytes when they are cropped
    uint8_t rowDivisor = 1; ///< luma rows a row, as frames tell it
};

/// Which values the samples take: all of 0 to 255, or 16 to 235 (chroma 16 to 240).
enum class SampleRange : uint8_t { Limited, Full };

struct FormatLayout {
    const char* name; ///< libavutil's
    unsigned id;
    bool packed;
    uint8_t components; ///< colours of a packed format, planes of another
    SampleRange range;
    uint8_t planeCount; ///< that are described
    /// Chroma sample (x >> horizontalShift, y >> verticalShift) belongs to luma sample (x, y); 0 for packed
    /// formats.
    uint8_t horizontalShift;
    uint8_t verticalShift;
    std::array<PlaneLayout, 4> planes;

    constexpr bool HasAlphaPlane() const { return planeCount == 4; }
};

/// How rows of the table are made.
namespace layouts {

constexpr FormatLayout Packed(unsigned id, const char* name, uint8_t components, uint8_t pixels,
                              uint8_t bytes, SampleRange range = SampleRange::Full) {
    return {name, id, true, components, range, 1, 0, 0, {PlaneLayout{pixels, bytes, 0, pixels, 1}}};
}

constexpr FormatLayout Planar(unsigned id, const char* name, uint8_t horizontalShift, uint8_t verticalShift,
                              SampleRange range = SampleRange::Limited, bool alpha = false) {
    const auto pixels = static_cast<uint8_t>(1 << horizontalShift);
    const PlaneLayout chroma = {pixels, 1, verticalShift, pixels, static_cast<uint8_t>(1 << verticalShift)};
    const auto planes = static_cast<uint8_t>(alpha ? 4 : 3);
    return {name,
            id,
            false,
            planes,
            range,
            planes,
            horizontalShift,
            verticalShift,
            {PlaneLayout{}, chroma, chroma, PlaneLayout{}}};
}

} // namespace layouts

inline constexpr FormatLayout kPixelFormats[] = {
    layouts::Planar(YUV420P, "yuv420p", 1, 1),
    layouts::Packed(YUYV422, "yuyv422", 3, 2, 4, SampleRange::Limited),
    layouts::Packed(RGB24, "rgb24", 3, 1, 3),
    layouts::Packed(BGR24, "bgr24", 3, 1, 3),
    layouts::Planar(YUV422P, "yuv422p", 1, 0),
    layouts::Planar(YUV444P, "yuv444p", 0, 0),
    layouts::Planar(YUV410P, "yuv410p", 2, 2),
    layouts::Planar(YUV411P, "yuv411p", 2, 0),
    layouts::Packed(GRAY8, "gray", 1, 1, 1),
    layouts::Packed(MONOWHITE, "monow", 1, 8, 1),
    layouts::Packed(MONOBLACK, "monob", 1, 8, 1),
    // Two components, pixels and palette, of which one is described; not packed all the same.
    {"pal8", PAL8, false, 2, SampleRange::Full, 1, 0, 0, {}},
    layouts::Planar(YUVJ420P, "yuvj420p", 1, 1, SampleRange::Full),
    layouts::Planar(YUVJ422P, "yuvj422p", 1, 0, SampleRange::Full),
    layouts::Planar(YUVJ444P, "yuvj444p", 0, 0, SampleRange::Full),
    layouts::Packed(UYVY422, "uyvy422", 3, 2, 4, SampleRange::Limited),
    layouts::Packed(UYYVYY411, "uyyvyy411", 3, 4, 6, SampleRange::Limited),
    // The chroma plane is as wide as the luma, yet its crop counts two columns a byte; it has half the rows,
    // yet a divisor of 1, on which hosts rely.
    {"nv12", NV12, false, 2, SampleRange::Limited, 2, 1, 1, {PlaneLayout{}, PlaneLayout{1, 1, 1, 2, 1}}},
    layouts::Packed(ARGB, "argb", 4, 1, 4),
    layouts::Packed(RGBA, "rgba", 4, 1, 4),
    layouts::Packed(ABGR, "abgr", 4, 1, 4),
    layouts::Packed(BGRA, "bgra", 4, 1, 4),
    layouts::Planar(YUV440P, "yuv440p", 0, 1),
    layouts::Planar(YUVA420P, "yuva420p", 1, 1, SampleRange::Limited, true),
    layouts::Packed(RGB48BE, "rgb48be", 3, 1, 6),
    layouts::Packed(RGB48LE, "rgb48le", 3, 1, 6),
    layouts::Packed(RGB565BE, "rgb565be", 3, 1, 2),
    layouts::Packed(RGB565LE, "rgb565le", 3, 1, 2),
    layouts::Packed(RGB555BE, "rgb555be", 3, 1, 2),
    layouts::Packed(RGB555LE, "rgb555le", 3, 1, 2),
    layouts::Packed(BGR565BE, "bgr565be", 3, 1, 2),
    layouts::Packed(BGR565LE, "bgr565le", 3, 1, 2),
    layouts::Packed(BGR555BE, "bgr555be", 3, 1, 2),
    layouts::Packed(BGR555LE, "bgr555le", 3, 1, 2),
    // One byte a sample, although a sample takes two: hosts and plug-in agree on these figures.
    layouts::Planar(YUV420P10LE, "yuv420p10le", 1, 1),
    layouts::Planar(YUV422P10LE, "yuv422p10le", 1, 0),
    layouts::Planar(YUVA444P, "yuva444p", 0, 0, SampleRange::Limited, true),
    layouts::Packed(XYZ12LE, "xyz12le", 3, 1, 6),
};

/// The layout of a format, null for ids outside the table.
constexpr const FormatLayout* FindPixelFormat(unsigned id) {
    for (const FormatLayout& layout : kPixelFormats)
        if (layout.id == id) return &layout;
    return nullptr;
}

/// Whether the samples of a format take all values: the J formats, grey and RGB.
constexpr bool IsFullRange(unsigned id) {
    const FormatLayout* layout = FindPixelFormat(id);
    return layout && layout->range == SampleRange::Full;
}

/// The formats that effects work on. They leave frames of other formats as they are; some serve fewer.
constexpr std::array<unsigned, 9> kEffectFormats = {BGRA,     YUV420P,  YUV422P,  YUV410P, YUV411P,
                                                    YUVJ420P, YUVJ422P, YUVA420P, YUVA444P};

/// Whether effects work on a format.
constexpr bool IsEffectFormat(unsigned id) {
    for (const unsigned served : kEffectFormats)
        if (served == id) return true;
    return false;
}

} // namespace AVBased
