#pragma once
/// A sound effect as LADSPA hosts have it: loaded at run time, one channel.
#include <dlfcn.h>

#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "adapters/ladspa/ladspa_interface.h"

namespace test {

/// The effects in their order there, and their controls' ports.
enum SoundEffect : unsigned long { kVolumeEffect, kFaderEffect };
constexpr unsigned kFirstControlPort = 2;

/// Null behind the last one.
inline const AVBased::ladspa::Descriptor* SoundDescriptor(unsigned long effect) {
    static void* const module = dlopen(AVEFFECT_BIN_DIR "/../lib/ladspa/aveffect.so", RTLD_NOW);
    if (!module) throw std::runtime_error(dlerror());
    using Entry = const AVBased::ladspa::Descriptor* (*)(unsigned long);
    return reinterpret_cast<Entry>(dlsym(module, "ladspa_descriptor"))(effect);
}

/// An activated instance with controls of its own.
class SoundPlugin {
public:
    SoundPlugin(unsigned long effect, unsigned long rate, std::vector<float> atFirst)
        : controls(std::move(atFirst))
        , m_Descriptor(*SoundDescriptor(effect))
        , m_Instance(m_Descriptor.instantiate(&m_Descriptor, rate), m_Descriptor.cleanup) {
        if (!*this) return;
        for (unsigned i = 0; i < controls.size(); ++i) Connect(kFirstControlPort + i, &controls[i]);
        Activate();
    }
    SoundPlugin(const SoundPlugin&) = delete;
    SoundPlugin& operator=(const SoundPlugin&) = delete;

    explicit operator bool() const { return m_Instance != nullptr; }
    void Connect(unsigned port, float* place) { m_Descriptor.connectPort(m_Instance.get(), port, place); }
    void Activate() { m_Descriptor.activate(m_Instance.get()); }
    void Run(const float* from, float* to, size_t count) {
        Connect(0, const_cast<float*>(from));
        Connect(1, to);
        m_Descriptor.run(m_Instance.get(), count);
    }

    std::vector<float> controls;

private:
    const AVBased::ladspa::Descriptor& m_Descriptor;
    std::unique_ptr<void, void (*)(void*)> m_Instance;
};

} // namespace test
