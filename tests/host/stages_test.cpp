/// Queues and stages: order, and ends of every kind without a thread left waiting.
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "host/support/bounded_queue.h"
#include "host/support/ordered_workers.h"
#include "host/support/turnstile.h"

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

// Each item takes another time; number 50 and some behind it fail, the later ones sooner.
TEST(OrderedWorkers, HandOnInOrderWithinBoundsUntilTheFirstFailure) {
    using aveffect::OrderedWorkers;
    constexpr int kFailing = 50;
    for (const unsigned count : {1u, 2u, 3u, 8u}) {
        std::atomic<int> inFlight{0};
        aveffect::Turnstile gate;
        int64_t passed = 0;
        OrderedWorkers<int> workers(count, 7, [&](unsigned worker, int64_t number, int& item) {
            EXPECT_LT(worker, count);
            std::this_thread::sleep_for(std::chrono::microseconds(item * 7919 % 400));
            if (item >= kFailing && item % 3 == 2) throw std::runtime_error(std::to_string(item));
            gate.Pass(number, [&] { EXPECT_EQ(passed++, number); });
            item = -item;
        });
        StageGroup stages([&] {
            workers.Stop();
            gate.Stop();
        });
        stages.Start([&] {
            for (int item = 0; workers.Push(item, {1, 1}); ++item) {
                EXPECT_LE(++inFlight, 8); // seven bytes, and one just let in
                if (item % 10 == 0) {
                    ++inFlight;
                    if (!workers.PushThrough(1000, {0, 1})) return;
                }
            }
        });
        int expected = 0;
        stages.Start([&] {
            for (; const auto item = workers.Pop(); --inFlight) {
                if (*item == 1000) continue;
                EXPECT_EQ(*item, -expected);
                ++expected;
            }
        });
        try {
            stages.Join();
            FAIL() << "no failure came through";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), std::to_string(kFailing));
        }
        EXPECT_EQ(expected, kFailing);
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
