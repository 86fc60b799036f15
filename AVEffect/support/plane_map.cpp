#include "AVEffect/support/plane_map.h"

#include <algorithm>
#include <cstring>

namespace AVBased {

using kernels::kTileSide;

void PlaneMap::Begin(const Rectangle& part, size_t width, size_t height, size_t sourcePitch, bool fills) {
    m_Part = part.Empty() ? Rectangle{} : part;
    m_nWidth = width;
    m_nHeight = height;
    m_nSourcePitch = sourcePitch;
    m_bFills = fills;
    m_Fills.clear();
    m_nTargets = 0;
    m_nTiles = 0;
    m_nPlaces = 0;
    if (m_Part.Empty()) return;
    const size_t bands = (m_Part.yEnd - 1) / kTileSide + 1 - m_Part.yBegin / kTileSide;
    const size_t tiles = (m_Part.Columns() + kTileSide - 1) / kTileSide * bands;
    m_Places = m_Memory.Require(tiles * kernels::kTilePlaceBytes);
    if (tiles > m_Tiles.size()) m_Tiles.resize(tiles);
    const size_t band = m_Part.Columns() * kTileSide;
    m_BandColumns = reinterpret_cast<uint32_t*>(m_Band.Require(2 * band * sizeof(uint32_t)));
    m_BandRows = m_BandColumns + band;
}

void PlaneMap::AddFills(const kernels::RemapKernels& kernels, size_t y) {
    const SamplePlaces places = Row(y);
    const auto isOutside = [&](size_t i) {
        return places.columns[i] >= m_nWidth || places.rows[i] >= m_nHeight;
    };
    const size_t columns = m_Part.Columns();
    for (size_t i = 0; i < columns;) {
        i += kernels.countInside(places.columns + i, places.rows + i, columns - i,
                                 static_cast<uint32_t>(m_nWidth), static_cast<uint32_t>(m_nHeight));
        const size_t first = i;
        while (i < columns && isOutside(i)) ++i;
        if (first < i) m_Fills.push_back({m_Part.xBegin + first, y, i - first});
    }
}

void PlaneMap::EndRow(const kernels::RemapKernels& kernels, size_t y) {
    if (m_bFills) AddFills(kernels, y);
    if ((y + 1) % kTileSide != 0 && y + 1 != m_Part.yEnd) return;
    const size_t first = std::max(y - y % kTileSide, m_Part.yBegin);
    const kernels::PlaceLimits limits = {
        static_cast<uint32_t>(m_nWidth),       static_cast<uint32_t>(m_nHeight),
        static_cast<uint32_t>(m_Part.xBegin),  static_cast<uint32_t>(first),
        static_cast<uint32_t>(m_nSourcePitch), static_cast<uint32_t>(m_nBytes)};
    const SamplePlaces places = Row(first);
    const size_t columns = m_Part.Columns();
    m_nPlaces = kernels.findTiles({places.columns, places.rows, columns, columns, y + 1 - first}, limits,
                                  m_Tiles.data() + m_nTiles, m_Places, m_nPlaces);
    for (size_t i = 0; i < m_nTargets; ++i)
        Move(kernels, m_Targets[i], first, y + 1, m_Tiles.data() + m_nTiles);
    m_nTiles += (columns + kTileSide - 1) / kTileSide;
}

void PlaneMap::Move(const kernels::RemapKernels& kernels, const Target& target, size_t yBegin, size_t yEnd,
                    const kernels::MapTile* tiles) const noexcept {
    (m_nBytes == 4 ? kernels.remapTilesRgba32 : kernels.remapTilesComponent)(
        target.plane, target.source,
        {m_Part.xBegin, m_Part.xEnd, yBegin, yEnd, tiles, m_Places, m_nSourcePitch});
}

void PlaneMap::Apply(const kernels::RemapKernels& kernels, Plane8 plane, const uint8_t* source,
                     uint32_t fill) const noexcept {
    Move(kernels, {plane, source}, m_Part.yBegin, m_Part.yEnd, m_Tiles.data());
    for (const Fill& span : m_Fills) {
        uint8_t* const first = plane.Row(span.y) + span.x * m_nBytes;
        for (size_t i = 0; i < span.count; ++i) std::memcpy(first + i * m_nBytes, &fill, m_nBytes);
    }
}

} // namespace AVBased
