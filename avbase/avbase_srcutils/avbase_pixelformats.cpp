// Layouts of pictures, from the table of pixel formats.
#include <cassert>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"

namespace AVBased {

ImageParameters GetImageParameters(unsigned format, unsigned width, unsigned height) {
    const FormatLayout* layout = FindPixelFormat(format);
    if (!layout) assert(0);
    ImageParameters result;
    result.packed = layout->packed;
    result.components = layout->components;
    result.planeCount = layout->planeCount;
    for (unsigned i = 0; i < result.planeCount; ++i) {
        const PlaneLayout& plane = layout->planes[i];
        result.planes[i] = {static_cast<uint32_t>(uint64_t{width} * plane.bytes / plane.pixels),
                            height >> plane.rowShift,
                            static_cast<uint32_t>(plane.cropPixels) << 16 | plane.bytes, plane.rowDivisor};
    }
    return result;
}

} // namespace AVBased
