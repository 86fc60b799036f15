#pragma once
/// Where each sample of a plane comes from within the plane itself.
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/remap.h"

namespace AVBased {

/// Samples come from themselves or from later ones, and are moved in row order.
class ScatterMap {
public:
    /// Bytes: 1 for samples, 4 for pixels.
    explicit ScatterMap(size_t bytes) noexcept
        : m_nBytes(bytes) {}

    /// Makes room for the samples of a plane, each of which is to be set; what was allocated stays.
    void Begin(size_t width, size_t rows, size_t pitch) {
        m_nWidth = width;
        m_nPitch = pitch;
        m_Offsets = reinterpret_cast<uint32_t*>(m_Memory.Require(width * rows * sizeof(uint32_t)));
    }
    /// Sample (x, y) comes from sample (sx, sy).
    void Set(size_t x, size_t y, size_t sx, size_t sy) {
        m_Offsets[y * m_nWidth + x] = static_cast<uint32_t>(sy * m_nPitch + sx * m_nBytes);
    }

    /// Moves the samples of a plane of that width, pitch and rows.
    void Apply(const kernels::RemapKernels& kernels, Plane8 plane) const noexcept {
        const auto remap = m_nBytes == 4 ? kernels.remapRgba32 : kernels.remapComponent;
        for (size_t y = 0; y < plane.rows; ++y)
            remap(plane.Row(y), plane.data, m_Offsets + y * m_nWidth, m_nWidth);
    }

private:
    size_t m_nBytes;
    size_t m_nWidth = 0, m_nPitch = 0;
    Scratch m_Memory;
    uint32_t* m_Offsets = nullptr; // bytes from the plane's start, row by row
};

} // namespace AVBased
