#pragma once
/// What the portrait effect does to the rows and columns of a plane.
#include <cstdint>
#include <vector>

#include "kernels/portrait.h"

namespace AVBased {

/// A frame around a picture, and how a plane's samples belong to the picture's pixels or luma samples.
struct PortraitGeometry {
    unsigned band;        ///< pixels over which the colour fades; a sixteenth of it is filled; not 0
    size_t width, height; ///< of the picture
    unsigned horizontalShift, verticalShift;
};

/// The mixes of one plane at a time, in memory that is kept.
class PortraitMixes {
public:
    /// For a plane of that many units of 1 byte, or of 4, and rows. The colour is a sample's value, or
    /// 0xAARRGGBB. What comes back refers to this object and holds until the next call.
    kernels::PortraitFrame Of(const PortraitGeometry& geometry, size_t width, size_t rows, size_t unitBytes,
                              uint32_t colour);

private:
    using Places = std::vector<kernels::PortraitPlace>;

    /// Rows are mixed from one side of the picture and then from the other, columns from both in turn.
    enum class Order { SideBySide, InTurn };

    static void Find(Places& places, unsigned band, size_t pictureSize, size_t size, unsigned shift,
                     uint8_t alphaOfFill, Order order);
    void AddRuns(kernels::PortraitFrame& frame, size_t unitBytes) const;
    void FillTables(kernels::PortraitFrame& frame, size_t unitBytes);

    Places m_Rows, m_Columns;
    std::vector<uint16_t> m_Tables;
};

} // namespace AVBased
