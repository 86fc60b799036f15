#pragma once
/// Loads the plug-in and makes processors.
#include <filesystem>
#include <memory>
#include <string>

#include "aveffect/plugin.h"

namespace aveffect {

struct ProcFree {
    void operator()(AVBased::IAVProc* proc) const noexcept { proc->Free(); }
};
using VideoProcPtr = std::unique_ptr<AVBased::IVideoProc, ProcFree>;
using AudioProcPtr = std::unique_ptr<AVBased::IAudioProc, ProcFree>;

/// The directory of the running executable, symbolic links resolved.
std::filesystem::path ExecutableDirectory();

/// libAVEffect.so, loaded for the life of this object. Outlives every processor made from it.
class Plugin {
public:
    /// Loads from a directory. Throws Error (Effect) that names the file and the reason.
    explicit Plugin(const std::filesystem::path& directory = ExecutableDirectory());
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    /// Throw Error (Effect) with the record's text when the factory returns null.
    VideoProcPtr MakeVideo(AVBased::IAVManager* manager, const std::string& name) const;
    AudioProcPtr MakeAudio(AVBased::IAVManager* manager, const std::string& name) const;

private:
    void* m_library = nullptr;
    decltype(&CreateVideoProc) m_createVideo = nullptr;
    decltype(&CreateAudioProc) m_createAudio = nullptr;
};

} // namespace aveffect
