#include "adapters/frei0r/effect_plugin.h"

#include <dlfcn.h>

#include <stdexcept>

#include "adapters/frei0r/notices.h"
#include "adapters/support/plugin_place.h"

namespace aveffect::frei0r {
namespace {

namespace fs = std::filesystem;

constexpr char kPluginFile[] = "libAVEffect.so";

void* Load(const fs::path& file) {
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(dlerror());
    return library;
}

template <typename Function>
Function* Find(void* library, const char* name) {
    void* const address = dlsym(library, name);
    if (!address) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function*>(address);
}

} // namespace

EffectPlugin::EffectPlugin() {
    const fs::path directory = adapters::PluginDirectory();
    void* const plugin = Load(directory / kPluginFile);
    m_createVideo = Find<decltype(CreateVideoProc)>(plugin, "CreateVideoProc");
    m_getRecord = Find<decltype(GetBaseException)>(Load(directory / "libAVBaseTools.so"), "GetBaseException");
}

const EffectPlugin* EffectPlugin::Get() {
    static const EffectPlugin* const plugin = []() -> const EffectPlugin* {
        try {
            return new EffectPlugin;
        } catch (const std::exception& failure) {
            SayOnce("the effects can't be loaded, so pictures are passed on", failure.what());
            return nullptr;
        }
    }();
    return plugin;
}

} // namespace aveffect::frei0r
