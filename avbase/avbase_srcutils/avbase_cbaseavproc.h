#pragma once
/// The base of every processor: its name and type, its interfaces by name, its properties by name.
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>

#include "aveffect/effect_info.h"
#include "aveffect/plugin.h"

namespace AVBased {

class CBaseAVProc : public IAVProc {
public:
    /// One property: its text as last set, its type code and the value parsed from the text.
    struct PropertyNode {
        std::string text;
        int32_t type = kText;
        union Value {
            int64_t int64 = 0; // first, so that all eight bytes start as 0
            const char* text;
            double number;
            int32_t int32;
            int16_t int16;
        } value;
    };

    /// The name must not be null.
    CBaseAVProc(const char* name, unsigned type, unsigned subType);
    CBaseAVProc(const CBaseAVProc&) = delete;
    CBaseAVProc& operator=(const CBaseAVProc&) = delete;

    void* GetInterface(const char* name) override;
    void Free() override;
    unsigned GetType() override;
    unsigned GetSubType() override;
    const char* GetName() override;
    bool SetProperty(const char* name, const char* value) override;
    const char* GetProperty(const char* name, int* type) override;
    IStrings* GetPropertyNames() override;

    virtual ~CBaseAVProc() = default;

    /// Told of every property that is set, with the node's new text. This version parses the text by the
    /// node's type and copies the value into the bound member; effects override it where a change means more
    /// than that.
    virtual void OnSetProperty(const std::string& name, PropertyNode& node);

protected:
    /// Registers an interface, once a name. Not owned.
    void AddInterface(const std::string& interfaceName, void* pInterface);

    /// Registers a property, once a name. Neither parses the text nor calls OnSetProperty.
    void AddProperty(const std::string& propName, const PropertyNode& node);

    /// Registers a catalogued property with its default text and the value that this text parses to.
    void AddProperty(const PropertyInfo& info);

    /// The node of that name, null when there is none.
    PropertyNode* GetProperty(const std::string& propName);

    /// A member that follows a property. The member's type says which of the node's values it takes.
    using Member = std::variant<double*, long long*, int*, unsigned*, short*, std::string*>;

    /// The member gets the value that is in force at first, which the catalogue has.
    void StartFrom(const std::string& propName, Member member);

    /// The same, and from now on the parsed value goes into the member whenever the property is set.
    void Bind(const std::string& propName, Member member);

private:
    PropertyNode& Require(const char* name);

    unsigned m_nType;
    unsigned m_nSubType;
    std::string m_strName;
    // Looked up by texts as they are: reading a property takes no memory, and so can't fail for want of it.
    std::map<std::string, PropertyNode, std::less<>> m_Properties;
    std::map<std::string, PropertyNode>
        m_Starts; // of properties whose registered text is not in force at first
    std::map<std::string, void*, std::less<>> m_InterfaceMap;
    std::map<std::string, Member> m_Members;
};

} // namespace AVBased
