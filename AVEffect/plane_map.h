#pragma once
/// A stored map of one plane: where each of its samples comes from.
#include <vector>

#include "AVEffect/frame_planes.h"
#include "AVEffect/kernels/remap.h"

namespace AVBased {

/// Samples of some rows, in row order, each with the place of its source or marked to be filled. Samples that
/// were not added stay as they are.
class PlaneMap {
public:
    /// Bytes: 1 for samples, 4 for pixels.
    explicit PlaneMap(size_t bytes) noexcept
        : m_nBytes(bytes) {}

    /// Forgets all samples; what was allocated stays. The sources' rows will be pitch bytes apart.
    void Begin(size_t sourcePitch) {
        m_nSourcePitch = sourcePitch;
        m_Spans.clear();
        m_Offsets.clear();
    }

    /// Sample (x, y) comes from sample (sx, sy). Samples are added in row order.
    void AddSource(size_t x, size_t y, size_t sx, size_t sy) {
        Extend(x, y, false);
        m_Offsets.push_back(static_cast<uint32_t>(sy * m_nSourcePitch + sx * m_nBytes));
    }

    /// Sample (x, y) will be filled.
    void AddFill(size_t x, size_t y) { Extend(x, y, true); }

    /// Moves and fills the samples of a plane. Every sample and every source must lie inside; source is a
    /// plane of the pitch given to Begin, or the plane itself when every sample comes from itself or a later
    /// one. The fill's low byte counts for samples.
    void Apply(const kernels::RemapKernels& kernels, Plane8 plane, const uint8_t* source,
               uint32_t fill) const noexcept;

private:
    struct Span {
        uint32_t x, y, count;
        bool filled;
    };

    void Extend(size_t x, size_t y, bool filled) {
        if (!m_Spans.empty()) {
            Span& last = m_Spans.back();
            if (last.y == y && last.x + last.count == x && last.filled == filled) {
                ++last.count;
                return;
            }
        }
        m_Spans.push_back({static_cast<uint32_t>(x), static_cast<uint32_t>(y), 1, filled});
    }

    size_t m_nBytes;
    size_t m_nSourcePitch = 0;
    std::vector<Span> m_Spans;
    std::vector<uint32_t> m_Offsets; // bytes from the source plane's start, of the samples that have a source
};

/// Whether one map serves both planes.
inline bool SameShape(const Plane8& a, const Plane8& b) noexcept {
    return a.width == b.width && a.pitch == b.pitch && a.rows == b.rows;
}

} // namespace AVBased
