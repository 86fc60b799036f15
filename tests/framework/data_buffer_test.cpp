// The queue against a plain one.
#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <random>
#include <thread>
#include <vector>

#include "BaseTools/data_buffer.h"
#include "tests/support/raised.h"

namespace {

using BaseTool::CDataBuffer2;
using Bytes = std::vector<unsigned char>;

TEST(DataBuffer, IsAPlainQueueUnderRandomUse) {
    std::mt19937 random(7);
    for (const bool locked : {false, true}) {
        CDataBuffer2 buffer(locked);
        std::deque<unsigned char> model;
        for (int step = 0; step < 20000; ++step) {
            Bytes bytes(random() % 40);
            for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
            switch (random() % 8) {
            case 0:
            case 1:
            case 2:
                buffer.Push(bytes.data(), bytes.size());
                model.insert(model.end(), bytes.begin(), bytes.end());
                break;
            case 3:
                buffer.PushFront(bytes.data(), bytes.size());
                model.insert(model.begin(), bytes.begin(), bytes.end());
                break;
            case 4:
                buffer.Push(nullptr, 10);
                buffer.PushFront(nullptr, 10);
                break;
            case 5:
                if (random() % 100 == 0) {
                    buffer.Clear();
                    model.clear();
                }
                break;
            default: {
                Bytes taken(random() % 70, 0xCC);
                const size_t count = std::min(taken.size(), model.size());
                const bool discard = random() % 4 == 0;
                ASSERT_EQ(buffer.Pop(discard ? nullptr : taken.data(), taken.size()), count);
                const auto end = model.begin() + static_cast<ptrdiff_t>(count);
                Bytes expected(taken.size(), 0xCC);
                if (!discard) std::copy(model.begin(), end, expected.begin());
                ASSERT_EQ(taken, expected) << "step " << step;
                model.erase(model.begin(), end);
            }
            }
            ASSERT_EQ(buffer.GetDataSize(), model.size());
        }
    }
}

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
