#pragma once
/// The plug-in and the record of errors, as modules have them.
#include <memory>
#include <string>

#include "aveffect/base_tools.h"
#include "aveffect/plugin.h"

namespace aveffect::frei0r {

struct ProcFree {
    void operator()(AVBased::IAVProc* proc) const noexcept { proc->Free(); }
};
using VideoProcPtr = std::unique_ptr<AVBased::IVideoProc, ProcFree>;

/// libAVEffect.so with its companions, loaded for the life of the process: hosts load and unload modules
/// while they look for them.
class EffectPlugin {
public:
    /// Loaded by the first call, by the way from this library's own file. Null when that failed, of which one
    /// line has been written then. Safe from any thread.
    static const EffectPlugin* Get();

    /// Null with an error recorded when there is no such effect.
    VideoProcPtr Make(AVBased::IAVManager* manager, const char* name) const {
        return VideoProcPtr(m_createVideo(manager, name));
    }
    /// The calling thread's.
    IBaseException& Record() const { return *m_getRecord(); }

private:
    decltype(&CreateVideoProc) m_createVideo = nullptr;
    decltype(&GetBaseException) m_getRecord = nullptr;

    EffectPlugin();
};

} // namespace aveffect::frei0r
