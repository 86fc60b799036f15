#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "BaseTools/CBaseException.h"
#include "BaseTools/guarded.h"
#include "BaseTools/sysutils.h"
#include "aveffect/base_tools.h"

namespace {

class ErrorRecord : public testing::Test {
protected:
    void SetUp() override {
        record = GetBaseException();
        record->SetException(0, nullptr, 0, nullptr);
    }
    IBaseException* record = nullptr;
};

TEST_F(ErrorRecord, ExceptionKeepsFourFieldsAndClearsTwo) {
    CBaseException e(5, nullptr, 7, nullptr);
    int line = 0;
    EXPECT_STREQ(e.GetExceptionMsg(), "");
    EXPECT_STREQ(e.GetExceptionSource(&line), "");
    EXPECT_EQ(line, 7);

    e.SetException(10021000, "Bad index", 12, "a/b.cpp");
    e.Copy(&e);
    EXPECT_STREQ(e.GetMsg(), "Bad index");
    const CBaseException copy(&e);
    EXPECT_EQ(copy.GetCode(), 10021000);
    EXPECT_STREQ(copy.GetExceptionSource(&line), "a/b.cpp");
    EXPECT_EQ(line, 12);

    e.Clear();
    EXPECT_EQ(e.GetCode(), 0);
    EXPECT_STREQ(e.GetMsg(), "");
    EXPECT_STREQ(e.GetExceptionSource(&line), "a/b.cpp");
    EXPECT_EQ(line, 12);
}

TEST_F(ErrorRecord, TextOfTheLastError) {
    EXPECT_EQ(BaseTool::GetLastCommonExpAsText(), "");
    record->SetException(10021005, "no such thing", 33, "dir/file.cpp");
    EXPECT_EQ(BaseTool::GetLastCommonExpAsText(),
              "[!!! Exception Code: 10021005\nMsg: no such thing\nFile: dir/file.cpp\nLine: 33 !!!]");
    record->Clear();
    EXPECT_EQ(BaseTool::GetLastCommonExpAsText(), "");
}

TEST_F(ErrorRecord, FormatsAnExceptionInto255Characters) {
    const CBaseException e(1, "it broke", 9, "deep/down/unit.cpp");
    EXPECT_EQ(BaseTool::FormatCommonExp(e, "%s|%d|%s"), "unit.cpp|9|it broke");
    const CBaseException wordy(1, std::string(400, 'x').c_str(), 9, "unit.cpp");
    EXPECT_EQ(BaseTool::FormatCommonExp(wordy, "%s %d %s"), "unit.cpp 9 " + std::string(244, 'x'));
}

TEST_F(ErrorRecord, BoundaryRecordsEachKindAndReturnsTheFailureValue) {
    EXPECT_EQ(BaseTool::Guarded(-1, []() -> int { BaseTool::Raise(10021002, "Resource duplicated"); }), -1);
    EXPECT_EQ(record->GetExceptionCode(), 10021002);
    int line = 0;
    EXPECT_STREQ(record->GetExceptionSource(&line), "tests/framework/exception_test.cpp");

    EXPECT_FALSE(BaseTool::Guarded(false, []() -> bool { throw std::out_of_range("too far"); }));
    EXPECT_EQ(record->GetExceptionCode(), 10021015);
    EXPECT_STREQ(record->GetExceptionMsg(), "too far");
    EXPECT_FALSE(BaseTool::Guarded(false, []() -> bool { throw std::bad_alloc(); }));
    EXPECT_EQ(record->GetExceptionCode(), 10021007);
    EXPECT_STREQ(record->GetExceptionMsg(), "No enough memory");
    const int before = __LINE__;
    BaseTool::Guarded([] { throw 3; });
    EXPECT_EQ(record->GetExceptionCode(), 10021008);
    EXPECT_STREQ(record->GetExceptionMsg(), "Unknown exception");
    record->GetExceptionSource(&line);
    EXPECT_EQ(line, before + 1);

    EXPECT_EQ(BaseTool::Guarded(0, [] { return 4; }), 4);
    EXPECT_EQ(record->GetExceptionCode(), 10021008) << "a success leaves the older error";
}

TEST_F(ErrorRecord, EachThreadHasItsOwn) {
    record->SetException(1, "mine", 1, "f");
    std::thread([] {
        EXPECT_EQ(GetBaseException()->GetExceptionCode(), 0);
        GetBaseException()->SetException(2, "theirs", 2, "g");
    }).join();
    EXPECT_STREQ(record->GetExceptionMsg(), "mine");
}

TEST_F(ErrorRecord, LogTextGoesToTheLoggerCutAndWithItsSource) {
    testing::internal::CaptureStderr();
    BaseTool::log_common_msg(3, "unit.cpp", 12, "value %d %s", 7, std::string(2000, 'y').c_str());
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find("unit.cpp:12"), std::string::npos);
    EXPECT_NE(text.find("value 7 " + std::string(1015, 'y')), std::string::npos);
    EXPECT_EQ(text.find(std::string(1016, 'y')), std::string::npos);

    testing::internal::CaptureStderr();
    BaseTool::debug_print("%s", std::string(300, 'z').c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(255, 'z') + "\n");
}

} // namespace
