#include "BaseTools/StringImpl.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <memory>

#include "BaseTools/guarded.h"

using AVBased::kBadIndex;
using AVBased::kBadPointer;
using AVBased::kDoesNotExist;
using AVBased::kResourceDuplicated;
using BaseTool::Guarded;
using BaseTool::Raise;

// A std::string whose change fails is as it was, and takes parts of itself.

void CStringImpl::SetStr(const char* text) {
    Guarded([&] { m_strData.assign(text ? text : ""); });
}

void CStringImpl::SetData(const void* data, unsigned int bytes) {
    Guarded([&] { m_strData.assign(static_cast<const char*>(data), data ? bytes : 0); });
}

void CStringImpl::Concat(const char* text) {
    if (text) Guarded([&] { m_strData.append(text); });
}

void CStringImpl::Append(const void* data, unsigned int bytes) {
    if (data) Guarded([&] { m_strData.append(static_cast<const char*>(data), bytes); });
}

CStringsImpl::~CStringsImpl() { FreeElements(); }

void CStringsImpl::FreeElements() {
    // A host's own element may throw; the others go all the same.
    for (IString* string : m_Strings) Guarded([&] { string->Free(); });
    m_Strings.clear();
}

int CStringsImpl::GetCount() {
    GetBaseException()->Clear();
    return static_cast<int>(m_Strings.size());
}

int CStringsImpl::Add(IString* pStr) { return Insert(GetCount(), pStr); }

int CStringsImpl::AddString(const char* pStr) {
    return InsertString(static_cast<int>(m_Strings.size()), pStr);
}

int CStringsImpl::Insert(int iIndex, IString* pStr) {
    assert(pStr != NULL);
    GetBaseException()->Clear();
    return Guarded(-1, [&] {
        if (iIndex < 0 || iIndex > static_cast<int>(m_Strings.size())) Raise(kBadIndex, "Bad index");
        if (std::find(m_Strings.begin(), m_Strings.end(), pStr) != m_Strings.end())
            Raise(kResourceDuplicated, "Resource duplicated");
        m_Strings.insert(m_Strings.begin() + iIndex, pStr);
        return iIndex;
    });
}

int CStringsImpl::InsertString(int iIndex, const char* pStr) {
    assert(pStr != NULL);
    return Guarded(-1, [&] {
        auto string = std::make_unique<CStringImpl>(pStr);
        const int index = Insert(iIndex, string.get());
        if (index >= 0) static_cast<void>(string.release()); // the list's now
        return index;
    });
}

bool CStringsImpl::Remove(int iIndex) {
    GetBaseException()->Clear();
    return Guarded(false, [&] {
        // An index equal to the count passes this test and fails in at(): callers can tell the two apart by
        // the code.
        if (iIndex < 0 || iIndex > static_cast<int>(m_Strings.size())) Raise(kBadIndex, "Bad index");
        IString* const removed = m_Strings.at(static_cast<size_t>(iIndex));
        m_Strings.erase(m_Strings.begin() + iIndex);
        removed->Free();
        return true;
    });
}

int CStringsImpl::Find(IString* pStr) {
    assert(pStr != NULL);
    GetBaseException()->Clear();
    return Guarded(-1, [&] {
        const char* text = pStr->GetStr();
        if (!text) Raise(kBadPointer, "Bad pointer");
        return FindString(text);
    });
}

int CStringsImpl::FindString(const char* pStr) {
    assert(pStr != NULL);
    GetBaseException()->Clear();
    return Guarded(-1, [&] {
        const auto found = std::find_if(m_Strings.begin(), m_Strings.end(), [&](IString* string) {
            const char* text = string->GetStr();
            return text && std::strcmp(text, pStr) == 0;
        });
        if (found == m_Strings.end()) Raise(kDoesNotExist, "The request resource does not exist");
        return static_cast<int>(found - m_Strings.begin());
    });
}

IString* CStringsImpl::GetString(int iIndex) {
    assert(iIndex >= 0);
    assert(iIndex < (int32_t)m_Strings.size());
    return m_Strings[static_cast<size_t>(iIndex)];
}

void CStringsImpl::Clear() {
    GetBaseException()->Clear();
    FreeElements();
}
