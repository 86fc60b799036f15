#pragma once
/// Ids of the pixel formats that frames can have.
///
/// The numbers follow libavutil 56's enumeration and are fixed here; an installed libavutil may number its
/// formats otherwise, so formats are matched by name, never by casting the number.

#include <array>

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

/// The formats that effects work on. They leave frames of other formats as they are; some serve fewer.
constexpr std::array<unsigned, 9> kEffectFormats = {BGRA,     YUV420P,  YUV422P,  YUV410P, YUV411P,
                                                    YUVJ420P, YUVJ422P, YUVA420P, YUVA444P};

} // namespace AVBased
