// Locks, the event and worker threads.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <unistd.h>

#include "BaseTools/sysutils.h"
#include "aveffect/base_tools.h"
#include "tests/support/raised.h"

namespace {

using namespace BaseTool;

double MillisecondsOf(const std::function<void()>& body) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    body();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// In a death test's process: body never returns.
void RunWithAlarm(const std::function<void()>& body) {
    signal(SIGALRM, SIG_DFL);
    ualarm(200'000, 0);
    body();
    _exit(0);
}

TEST(Mutex, IsRecursiveAndPollsWhileAnotherThreadHoldsIt) {
    CXMutex mutex;
    EXPECT_TRUE(mutex.Lock(0xFFFFFFFF));
    EXPECT_TRUE(mutex.Lock(0));
    std::jthread([&] {
        // One attempt and one wait each 10 ms begun, the millisecond after the timeout included.
        for (const auto& [timeout, attempts] : {std::pair{0u, 1}, {25u, 3}, {29u, 3}, {30u, 4}})
            EXPECT_GE(MillisecondsOf([&, t = timeout] { EXPECT_FALSE(mutex.Lock(t)); }), 10 * attempts);
    }).join();
    EXPECT_TRUE(mutex.Unlock());
    std::jthread([&] { EXPECT_FALSE(mutex.Lock(0)); }).join();
    std::jthread late([&] {
        EXPECT_TRUE(mutex.Lock(0xFFFFFFFE));
        EXPECT_TRUE(mutex.Unlock());
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(15));
    EXPECT_TRUE(mutex.Unlock());
    late.join();
    EXPECT_DEATH(mutex.Unlock(), "CXMutex::Unlock.*Assertion .false. failed");
}

TEST(CriticalSection, KeepsThreadsApartUntilTheGuardLeavesIt) {
    void* const critical = init_critical();
    long count = 0;
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 2; ++thread)
            threads.emplace_back([&] {
                for (int i = 0; i < 20000; ++i) {
                    enter_critical(critical);
                    const CCriticalAutoLock lock(critical);
                    ++count;
                }
            });
    }
    EXPECT_EQ(count, 40000);
    delete_critical(critical);
    { const CCriticalAutoLock nothing(nullptr); }
    for (const auto& operation : {delete_critical, enter_critical, leave_critical})
        EXPECT_EQ(test::RaisedBy([&] { operation(nullptr); }), "10021003 Bad pointer");
}

TEST(Event, LetsWaitersThroughAndResetsItself) {
    CXEvent manual(false, true), automatic(true, false);
    EXPECT_TRUE(manual.Wait(0));
    EXPECT_TRUE(manual.Wait(0xFFFFFFFF)) << "stays signalled";
    automatic.Set();
    EXPECT_TRUE(automatic.Wait(5));
    // Reset by the Wait, so that this waits for the other thread's Set.
    bool set = false;
    std::jthread setter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        set = true;
        automatic.Set();
    });
    EXPECT_TRUE(automatic.Wait(0xFFFFFFFF));
    EXPECT_TRUE(set);
}

TEST(EventDeathTest, GivesUpAtOnceAndKeepsItsLock) {
    const auto event = std::make_unique<CXEvent>(false, true);
    event->Reset();
    const auto body = [&] {
        const double waited = MillisecondsOf([&] {
            if (event->Wait(5000)) _exit(1);
        });
        if (waited > 4000) _exit(2);
        RunWithAlarm([&] { event->Set(); }); // hangs
    };
    EXPECT_EXIT(body(), testing::KilledBySignal(SIGALRM), "");
}

class Worker final : public CBaseToolThread {
public:
    explicit Worker(std::function<unsigned()> body)
        : m_Body(std::move(body)) {}
    ~Worker() override { Wait(0xFFFFFFFF); }

private:
    unsigned ThreadProc() override { return m_Body(); }

    std::function<unsigned()> m_Body;
};

TEST(Thread, StartsWhenResumedAndGivesItsCode) {
    std::atomic<bool> ran = false, mayEnd = false;
    Worker worker([&] {
        ran = true;
        while (!mayEnd) SleepOnePoll();
        return 77u;
    });
    unsigned code = 5;
    EXPECT_TRUE(worker.IsSuspended());
    EXPECT_EQ(worker.Wait(30), 0);
    EXPECT_FALSE(ran);
    worker.Resume();
    EXPECT_FALSE(worker.IsSuspended());
    while (!ran) SleepOnePoll();
    EXPECT_EQ(worker.Wait(0), 0);
    EXPECT_FALSE(worker.GetExitCode(code));
    EXPECT_EQ(code, 5u);
    EXPECT_FALSE(pthread_equal(worker.GetThreadHandle(), pthread_self()));
    mayEnd = true;
    EXPECT_EQ(worker.Wait(0xFFFFFFFF), 1);
    EXPECT_EQ(worker.Wait(0), 1);
    EXPECT_TRUE(worker.GetExitCode(code));
    EXPECT_EQ(code, 77u);
    EXPECT_EQ(worker.GetThreadException().GetCode(), 0);
}

TEST(Thread, KeepsTheErrorThatEndedIt) {
    struct Case {
        std::function<unsigned()> body;
        int code;
        const char* message;
        unsigned exitCode;
    };
    const Case cases[] = {
        {[]() -> unsigned { Raise(10021000, "Bad index"); }, 10021000, "Bad index", 0xFFFFFFFF},
        {[]() -> unsigned { throw std::runtime_error("of its own"); }, 10021015, "of its own", 0xFFFFFFFF},
        {[]() -> unsigned { throw 1; }, 10021008, "Unknown exception", 0xFFFFFFFF},
        {[] {
             GetBaseException()->SetException(9, "left behind", 0, nullptr);
             return 3u;
         },
         9, "left behind", 3},
    };
    GetBaseException()->Clear();
    for (const Case& each : cases) {
        Worker worker(each.body);
        worker.Resume();
        EXPECT_EQ(worker.Wait(5000), 1);
        unsigned code = 0;
        EXPECT_TRUE(worker.GetExitCode(code));
        EXPECT_EQ(code, each.exitCode);
        EXPECT_EQ(worker.GetThreadException().GetCode(), each.code);
        EXPECT_STREQ(worker.GetThreadException().GetMsg(), each.message);
    }
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), 0);
}

TEST(ThreadDeathTest, WithoutResumeDestructionNeverEnds) {
    EXPECT_EXIT(RunWithAlarm([] { const Worker worker([] { return 0u; }); }),
                testing::KilledBySignal(SIGALRM), "");
}

} // namespace
