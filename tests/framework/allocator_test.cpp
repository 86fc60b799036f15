#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "BaseTools/CBaseException.h"
#include "BaseTools/res_keeper.h"

namespace {

TEST(AlignedAllocation, HonoursAnyAlignmentAndKeepsTheSize) {
    for (const size_t alignment : {0u, 1u, 3u, 16u, 64u, 4096u})
        for (const size_t size : {0u, 1u, 17u, 5000u}) {
            auto* block = static_cast<unsigned char*>(BaseTool::_aligned_malloc(size, alignment));
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % std::max<size_t>(alignment, 1), 0u) << alignment;
            size_t header[2];
            std::memcpy(header, block - 16, sizeof header);
            EXPECT_GE(header[0], 16u);
            EXPECT_EQ(header[1], size);
            std::memset(block, 0xAB, size);
            BaseTool::_aligned_free(block);
        }
    BaseTool::_aligned_free(nullptr);
    EXPECT_EQ(BaseTool::_aligned_malloc(std::numeric_limits<size_t>::max() - 8, 64), nullptr);
}

TEST(AlignedAllocation, ReallocCopiesWhatBothHave) {
    auto* block = static_cast<unsigned char*>(BaseTool::_aligned_realloc(nullptr, 4, 16));
    std::copy_n("abcd", 4, block);
    block = static_cast<unsigned char*>(BaseTool::_aligned_realloc(block, 100, 64));
    EXPECT_EQ(std::memcmp(block, "abcd", 4), 0);
    block = static_cast<unsigned char*>(BaseTool::_aligned_realloc(block, 2, 16));
    EXPECT_EQ(std::memcmp(block, "ab", 2), 0);
    BaseTool::_aligned_free(block);
}

TEST(AlignedAllocation, HolderReportsMissingMemory) {
    BaseTool::AlignedMallocAllocator holder(32);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(holder.Malloc(10)) % 32, 0u);
    EXPECT_EQ(holder.Size(), 10u);
    try {
        holder.Malloc(std::numeric_limits<size_t>::max() - 100);
        FAIL();
    } catch (const CBaseException& e) {
        EXPECT_EQ(e.GetCode(), 10021007);
        EXPECT_STREQ(e.GetMsg(), "No enough memory");
    }
    EXPECT_EQ(holder.Data(), nullptr);
    EXPECT_EQ(holder.Size(), 0u);
}

} // namespace
