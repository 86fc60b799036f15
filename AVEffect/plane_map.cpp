#include "AVEffect/plane_map.h"

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
    const auto remap = m_nBytes == 4 ? kernels.remapRgba32 : kernels.remapComponent;
    const uint32_t* offsets = m_Offsets.data();
    for (const Span& span : m_Spans) {
        uint8_t* const to = plane.Row(span.y) + span.x * m_nBytes;
        if (span.filled) {
            for (size_t i = 0; i < span.count; ++i) std::memcpy(to + i * m_nBytes, &fill, m_nBytes);
            continue;
        }
        remap(to, source, offsets, span.count);
        offsets += span.count;
    }
}

} // namespace AVBased
