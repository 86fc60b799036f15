#pragma once
/// Grain that stays the same from frame to frame.
#include <cstddef>
#include <cstdint>

#include "BaseTools/res_keeper.h"

namespace AVBased {

/// Random bytes of the C library's generator, drawn once. Grows with the largest frame: smaller ones use its
/// beginning.
class NoiseTable {
public:
    /// Pixels have a byte each for B, G and R and an unused one, drawn in the order R, G, B; samples one
    /// byte.
    enum class Layout { Pixels, Samples };

    explicit NoiseTable(Layout layout) noexcept
        : m_Layout(layout) {}

    /// Whether there is noise for that many pixels or samples.
    bool Has(size_t count) const noexcept { return count <= m_nCount; }

    /// Draws what is missing for that many: rand() >> shift, limited to 255; shift 0 to 31. Throws
    /// CBaseException 10021007 when memory is short; the table keeps what it had then.
    void Extend(size_t count, unsigned shift);

    const uint8_t* Data() const noexcept { return static_cast<const uint8_t*>(m_Block.Data()); }

    /// Forgets the noise.
    void Clear() noexcept { m_nCount = 0; }

private:
    size_t UnitBytes() const noexcept { return m_Layout == Layout::Pixels ? 4 : 1; }
    void Draw(uint8_t* to, size_t count, unsigned shift) const;

    Layout m_Layout;
    size_t m_nCount = 0; // pixels or samples
    BaseTool::AlignedMallocAllocator m_Block{64};
};

} // namespace AVBased
