#include "AVEffect/support/plane_map.h"

#include <algorithm>
#include <cstring>

namespace AVBased {

void PlaneMap::AddRow(size_t x, size_t y, SamplePlaces places, size_t count, size_t width, size_t height,
                      bool fills) {
    enum class Kind { Own, Inside, Outside };
    const auto kindOf = [&](size_t i) {
        const uint32_t sx = places.columns[i], sy = places.rows[i];
        if (sx >= width || sy >= height) return Kind::Outside;
        return sx == x + i && sy == y ? Kind::Own : Kind::Inside;
    };
    for (size_t i = 0, end = 0; i < count; i = end) {
        const Kind kind = kindOf(i);
        for (end = i + 1; end < count && kindOf(end) == kind;) ++end;
        if (kind == Kind::Own || (kind == Kind::Outside && !fills)) continue;
        m_Spans.push_back({static_cast<uint32_t>(x + i), static_cast<uint32_t>(y),
                           static_cast<uint32_t>(end - i), kind == Kind::Outside});
        if (kind == Kind::Outside) continue;
        const size_t known = m_Offsets.size();
        m_Offsets.resize(known + (end - i));
        uint32_t* const offsets = m_Offsets.data() + known;
        for (size_t j = i; j < end; ++j) offsets[j - i] = OffsetOf(places.columns[j], places.rows[j]);
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
    const uint32_t* offsets = m_Offsets.data();
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
