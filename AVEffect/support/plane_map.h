#pragma once
/// A stored map of one plane: where each of its samples comes from.
#include <vector>

#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/remap.h"

namespace AVBased {

/// Where the samples of a row come from: a column and a row for each.
struct SamplePlaces {
    uint32_t* columns;
    uint32_t* rows;
};

/// A part of a picture or plane.
struct Rectangle {
    size_t xBegin = 0, xEnd = 0, yBegin = 0, yEnd = 0;

    bool Empty() const { return xBegin >= xEnd || yBegin >= yEnd; }
    size_t Columns() const { return xEnd - xBegin; }
};

/// The samples of a part of a plane, each with the place of its source.
class PlaneMap {
public:
    /// Bytes: 1 for samples, 4 for pixels.
    explicit PlaneMap(size_t bytes) noexcept
        : m_nBytes(bytes) {}

    /// Forgets all samples and makes room for those of the part of a plane of width x height samples, sources
    /// included, whose rows are pitch bytes apart; what was allocated stays. Samples from outside the plane
    /// will be filled with fills, else they stay as they are.
    void Begin(const Rectangle& part, size_t width, size_t height, size_t sourcePitch, bool fills);
    /// From now on, what Apply would move is moved as soon as its places are known, while caches hold them;
    /// with fills it may not. A plane, or two that share the map.
    void ApplyAtOnce(Plane8 plane, const uint8_t* source) noexcept {
        m_Targets[m_nTargets++] = {plane, source};
    }

    /// The places of row y of the part, to be written. Rows stay until the next one that is a multiple of
    /// kTileSide is written.
    SamplePlaces Row(size_t y) const {
        const size_t line = y % kernels::kTileSide;
        return {m_BandColumns + line * m_Part.Columns(), m_BandRows + line * m_Part.Columns()};
    }
    /// Row y is written, and all rows above.
    void EndRow(const kernels::RemapKernels& kernels, size_t y);

    /// Moves and fills the samples of a plane. Source is a plane of the pitch given to Begin that holds what
    /// the plane does. The fill's low byte counts for samples.
    void Apply(const kernels::RemapKernels& kernels, Plane8 plane, const uint8_t* source,
               uint32_t fill) const noexcept;

private:
    struct Fill {
        size_t x, y, count;
    };

    struct Target {
        Plane8 plane;
        const uint8_t* source;
    };

    void AddFills(const kernels::RemapKernels& kernels, size_t y);
    void Move(const kernels::RemapKernels& kernels, const Target& target, size_t yBegin, size_t yEnd,
              const kernels::MapTile* tiles) const noexcept;

    size_t m_nBytes;
    Rectangle m_Part;
    size_t m_nWidth = 0, m_nHeight = 0, m_nSourcePitch = 0;
    bool m_bFills = false;
    std::vector<Fill> m_Fills;
    Target m_Targets[2] = {};
    size_t m_nTargets = 0;
    Scratch m_Band, m_Memory;
    uint32_t *m_BandColumns = nullptr, *m_BandRows = nullptr;
    std::vector<kernels::MapTile> m_Tiles;
    size_t m_nTiles = 0;    // that are known
    uint32_t m_nPlaces = 0; // of their places, in 64 bytes
    uint8_t* m_Places = nullptr;
};

} // namespace AVBased
