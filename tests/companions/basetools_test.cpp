/// The error records and the logger.
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "aveffect/base_tools.h"

namespace {

std::string Source(IBaseException* record, int& line) { return record->GetExceptionSource(&line); }

TEST(ErrorRecord, BelongsToItsThread) {
    GetBaseException()->SetException(7, "mine", 12, "here.cpp");
    std::thread([] {
        EXPECT_EQ(GetBaseException()->GetExceptionCode(), 0);
        EXPECT_STREQ(GetBaseException()->GetExceptionMsg(), "");
        GetBaseException()->SetException(8, "theirs", 1, "there.cpp");
        EXPECT_EQ(GetBaseException(), GetBaseException());
    }).join();
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), 7);
    EXPECT_STREQ(GetBaseException()->GetExceptionMsg(), "mine");

    ReleaseBaseException();
    ReleaseBaseException();
    int line = -1;
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), 0);
    EXPECT_EQ(Source(GetBaseException(), line), "");
    EXPECT_EQ(line, 0);
}

TEST(ErrorRecord, KeepsClearsAndCopies) {
    ReleaseBaseException();
    IBaseException* record = GetBaseException();
    record->SetException(5, "message", 33, "file.cpp");
    record->Copy(record);
    record->Copy(nullptr);
    record->SetException(6, record->GetExceptionMsg(), 34, record->GetExceptionSource(nullptr));
    int line = 0;
    EXPECT_EQ(record->GetExceptionCode(), 6);
    EXPECT_STREQ(record->GetExceptionMsg(), "message");
    EXPECT_EQ(Source(record, line), "file.cpp");
    EXPECT_EQ(line, 34);

    std::thread([record] {
        GetBaseException()->Copy(record);
        int copied = 0;
        EXPECT_EQ(GetBaseException()->GetExceptionCode(), 6);
        EXPECT_STREQ(GetBaseException()->GetExceptionMsg(), "message");
        EXPECT_EQ(Source(GetBaseException(), copied), "file.cpp");
        EXPECT_EQ(copied, 34);
    }).join();

    record->Clear();
    EXPECT_EQ(record->GetExceptionCode(), 0);
    EXPECT_STREQ(record->GetExceptionMsg(), "");
    EXPECT_EQ(Source(record, line), "file.cpp");
    EXPECT_EQ(line, 34);

    record->SetException(9, nullptr, 1, nullptr);
    EXPECT_STREQ(record->GetExceptionMsg(), "");
    EXPECT_EQ(Source(record, line), "");
}

class LoggerTest : public testing::Test {
protected:
    void TearDown() override { AVBasedSetLogLevel(2); }
};

TEST_F(LoggerTest, WritesFromItsLevelOn) {
    testing::internal::CaptureStderr();
    for (int level = 0; level < 4; ++level) GetBaseLogger()->Write(level, "unit", "first", 0, 0);
    AVBasedSetLogLevel(0);
    GetBaseLogger()->Write(0, nullptr, "two\nlines", 0, 0);
    AVBasedSetLogLevel(4);
    GetBaseLogger()->Write(3, "unit", "never", 0, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "aveffect: warning: unit: first\naveffect: error: unit: first\n"
              "aveffect: debug: two lines\n");
}

TEST_F(LoggerTest, KeepsLinesOfThreadsApart) {
    constexpr int kThreads = 6;
    constexpr int kLines = 300;
    const std::string text(200, 'x');
    testing::internal::CaptureStderr();
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&text] {
            for (int line = 0; line < kLines; ++line) GetBaseLogger()->Write(3, "t", text.c_str(), 0, 0);
        });
    for (auto& thread : threads) thread.join();
    std::istringstream written(testing::internal::GetCapturedStderr());
    int count = 0;
    for (std::string line; std::getline(written, line); ++count)
        ASSERT_EQ(line, "aveffect: error: t: " + text);
    EXPECT_EQ(count, kThreads * kLines);
}

} // namespace
