#include "AVEffect/support/noise_table.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace AVBased {

namespace {

uint8_t Grain(unsigned shift) { return static_cast<uint8_t>(std::min(std::rand() >> shift, 255)); }

} // namespace

void NoiseTable::Draw(uint8_t* to, size_t count, unsigned shift) const {
    for (size_t i = 0; i < count; ++i) {
        if (m_Layout == Layout::Samples) {
            to[i] = Grain(shift);
            continue;
        }
        uint8_t* const pixel = to + 4 * i;
        for (const size_t channel : {2u, 1u, 0u}) pixel[channel] = Grain(shift);
        pixel[3] = 0;
    }
}

void NoiseTable::Extend(size_t count, unsigned shift) {
    if (Has(count)) return;
    if (count * UnitBytes() > m_Block.Size()) {
        BaseTool::AlignedMallocAllocator larger(64);
        larger.Malloc(count * UnitBytes());
        if (m_nCount) std::memcpy(larger.Data(), m_Block.Data(), m_nCount * UnitBytes());
        m_Block.Swap(larger);
    }
    auto* table = static_cast<uint8_t*>(m_Block.Data());
    Draw(table + m_nCount * UnitBytes(), count - m_nCount, shift);
    m_nCount = count;
}

} // namespace AVBased
