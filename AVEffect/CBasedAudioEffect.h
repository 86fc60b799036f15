#pragma once
/// The base of audio effects: checks, the copy for out-of-place work, the error boundary and "duration".
#include "AVEffect/CProcessor.h"

namespace AVBased {

class CBasedAudioEffect : public CProcessor<IAudioProc> {
public:
    /// With the name and the properties of its row.
    explicit CBasedAudioEffect(const EffectInfo& effect)
        : CBasedAudioEffect(effect.name) {
        AddProperties(effect);
    }
    /// Without a row: "duration" is its only property.
    explicit CBasedAudioEffect(const char* name);

    // The last output frame is not released here: it is left to the host, which received it from ProcFrame.
    // What no host received goes.
    ~CBasedAudioEffect() override;

    bool Seek(long long position) override;
    int GetDuration() override { return m_nDuration; }
    IRawAudioFrame* ProcFrame(IRawAudioFrame* frame) override;
    void ProcFrameInPlace(IRawAudioFrame* frame) override;

    /// Changes the frame, which is not null.
    virtual void InnerProcFrame(IRawAudioFrame* frame) = 0;

protected:
    int m_nDuration;
    // The copy that the last ProcFrame worked on, also one whose work failed. Released by the next one.
    IRawAudioFrame* m_pCurFrame = nullptr;

private:
    bool m_bHandedOut = false; // the host has that copy
};

} // namespace AVBased
