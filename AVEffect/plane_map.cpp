#include "AVEffect/plane_map.h"

#include <algorithm>
#include <cstring>

namespace AVBased {

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
