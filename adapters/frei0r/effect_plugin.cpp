#include "adapters/frei0r/effect_plugin.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

#include "adapters/frei0r/notices.h"

namespace aveffect::frei0r {
namespace {

namespace fs = std::filesystem;

constexpr char kPluginFile[] = "libAVEffect.so";

/// Where this library really lies, for people link modules into the folders that hosts look into.
fs::path OwnDirectory() {
    Dl_info info{};
    static const char place = 0;
    if (dladdr(&place, &info) == 0) throw std::runtime_error("the modules' own folder can't be found");
    return fs::canonical(info.dli_fname).parent_path();
}

/// The folder of the plug-in and its companions: where they are installed, and where they are built.
fs::path PluginDirectory() {
    const fs::path above = OwnDirectory().parent_path();
    const fs::path installed = above / "aveffect", built = above.parent_path() / "bin";
    std::error_code failure;
    return !fs::exists(installed, failure) && fs::exists(built / kPluginFile, failure) ? built : installed;
}

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
    const fs::path directory = PluginDirectory();
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
