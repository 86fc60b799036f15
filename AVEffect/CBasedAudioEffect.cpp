#include "AVEffect/CBasedAudioEffect.h"

#include <cassert>
#include <utility>

#include "BaseTools/guarded.h"
#include "avbase/avbase_srcutils/holders.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;

namespace {
constexpr unsigned kTypeAudio = 2;
constexpr unsigned kSubTypeAudio = 2;
} // namespace

CBasedAudioEffect::CBasedAudioEffect(const char* name)
    : CProcessor(name, kTypeAudio, kSubTypeAudio, IAudioProcName) {
    Bind(PROP_NAME_DURATION, &m_nDuration);
}

CBasedAudioEffect::~CBasedAudioEffect() {
    if (m_pCurFrame && !m_bHandedOut) Releaser()(m_pCurFrame);
}

bool CBasedAudioEffect::Seek(long long) { return true; }

IRawAudioFrame* CBasedAudioEffect::ProcFrame(IRawAudioFrame* frame) {
    return Guarded(nullptr, [&] {
        if (!frame) Raise(kBadPointer, "Bad pointer");
        if (IRawAudioFrame* previous = std::exchange(m_pCurFrame, nullptr)) previous->Release();
        m_bHandedOut = false;
        m_pCurFrame = frame->Clone();
        assert(m_pCurFrame);
        InnerProcFrame(m_pCurFrame);
        m_bHandedOut = true;
        return m_pCurFrame;
    });
}

void CBasedAudioEffect::ProcFrameInPlace(IRawAudioFrame* frame) {
    Guarded([&] {
        if (!frame) Raise(kBadPointer, "Bad pointer");
        InnerProcFrame(frame);
    });
}

} // namespace AVBased
