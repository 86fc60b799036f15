#include "host/effects/plugin.h"

#include <dlfcn.h>

#include "aveffect/base_tools.h"
#include "host/support/error.h"
#include "host/support/error_record.h"

namespace aveffect {

namespace {

constexpr char kPluginFile[] = "libAVEffect.so";

/// The loader's reason, without the path that it puts in front.
std::string LoaderReason(const std::string& path) {
    const char* text = dlerror();
    const std::string reason = text != nullptr ? text : "unknown reason";
    const std::string prefix = path + ": ";
    return reason.starts_with(prefix) ? reason.substr(prefix.size()) : reason;
}

template <typename Function>
Function* FindFactory(void* library, const char* name, const std::string& path) {
    void* const address = dlsym(library, name);
    if (address == nullptr)
        throw Error(ErrorKind::Effect, "'" + path + "' is no effect plug-in: " + LoaderReason(path));
    return reinterpret_cast<Function*>(address);
}

template <typename Interface>
Interface* Make(Interface* (*create)(AVBased::IAVManager*, const char*), AVBased::IAVManager* manager,
                const std::string& name) {
    GetBaseException()->Clear();
    Interface* const proc = create(manager, name.c_str());
    if (proc == nullptr)
        ThrowRecorded(ErrorKind::Effect, "can't make effect '" + name + "': ", "no reason given");
    return proc;
}

} // namespace

std::filesystem::path ExecutableDirectory() {
    std::error_code failure;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (failure)
        throw Error(ErrorKind::Effect, "can't find the program's own directory: " + failure.message());
    return program.parent_path();
}

Plugin::Plugin(const std::filesystem::path& directory) {
    const std::string path = (directory / kPluginFile).string();
    m_library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_library == nullptr)
        throw Error(ErrorKind::Effect, "can't load the plug-in '" + path + "': " + LoaderReason(path));
    try {
        m_createVideo = FindFactory<decltype(CreateVideoProc)>(m_library, "CreateVideoProc", path);
        m_createAudio = FindFactory<decltype(CreateAudioProc)>(m_library, "CreateAudioProc", path);
    } catch (...) {
        dlclose(m_library);
        throw;
    }
}

Plugin::~Plugin() { dlclose(m_library); }

VideoProcPtr Plugin::MakeVideo(AVBased::IAVManager* manager, const std::string& name) const {
    return VideoProcPtr(Make(m_createVideo, manager, name));
}

AudioProcPtr Plugin::MakeAudio(AVBased::IAVManager* manager, const std::string& name) const {
    return AudioProcPtr(Make(m_createAudio, manager, name));
}

} // namespace aveffect
