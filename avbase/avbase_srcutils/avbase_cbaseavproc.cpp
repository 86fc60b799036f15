#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>

#include "BaseTools/StringImpl.h"
#include "BaseTools/guarded.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;

namespace {

// What a set leaves for the integer types when the text holds no number, and for effects that parse nothing.
// A double keeps its previous number then; a text is the node's own, wherever its characters lie now.
void PresetValue(CBaseAVProc::PropertyNode& node) {
    const int number = std::atoi(node.text.c_str());
    switch (node.type) {
    case kText:
        node.value.text = node.text.c_str();
        break;
    case kInt64:
        node.value.int64 = number;
        break;
    case kInt32:
        node.value.int32 = number;
        break;
    case kInt16:
        node.value.int16 = static_cast<int16_t>(number);
        break;
    default:
        break;
    }
}

void ParseValue(CBaseAVProc::PropertyNode& node) {
    const char* text = node.text.c_str();
    switch (node.type) {
    case kDouble:
        std::sscanf(text, "%lf", &node.value.number);
        break;
    case kInt64: {
        long long number = node.value.int64;
        std::sscanf(text, "%lld", &number);
        node.value.int64 = number;
        break;
    }
    case kInt32:
        std::sscanf(text, "%d", &node.value.int32);
        break;
    case kInt16:
        std::sscanf(text, "%hd", &node.value.int16);
        break;
    default:
        break;
    }
}

struct CopyValue {
    const CBaseAVProc::PropertyNode& node;
    void operator()(double* member) const { *member = node.value.number; }
    void operator()(long long* member) const { *member = node.value.int64; }
    void operator()(int* member) const { *member = node.value.int32; }
    void operator()(unsigned* member) const { *member = static_cast<unsigned>(node.value.int32); }
    void operator()(short* member) const { *member = node.value.int16; }
    void operator()(std::string* member) const { *member = node.text; }
};

} // namespace

CBaseAVProc::CBaseAVProc(const char* name, unsigned type, unsigned subType)
    : m_nType(type)
    , m_nSubType(subType) {
    assert(name);
    m_strName = name;
}

void* CBaseAVProc::GetInterface(const char* name) {
    assert(name);
    return Guarded(nullptr, [&]() -> void* {
        const auto it = m_InterfaceMap.find(name);
        if (it == m_InterfaceMap.end()) Raise(kNoInterface, name);
        assert((*it).second != NULL);
        return it->second;
    });
}

void CBaseAVProc::Free() { delete this; }

unsigned CBaseAVProc::GetType() { return m_nType; }

unsigned CBaseAVProc::GetSubType() { return m_nSubType; }

const char* CBaseAVProc::GetName() { return m_strName.c_str(); }

CBaseAVProc::PropertyNode& CBaseAVProc::Require(const char* name) {
    const auto it = m_Properties.find(name);
    if (it == m_Properties.end())
        Raise(kDoesNotExist, std::string("Property with name(") + name + ") does not exist");
    return it->second;
}

bool CBaseAVProc::SetProperty(const char* name, const char* value) {
    assert(name && value);
    return Guarded(false, [&] {
        PropertyNode& node = Require(name);
        node.text = value;
        PresetValue(node);
        OnSetProperty(name, node);
        return true;
    });
}

const char* CBaseAVProc::GetProperty(const char* name, int* type) {
    assert(name);
    const char* text = Guarded(nullptr, [&]() -> const char* {
        const PropertyNode& node = Require(name);
        if (type) *type = node.type;
        return node.text.c_str();
    });
    // Reading what was never registered is a mistake in the caller's program, unlike setting it.
    if (!text) assert(false);
    return text;
}

IStrings* CBaseAVProc::GetPropertyNames() {
    IStrings* names = Guarded(nullptr, [&]() -> IStrings* {
        auto list = std::make_unique<CStringsImpl>();
        for (const auto& [name, node] : m_Properties)
            if (list->AddString(name.c_str()) < 0) throw CBaseException(GetBaseException());
        return list.release();
    });
    if (!names) assert(false);
    return names;
}

void CBaseAVProc::OnSetProperty(const std::string& name, PropertyNode& node) {
    ParseValue(node);
    const auto bound = m_Members.find(name);
    if (bound != m_Members.end()) std::visit(CopyValue{node}, bound->second);
}

void CBaseAVProc::AddInterface(const std::string& interfaceName, void* pInterface) {
    assert(pInterface);
    assert(m_InterfaceMap.find(interfaceName) == m_InterfaceMap.end());
    m_InterfaceMap[interfaceName] = pInterface;
}

void CBaseAVProc::AddProperty(const std::string& propName, const PropertyNode& node) {
    assert(m_Properties.find(propName) == m_Properties.end());
    PropertyNode& stored = m_Properties[propName] = node;
    if (stored.type == kText) stored.value.text = stored.text.c_str();
}

void CBaseAVProc::AddProperty(const PropertyInfo& info) {
    const auto parsed = [&](const char* text) {
        PropertyNode node;
        node.text = text;
        node.type = info.type;
        PresetValue(node);
        ParseValue(node);
        return node;
    };
    AddProperty(info.name, parsed(info.defaultText));
    if (info.start) m_Starts[info.name] = parsed(info.start);
}

CBaseAVProc::PropertyNode* CBaseAVProc::GetProperty(const std::string& propName) {
    const auto it = m_Properties.find(propName);
    return it == m_Properties.end() ? nullptr : &it->second;
}

void CBaseAVProc::StartFrom(const std::string& propName, Member member) {
    const auto registered = m_Properties.find(propName);
    assert(registered != m_Properties.end());
    const auto start = m_Starts.find(propName);
    std::visit(CopyValue{start == m_Starts.end() ? registered->second : start->second}, member);
}

void CBaseAVProc::Bind(const std::string& propName, Member member) {
    StartFrom(propName, member);
    m_Members[propName] = member;
}

} // namespace AVBased
