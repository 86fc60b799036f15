#pragma once
/// A stored map of one plane: where each of its samples comes from.
#include <vector>

#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/remap.h"

namespace AVBased {

/// Where samples come from: a column and a row for each.
struct SamplePlaces {
    const uint32_t* columns;
    const uint32_t* rows;
};

/// Samples of some rows, in row order, each with the place of its source or marked to be filled. Samples that
/// were not added stay as they are.
class PlaneMap {
public:
    /// Bytes: 1 for samples, 4 for pixels.
    explicit PlaneMap(size_t bytes) noexcept
        : m_nBytes(bytes) {}

    /// Forgets all samples and makes room for that many; what was allocated stays. The sources' rows will be
    /// pitch bytes apart.
    void Begin(size_t sourcePitch, size_t samples) {
        m_nSourcePitch = sourcePitch;
        m_nOffsets = 0;
        m_Spans.clear();
        m_Offsets = reinterpret_cast<uint32_t*>(m_Memory.Require(samples * sizeof(uint32_t)));
    }

    /// Sample (x, y) comes from sample (sx, sy). Samples are added in row order.
    void AddSource(size_t x, size_t y, size_t sx, size_t sy) {
        if (!m_Spans.empty() && m_Spans.back().EndsAt(x, y))
            ++m_Spans.back().count;
        else
            m_Spans.push_back({static_cast<uint32_t>(x), static_cast<uint32_t>(y), 1, false});
        m_Offsets[m_nOffsets++] = static_cast<uint32_t>(sy * m_nSourcePitch + sx * m_nBytes);
    }

    /// Samples of row y from x on, of a plane of width x height samples, sources included. Those from outside
    /// it will be filled with fills, else they are left out. Those that come from themselves are left out
    /// too: they hold what they would get.
    void AddRow(const kernels::RemapKernels& kernels, size_t x, size_t y, SamplePlaces places, size_t count,
                size_t width, size_t height, bool fills);

    /// Moves and fills the samples of a plane. Every sample and every source must lie inside; source is a
    /// plane of the pitch given to Begin, or the plane itself when every sample comes from itself or a later
    /// one. The fill's low byte counts for samples.
    void Apply(const kernels::RemapKernels& kernels, Plane8 plane, const uint8_t* source,
               uint32_t fill) const noexcept;

private:
    struct Span {
        uint32_t x, y, count;
        bool filled;

        bool EndsAt(size_t toX, size_t toY) const { return !filled && y == toY && x + count == toX; }
    };

    /// The columns from left up to right.
    void ApplyStrip(const kernels::RemapKernels& kernels, Plane8 plane, const uint8_t* source, uint32_t fill,
                    size_t left, size_t right) const noexcept;

    size_t m_nBytes;
    size_t m_nSourcePitch = 0;
    std::vector<Span> m_Spans;
    Scratch m_Memory;
    uint32_t* m_Offsets = nullptr; // bytes from the source plane's start, of the samples that have a source
    size_t m_nOffsets = 0;         // that are known
};

/// Whether one map serves both planes.
inline bool SameShape(const Plane8& a, const Plane8& b) noexcept {
    return a.width == b.width && a.pitch == b.pitch && a.rows == b.rows;
}

} // namespace AVBased
