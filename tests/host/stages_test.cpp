/// Queues and stages: order, and ends of every kind without a thread left waiting.
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "host/support/bounded_queue.h"
#include "host/support/stages.h"

namespace {

using aveffect::BoundedQueue;
using aveffect::StageGroup;

TEST(Queue, KeepsOrderAndBound) {
    BoundedQueue<int> queue(3);
    std::atomic<int> pushed{0};
    std::jthread producer([&] {
        for (int item = 0; item < 1000; ++item) {
            queue.Push(item, 1);
            ++pushed;
        }
        queue.Finish();
    });
    for (int expected = 0; expected < 1000; ++expected) {
        ASSERT_EQ(queue.Pop(), expected);
        ASSERT_LE(pushed, expected + 1 + 3 + 1); // popped, queued, and one just let in
    }
    EXPECT_FALSE(queue.Pop());
    EXPECT_FALSE(queue.Stopped());
}

TEST(Queue, HeavyItemPassesAlone) {
    BoundedQueue<int> queue(2);
    EXPECT_TRUE(queue.Push(7, 100));
    EXPECT_EQ(queue.Pop(), 7);
}

// A chain of three stages; the failing one stops after some items, the others run until told to end.
void RunChain(int failing) {
    BoundedQueue<int> first(2), second(2);
    StageGroup stages([&] {
        first.Stop();
        second.Stop();
    });
    const auto step = [failing](int stage, int count) {
        if (stage == failing && count == 50) throw std::runtime_error("stage " + std::to_string(stage));
    };
    stages.Start([&] {
        for (int count = 0;; ++count) {
            step(0, count);
            if (!first.Push(count, 1)) return;
        }
    });
    stages.Start([&] {
        for (int count = 0; const auto item = first.Pop(); ++count) {
            step(1, count);
            if (!second.Push(*item, 1)) return;
        }
    });
    stages.Start([&] {
        for (int count = 0; second.Pop(); ++count) step(2, count);
    });
    stages.Join();
}

TEST(Stages, AnyFailureEndsAllAndIsTheOneThrown) {
    for (int failing = 0; failing < 3; ++failing)
        for (int repeat = 0; repeat < 20; ++repeat) {
            try {
                RunChain(failing);
                FAIL() << "no failure came through";
            } catch (const std::runtime_error& error) {
                EXPECT_EQ(error.what(), "stage " + std::to_string(failing));
            }
        }
}

TEST(Stages, GroupThatIsGivenUpEnds) {
    BoundedQueue<std::unique_ptr<int>> queue(1);
    {
        StageGroup stages([&] { queue.Stop(); });
        stages.Start([&] {
            while (queue.Push(std::make_unique<int>(1), 1)) {
            }
        });
    }
    EXPECT_TRUE(queue.Stopped());
}

} // namespace
