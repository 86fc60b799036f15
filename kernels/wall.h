#pragma once
/// A picture shrunk into its own top left corner, and that corner repeated.
#include "kernels/pick.h"
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Where a tile's samples come from: along both axes from their own place or a later one, rising.
struct WallTile {
    Places columns, rows;
    unsigned times;     ///< how often a row that comes from itself is shrunk
    unsigned lastTimes; ///< the same, of the last row
};

/// One level's kernels.
struct WallKernels {
    /// Makes the tile, whose rows and columns are among the plane's.
    void (*shrinkRgba32)(Plane32 plane, const WallTile& tile) noexcept;
    void (*shrinkComponent)(Plane8 plane, const WallTile& tile) noexcept;
    /// Fills a row of width bytes: behind its first ones with copies of the earlier bytes at following, then
    /// with all of these over and over.
    void (*repeatRow)(uint8_t* row, size_t first, Places following, size_t width) noexcept;
};

template <>
const WallKernels& SelectKernels<WallKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
