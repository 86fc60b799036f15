#include "AVEffect/support/plane_map.h"

#include <algorithm>
#include <cstring>

namespace AVBased {

void PlaneMap::AddRow(const kernels::RemapKernels& kernels, size_t x, size_t y, SamplePlaces places,
                      size_t count, size_t width, size_t height, bool fills) {
    kernels::PlaceLimits limits = {
        static_cast<uint32_t>(width), static_cast<uint32_t>(height),         static_cast<uint32_t>(x),
        static_cast<uint32_t>(y),     static_cast<uint32_t>(m_nSourcePitch), static_cast<uint32_t>(m_nBytes)};
    const auto add = [&](size_t begin, size_t end, bool filled) {
        if (begin < end)
            m_Spans.push_back({static_cast<uint32_t>(x + begin), static_cast<uint32_t>(y),
                               static_cast<uint32_t>(end - begin), filled});
    };
    const auto isOutside = [&](size_t i) { return places.columns[i] >= width || places.rows[i] >= height; };
    const auto isOwn = [&](size_t i) { return places.columns[i] == x + i && places.rows[i] == y; };
    for (size_t i = 0; i < count;) {
        limits.x = static_cast<uint32_t>(x + i);
        const size_t inside = kernels.findOffsets(places.columns + i, places.rows + i, count - i, limits,
                                                  m_Offsets + m_nOffsets);
        add(i, i + inside, false);
        m_nOffsets += inside;
        i += inside;
        const size_t outside = i;
        while (i < count && isOutside(i)) ++i;
        if (fills) add(outside, i, true);
        while (i < count && isOwn(i) && !isOutside(i)) ++i;
    }
}

void PlaneMap::Apply(const kernels::RemapKernels& kernels, Plane8 plane, const uint8_t* source,
                     uint32_t fill) const noexcept {
    // Rows that follow each other come from much the same rows. Of whole rows those are more than a cache
    // holds, of strips they are few enough. Within one plane rows must keep their order.
    constexpr size_t kStripBytes = 4096;
    const size_t columns = plane.width / m_nBytes;
    const size_t strip = source == plane.data ? columns : kStripBytes / m_nBytes;
    for (size_t left = 0; left < columns; left += strip)
        ApplyStrip(kernels, plane, source, fill, left, left + strip);
}

void PlaneMap::ApplyStrip(const kernels::RemapKernels& kernels, Plane8 plane, const uint8_t* source,
                          uint32_t fill, size_t left, size_t right) const noexcept {
    const auto remap = m_nBytes == 4 ? kernels.remapRgba32 : kernels.remapComponent;
    const uint32_t* offsets = m_Offsets;
    for (const Span& span : m_Spans) {
        const size_t begin = std::max<size_t>(span.x, left);
        const size_t end = std::min<size_t>(size_t{span.x} + span.count, right);
        uint8_t* const row = plane.Row(span.y);
        if (span.filled)
            for (size_t x = begin; x < end; ++x) std::memcpy(row + x * m_nBytes, &fill, m_nBytes);
        else if (begin < end)
            remap(row + begin * m_nBytes, source, offsets + (begin - span.x), end - begin);
        if (!span.filled) offsets += span.count;
    }
}

} // namespace AVBased
