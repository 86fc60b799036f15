#pragma once
/// The base of audio effects: checks, the copy for out-of-place work, the error boundary and "duration".
#include <string>

#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"

namespace AVBased {

class CBasedAudioEffect : public CBaseAVProc, public IAudioProc {
public:
    /// Registers the catalogue's properties under the effect's name.
    explicit CBasedAudioEffect(const char* name);

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

    // The last output frame is not released here: it is left to the host, which received it from ProcFrame.
    ~CBasedAudioEffect() override = default;

    void OnSetProperty(const std::string& name, PropertyNode& node) override;

    bool Seek(long long position) override;
    int GetDuration() override { return m_nDuration; }
    IRawAudioFrame* ProcFrame(IRawAudioFrame* frame) override;
    void ProcFrameInPlace(IRawAudioFrame* frame) override;

    /// Changes the frame, which is not null.
    virtual void InnerProcFrame(IRawAudioFrame* frame) = 0;

protected:
    using CBaseAVProc::GetProperty;

    int m_nDuration = 1;
    IRawAudioFrame* m_pCurFrame = nullptr; // what the last ProcFrame returned; released by the next one
};

} // namespace AVBased
