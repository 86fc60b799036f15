#pragma once
/// Working memory of an effect: grows to the largest frame seen, never shrinks, goes with the effect.
#include <cstdint>

#include "BaseTools/res_keeper.h"

namespace AVBased {

class Scratch {
public:
    /// At least that many bytes, undefined. Throws CBaseException 10021007 when memory is short.
    uint8_t* Require(size_t bytes) {
        if (bytes > m_Block.Size()) m_Block.Malloc(bytes);
        return static_cast<uint8_t*>(m_Block.Data());
    }

private:
    BaseTool::AlignedMallocAllocator m_Block{64};
};

} // namespace AVBased
