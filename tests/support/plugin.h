#pragma once
/// The plug-in as a host has it: loaded at run time.
#include <dlfcn.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "aveffect/base_tools.h"
#include "aveffect/plugin.h"

namespace test {

struct ProcFree {
    void operator()(AVBased::IAVProc* proc) const { proc->Free(); }
};
using VideoProc = std::unique_ptr<AVBased::IVideoProc, ProcFree>;
using AudioProc = std::unique_ptr<AVBased::IAudioProc, ProcFree>;

template <class Function>
Function LoadPluginFunction(const char* name) {
    static void* const library = dlopen(AVEFFECT_BIN_DIR "/libAVEffect.so", RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function>(dlsym(library, name));
}

inline AVBased::IVideoProc* CreateVideo(const char* name, AVBased::IAVManager* manager = nullptr) {
    return LoadPluginFunction<decltype(&CreateVideoProc)>("CreateVideoProc")(manager, name);
}

inline AVBased::IAudioProc* CreateAudio(const char* name, AVBased::IAVManager* manager = nullptr) {
    return LoadPluginFunction<decltype(&CreateAudioProc)>("CreateAudioProc")(manager, name);
}

using Settings = std::initializer_list<std::pair<const char*, const char*>>;

/// A processor with properties set.
template <class Proc>
Proc WithSettings(Proc proc, const std::string& name, Settings properties) {
    if (!proc) throw std::runtime_error("no effect " + name);
    for (const auto& [property, value] : properties)
        if (!proc->SetProperty(property, value))
            throw std::runtime_error("no property " + std::string(property));
    return proc;
}
inline VideoProc MakeVideo(const std::string& name, Settings properties = {},
                           AVBased::IAVManager* manager = nullptr) {
    return WithSettings(VideoProc(CreateVideo(name.c_str(), manager)), name, properties);
}
inline AudioProc MakeAudio(const std::string& name, Settings properties = {},
                           AVBased::IAVManager* manager = nullptr) {
    return WithSettings(AudioProc(CreateAudio(name.c_str(), manager)), name, properties);
}

/// Effects that serve BGRA and YUV420P alone and report every other format.
inline bool ReportsOtherFormats(std::string_view effect) { return effect == "EffectNameRotate90X"; }

/// One frame through a processor, in place.
inline void Run(AVBased::IVideoProc& proc, AVBased::IRawVideoFrame& frame, int time = 0) {
    AVBased::ImagePostion position{};
    proc.ProcFrameInPlace(&position, time, &frame);
}

} // namespace test
