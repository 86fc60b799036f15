#include "BaseTools/block_pool.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <thread>
#include <vector>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "aveffect/pixel_format.h"
#include "tests/memory/allocation_count.h"

namespace {

using BaseTool::BlockKeeper;
using BaseTool::ReturnBlock;
using BaseTool::TakeBlock;

constexpr size_t kSize = 100000;

TEST(BlockPool, RecyclesBySizeWhileThereIsAKeeper) {
    const size_t before = test::LiveBlocks();
    {
        const BlockKeeper keeper;
        void* const block = TakeBlock(kSize);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u);
        std::memset(block, 1, kSize);
        ReturnBlock(block, kSize);
        const size_t allocations = test::Allocations();
        void* const again = TakeBlock(kSize);
        EXPECT_EQ(test::Allocations(), allocations);
        EXPECT_EQ(again, block);
        void* const other = TakeBlock(kSize + 1);
        EXPECT_GT(test::Allocations(), allocations) << "another size";
        ReturnBlock(again, kSize);
        ReturnBlock(other, kSize + 1);
        EXPECT_EQ(test::LiveBlocks(), before + 2);
    }
    EXPECT_EQ(test::LiveBlocks(), before) << "nothing waits when the keeper is gone";
    ReturnBlock(TakeBlock(kSize), kSize);
    EXPECT_EQ(test::LiveBlocks(), before) << "nothing waits without one";
    ReturnBlock(nullptr, kSize);
}

TEST(BlockPool, KeepsAFewBlocksForEachKeeperTheLatest) {
    const size_t before = test::LiveBlocks();
    std::optional<BlockKeeper> one(std::in_place), two(std::in_place);
    for (size_t size = 1; size <= 50; ++size) ReturnBlock(TakeBlock(size * 1000), size * 1000);
    const size_t both = test::LiveBlocks() - before;
    EXPECT_GE(both, 2u);
    EXPECT_LE(both, 16u);
    one.reset();
    const size_t single = test::LiveBlocks() - before;
    EXPECT_EQ(single * 2, both);
    const size_t allocations = test::Allocations();
    ReturnBlock(TakeBlock(50 * 1000), 50 * 1000);
    EXPECT_EQ(test::Allocations(), allocations) << "the latest is there";
    two.reset();
    EXPECT_EQ(test::LiveBlocks(), before);
}

TEST(BlockPool, ServesThreadsBlocksOfTheirOwn) {
    const auto work = [] {
        std::vector<std::jthread> threads;
        for (unsigned char mark = 0; mark < 4; ++mark)
            threads.emplace_back([mark] {
                const BlockKeeper keeper;
                for (size_t i = 0; i < 20000; ++i) {
                    const size_t size = 64 + i % 3;
                    auto* block = static_cast<unsigned char*>(TakeBlock(size));
                    std::memset(block, mark, size);
                    for (size_t at = 0; at < size; ++at) ASSERT_EQ(block[at], mark);
                    ReturnBlock(block, size);
                }
            });
    };
    work(); // the C library keeps some memory of threads that have ended
    const size_t before = test::LiveBlocks();
    work();
    EXPECT_EQ(test::LiveBlocks(), before);
}

TEST(BlockPool, ClonesOfFramesNeedNothingNew) {
    const BlockKeeper keeper;
    std::vector<unsigned char> pixels(64 * 48 * 4, 7);
    AVBased::CRawVideoFrame frame(false, AVBased::BGRA, 64, 48, true);
    frame.GetBuffer(0)->data = pixels.data();
    frame.GetBuffer(0)->pitch = 64 * 4;
    frame.Clone()->Free();
    const size_t allocations = test::Allocations();
    AVBased::IRawVideoFrame* clone = frame.Clone();
    EXPECT_EQ(test::Allocations(), allocations);
    unsigned width = 0, pitch = 0, rows = 0;
    EXPECT_EQ(clone->GetBuffer(0, &width, &pitch, &rows)[pitch * rows - 1], 7);
    clone->Free();
}

} // namespace
