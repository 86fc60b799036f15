#pragma once
/// The processor base joined to one of the host's processor interfaces.
#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"

namespace AVBased {

/// Interface is IVideoProc or IAudioProc. Both it and CBaseAVProc bring IAVProc, so its operations are
/// forwarded once here. Has "duration"; the derived class binds it.
template <class Interface>
class CProcessor : public CBaseAVProc, public Interface {
public:
    CProcessor(const char* name, unsigned type, unsigned subType, const char* interfaceName)
        : CBaseAVProc(name, type, subType) {
        AddInterface(interfaceName, static_cast<Interface*>(this));
        AddProperty(kDurationProperty);
    }

    void* GetInterface(const char* name) override { return CBaseAVProc::GetInterface(name); }
    void Free() override { CBaseAVProc::Free(); }
    unsigned GetType() override { return CBaseAVProc::GetType(); }
    unsigned GetSubType() override { return CBaseAVProc::GetSubType(); }
    const char* GetName() override { return CBaseAVProc::GetName(); }
    bool SetProperty(const char* name, const char* value) override {
        return CBaseAVProc::SetProperty(name, value);
    }
    const char* GetProperty(const char* name, int* type) override {
        return CBaseAVProc::GetProperty(name, type);
    }
    IStrings* GetPropertyNames() override { return CBaseAVProc::GetPropertyNames(); }

protected:
    using CBaseAVProc::GetProperty;

    /// Registers an effect's properties.
    void AddProperties(const EffectInfo& effect) {
        for (const PropertyInfo& property : effect.properties) AddProperty(property);
    }
};

} // namespace AVBased
