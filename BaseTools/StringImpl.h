#pragma once
/// The name lists that processors return.
#include <cstdint>
#include <string>
#include <vector>

#include "aveffect/name_list.h"

/// Null texts and data count as empty. Should memory be short, the text stays and the record has 10021007.
class CStringImpl : public IString {
public:
    explicit CStringImpl(const char* text = nullptr)
        : m_strData(text ? text : "") {}
    virtual ~CStringImpl() = default;

    const char* GetStr() override { return m_strData.c_str(); }
    void SetStr(const char* text) override;
    unsigned GetStrLength() override { return static_cast<unsigned>(m_strData.size()); }
    unsigned GetDataSize() override { return GetStrLength(); }
    const void* GetData() override { return GetStr(); }
    void SetData(const void* data, unsigned int bytes) override;
    void Concat(const char* text) override;
    void Append(const void* data, unsigned int bytes) override;
    void Clear() override { m_strData.clear(); }
    bool isEmpty() override { return m_strData.empty(); }
    void Free() override { delete this; }

private:
    std::string m_strData;
};

/// Owns its elements and frees them through their own Free().
class CStringsImpl : public IStrings {
public:
    CStringsImpl() = default;
    virtual ~CStringsImpl();
    CStringsImpl(const CStringsImpl&) = delete;
    CStringsImpl& operator=(const CStringsImpl&) = delete;

    void Free() override { delete this; }
    int GetCount() override;
    int Add(IString* pStr) override;
    int AddString(const char* pStr) override;
    int Insert(int iIndex, IString* pStr) override;
    int InsertString(int iIndex, const char* pStr) override;
    bool Remove(int iIndex) override;
    int Find(IString* pStr) override;
    int FindString(const char* pStr) override;
    IString* GetString(int iIndex) override;
    void Clear() override;

private:
    void FreeElements();

    std::vector<IString*> m_Strings;
};
