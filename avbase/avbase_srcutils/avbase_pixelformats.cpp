// The table of pixel formats: how many planes each has and how large they are.
#include <cassert>
#include <initializer_list>
#include <span>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"

namespace AVBased {

namespace {

// One plane of a format: bytes a row are (width * bytesFactor) >> widthShift, rows are height >> rowShift.
struct PlaneRule {
    uint8_t bytesFactor;
    uint8_t widthShift;
    uint8_t rowShift;
    uint16_t unitPixels; // unitBytes hold this many adjacent pixels
    uint16_t unitBytes;
    uint8_t verticalDivisor;
};

struct FormatRule {
    std::initializer_list<unsigned> ids;
    bool packed;
    unsigned components;
    std::span<const PlaneRule> planes;
};

constexpr PlaneRule kFull = {1, 0, 0, 1, 1, 1};

constexpr PlaneRule kPlanar420[] = {kFull, {1, 1, 1, 2, 1, 2}, {1, 1, 1, 2, 1, 2}, kFull};
constexpr PlaneRule kPlanar422[] = {kFull, {1, 1, 0, 2, 1, 1}, {1, 1, 0, 2, 1, 1}};
constexpr PlaneRule kPlanar444[] = {kFull, kFull, kFull, kFull};
constexpr PlaneRule kPlanar440[] = {kFull, {1, 0, 1, 1, 1, 2}, {1, 0, 1, 1, 1, 2}};
constexpr PlaneRule kPlanar410[] = {kFull, {1, 2, 2, 4, 1, 4}, {1, 2, 2, 4, 1, 4}};
constexpr PlaneRule kPlanar411[] = {kFull, {1, 2, 0, 4, 1, 1}, {1, 2, 0, 4, 1, 1}};
// The chroma plane has half the rows and yet a divisor of 1; readers of the code rely on it.
constexpr PlaneRule kNV12[] = {kFull, {1, 0, 1, 2, 1, 1}};
constexpr PlaneRule kPacked422[] = {{2, 0, 0, 2, 4, 1}};
constexpr PlaneRule kPacked411[] = {{6, 2, 0, 4, 6, 1}};
constexpr PlaneRule kMono[] = {{1, 3, 0, 8, 1, 1}};
constexpr PlaneRule kBytes1[] = {kFull};
constexpr PlaneRule kBytes2[] = {{2, 0, 0, 1, 2, 1}};
constexpr PlaneRule kBytes3[] = {{3, 0, 0, 1, 3, 1}};
constexpr PlaneRule kBytes4[] = {{4, 0, 0, 1, 4, 1}};
constexpr PlaneRule kBytes6[] = {{6, 0, 0, 1, 6, 1}};

constexpr std::span<const PlaneRule> First3(std::span<const PlaneRule> planes) { return planes.first(3); }

const FormatRule kFormats[] = {
    // The 10-bit formats count one byte a sample, like their 8-bit cousins.
    {{YUV420P, YUVJ420P, YUV420P10LE}, false, 3, First3(kPlanar420)},
    {{YUYV422, UYVY422}, true, 3, kPacked422},
    {{RGB24, BGR24}, true, 3, kBytes3},
    {{YUV422P, YUVJ422P, YUV422P10LE}, false, 3, kPlanar422},
    {{YUV444P, YUVJ444P}, false, 3, First3(kPlanar444)},
    {{YUV410P}, false, 3, kPlanar410},
    {{YUV411P}, false, 3, kPlanar411},
    {{GRAY8}, true, 1, kBytes1},
    {{MONOWHITE, MONOBLACK}, true, 1, kMono},
    // Two components, pixels and palette, of which one is described; not packed all the same.
    {{PAL8}, false, 2, kBytes1},
    {{UYYVYY411}, true, 3, kPacked411},
    {{NV12}, false, 2, kNV12},
    {{ARGB, RGBA, ABGR, BGRA}, true, 4, kBytes4},
    {{YUV440P}, false, 3, kPlanar440},
    {{YUVA420P}, false, 4, kPlanar420},
    {{RGB48BE, RGB48LE, XYZ12LE}, true, 3, kBytes6},
    {{RGB565BE, RGB565LE, RGB555BE, RGB555LE, BGR565BE, BGR565LE, BGR555BE, BGR555LE}, true, 3, kBytes2},
    {{YUVA444P}, false, 4, kPlanar444},
};

const FormatRule* FindRule(unsigned format) {
    for (const FormatRule& rule : kFormats)
        for (const unsigned id : rule.ids)
            if (id == format) return &rule;
    return nullptr;
}

} // namespace

ImageParameters GetImageParameters(unsigned format, unsigned width, unsigned height) {
    const FormatRule* rule = FindRule(format);
    if (!rule) assert(0);
    ImageParameters result;
    result.packed = rule->packed;
    result.components = rule->components;
    result.planeCount = static_cast<unsigned>(rule->planes.size());
    for (unsigned i = 0; i < result.planeCount; ++i) {
        const PlaneRule& plane = rule->planes[i];
        result.planes[i] = {(width * plane.bytesFactor) >> plane.widthShift, height >> plane.rowShift,
                            static_cast<uint32_t>(plane.unitPixels) << 16 | plane.unitBytes,
                            plane.verticalDivisor};
    }
    return result;
}

} // namespace AVBased
