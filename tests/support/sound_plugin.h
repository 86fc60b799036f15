#pragma once
/// The sound effects as LADSPA and LV2 hosts have them: loaded at run time, one channel each.
#include <dlfcn.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "adapters/ladspa/ladspa_interface.h"
#include "adapters/lv2/lv2_interface.h"

namespace test {

enum class Door { Ladspa, Lv2 };
constexpr Door kDoors[] = {Door::Ladspa, Door::Lv2};

/// The effects in their order there, and their controls' ports.
enum SoundEffect : unsigned { kVolumeEffect, kFaderEffect };
constexpr unsigned kFirstControlPort = 2;

template <class Descriptor, class Index>
const Descriptor* SoundDescriptor(const char* file, const char* entry, unsigned effect) {
    void* const module = dlopen((std::string(AVEFFECT_BIN_DIR "/../lib/") + file).c_str(), RTLD_NOW);
    if (!module) throw std::runtime_error(dlerror());
    return reinterpret_cast<const Descriptor* (*)(Index)>(dlsym(module, entry))(static_cast<Index>(effect));
}
inline const AVBased::ladspa::Descriptor* LadspaDescriptor(unsigned effect) {
    return SoundDescriptor<AVBased::ladspa::Descriptor, unsigned long>("ladspa/aveffect.so",
                                                                       "ladspa_descriptor", effect);
}
inline const AVBased::lv2::Descriptor* Lv2Descriptor(unsigned effect) {
    return SoundDescriptor<AVBased::lv2::Descriptor, uint32_t>("lv2/aveffect.lv2/aveffect.so",
                                                               "lv2_descriptor", effect);
}

/// An activated instance with controls of its own.
class SoundPlugin {
public:
    SoundPlugin(Door door, unsigned effect, double rate, std::vector<float> atFirst)
        : controls(std::move(atFirst)) {
        if (door == Door::Ladspa) {
            const auto* descriptor = LadspaDescriptor(effect);
            Bind(*descriptor, descriptor->instantiate(descriptor, static_cast<unsigned long>(rate)));
        } else {
            const auto* descriptor = Lv2Descriptor(effect);
            Bind(*descriptor, descriptor->instantiate(descriptor, rate, "", nullptr));
        }
        if (!m_Instance) return;
        for (unsigned i = 0; i < controls.size(); ++i) Connect(kFirstControlPort + i, &controls[i]);
        Activate();
    }
    SoundPlugin(const SoundPlugin&) = delete;
    SoundPlugin& operator=(const SoundPlugin&) = delete;

    explicit operator bool() const { return m_Instance != nullptr; }
    void Connect(unsigned port, float* place) { m_Connect(port, place); }
    void Activate() { m_Activate(m_Instance.get()); }
    void Run(const float* from, float* to, size_t count) {
        Connect(0, const_cast<float*>(from));
        Connect(1, to);
        m_Run(static_cast<unsigned>(count));
    }

    std::vector<float> controls;

private:
    template <class Descriptor>
    void Bind(const Descriptor& descriptor, void* instance) {
        if (!instance) return;
        m_Instance = {instance, descriptor.cleanup};
        m_Connect = [=](unsigned port, float* place) { descriptor.connectPort(instance, port, place); };
        m_Run = [=](unsigned count) { descriptor.run(instance, count); };
        m_Activate = descriptor.activate;
    }

    std::shared_ptr<void> m_Instance;
    std::function<void(unsigned port, float* place)> m_Connect;
    std::function<void(unsigned count)> m_Run;
    void (*m_Activate)(void*) = nullptr;
};

} // namespace test
