// What the queue refuses, and its use by two threads. The queue fuzz target holds it against a plain one.
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <thread>
#include <vector>

#include "BaseTools/sysutils.h"
#include "tests/support/raised.h"

namespace {

using BaseTool::CDataBuffer2;
using Bytes = std::vector<unsigned char>;

TEST(DataBuffer, ReportsMissingMemory) {
    CDataBuffer2 buffer(true);
    for (const auto push : {&CDataBuffer2::Push, &CDataBuffer2::PushFront})
        EXPECT_EQ(test::RaisedBy([&] { (buffer.*push)("x", std::numeric_limits<size_t>::max() / 4); }),
                  "10021007 No enough memory");
    EXPECT_EQ(buffer.GetDataSize(), 0u);
}

// The bytes count upwards, in blocks of any size on either side.
TEST(DataBuffer, CarriesBytesFromThreadToThread) {
    constexpr size_t kTotal = 300000;
    CDataBuffer2 buffer(true);
    std::jthread producer([&] {
        std::mt19937 random(1);
        for (size_t sent = 0; sent < kTotal;) {
            Bytes block(std::min<size_t>(1 + random() % 500, kTotal - sent));
            for (unsigned char& byte : block) byte = static_cast<unsigned char>(sent++);
            buffer.Push(block.data(), block.size());
        }
    });
    std::mt19937 random(2);
    for (size_t received = 0; received < kTotal;) {
        Bytes block(1 + random() % 700);
        block.resize(buffer.Pop(block.data(), block.size()));
        for (const unsigned char byte : block) ASSERT_EQ(byte, static_cast<unsigned char>(received++));
        if (block.empty()) std::this_thread::yield();
    }
    EXPECT_EQ(buffer.GetDataSize(), 0u);
}

} // namespace
