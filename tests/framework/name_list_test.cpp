#include <gtest/gtest.h>

#include <string>

#include "BaseTools/StringImpl.h"
#include "aveffect/base_tools.h"
#include "tests/support/record.h"

namespace {

using namespace test;

void SetCode(int code) { GetBaseException()->SetException(code, "old", 1, "f"); }

class NameList : public testing::Test {
protected:
    ~NameList() override { list->Free(); }
    IStrings* list = new CStringsImpl;
};

TEST(NameString, HoldsTextAndBytes) {
    IString* s = new CStringImpl("ab");
    s->Concat("c");
    s->Append("d\0e", 3);
    EXPECT_EQ(s->GetStrLength(), 6u);
    EXPECT_EQ(s->GetDataSize(), 6u);
    EXPECT_EQ(std::string(static_cast<const char*>(s->GetData()), 6), std::string("abcd\0e", 6));
    s->SetData("xyz", 2);
    EXPECT_STREQ(s->GetStr(), "xy");
    s->SetStr("q");
    EXPECT_FALSE(s->isEmpty());
    s->Clear();
    EXPECT_TRUE(s->isEmpty());
    s->Free();
}

TEST_F(NameList, KeepsOrderAndFinds) {
    EXPECT_EQ(list->AddString("b"), 0);
    EXPECT_EQ(list->InsertString(0, "a"), 0);
    EXPECT_EQ(list->AddString("b"), 2);
    EXPECT_EQ(list->GetCount(), 3);
    EXPECT_STREQ(list->GetString(0)->GetStr(), "a");
    EXPECT_EQ(list->FindString("b"), 1);
    CStringImpl wanted("b");
    EXPECT_EQ(list->Find(&wanted), 1);
    EXPECT_TRUE(list->Remove(1));
    EXPECT_EQ(list->GetCount(), 2);
    EXPECT_EQ(list->FindString("none"), -1);
    EXPECT_EQ(Code(), 10021005);
    EXPECT_EQ(Message(), "The request resource does not exist");
    list->Clear();
    EXPECT_EQ(list->GetCount(), 0);
}

TEST_F(NameList, RefusesBadIndicesAndTheSameElement) {
    EXPECT_EQ(list->InsertString(-1, "x"), -1);
    EXPECT_EQ(list->InsertString(1, "x"), -1);
    EXPECT_EQ(Code(), 10021000);
    EXPECT_EQ(Message(), "Bad index");

    IString* element = new CStringImpl("a");
    EXPECT_EQ(list->Add(element), 0);
    EXPECT_EQ(list->Insert(0, element), -1);
    EXPECT_EQ(Code(), 10021002);
    EXPECT_EQ(Message(), "Resource duplicated");

    EXPECT_FALSE(list->Remove(1)) << "an index equal to the count is an access out of range";
    EXPECT_EQ(Code(), 10021015);
    EXPECT_FALSE(list->Remove(2));
    EXPECT_EQ(Code(), 10021000);
    EXPECT_FALSE(list->Remove(-1));
    EXPECT_EQ(Code(), 10021000);
    EXPECT_EQ(list->GetCount(), 1);
}

// A host's own element may have no text at all.
class NoText final : public IString {
public:
    const char* GetStr() override { return nullptr; }
    void SetStr(const char*) override {}
    unsigned GetStrLength() override { return 0; }
    unsigned GetDataSize() override { return 0; }
    const void* GetData() override { return nullptr; }
    void SetData(const void*, unsigned) override {}
    void Concat(const char*) override {}
    void Append(const void*, unsigned) override {}
    void Clear() override {}
    bool isEmpty() override { return true; }
    void Free() override { delete this; }
};

TEST_F(NameList, PassesOverElementsWithoutText) {
    list->Add(new NoText);
    list->AddString("a");
    EXPECT_EQ(list->FindString("a"), 1);
    NoText wanted;
    EXPECT_EQ(list->Find(&wanted), -1);
    EXPECT_EQ(Code(), 10021003);
}

TEST_F(NameList, ClearsTheRecordExceptWhenReadingAnElement) {
    list->AddString("a");
    SetCode(9);
    list->GetString(0);
    EXPECT_EQ(Code(), 9);
    list->GetCount();
    EXPECT_EQ(Code(), 0);
    SetCode(9);
    list->AddString("b");
    EXPECT_EQ(Code(), 0);
    SetCode(9);
    list->FindString("a");
    EXPECT_EQ(Code(), 0);
    SetCode(9);
    list->Remove(0);
    EXPECT_EQ(Code(), 0);
    SetCode(9);
    list->Clear();
    EXPECT_EQ(Code(), 0);
}

TEST_F(NameList, CallersMistakesEndTheProcess) {
    EXPECT_DEATH(list->AddString(nullptr), "pStr != NULL");
    EXPECT_DEATH(list->Insert(0, nullptr), "pStr != NULL");
    EXPECT_DEATH(list->FindString(nullptr), "pStr != NULL");
    EXPECT_DEATH(list->GetString(-1), "iIndex >= 0");
    EXPECT_DEATH(list->GetString(0), "iIndex < \\(int32_t\\)m_Strings.size\\(\\)");
}

} // namespace
