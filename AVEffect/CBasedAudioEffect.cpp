#include "AVEffect/CBasedAudioEffect.h"

#include <cassert>
#include <memory>
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
    AddCataloguedProperties(name);
}

bool CBasedAudioEffect::Seek(long long) { return true; }

IRawAudioFrame* CBasedAudioEffect::ProcFrame(IRawAudioFrame* frame) {
    return Guarded(nullptr, [&] {
        if (!frame) Raise(kBadPointer, "Bad pointer");
        if (IRawAudioFrame* previous = std::exchange(m_pCurFrame, nullptr)) previous->Release();
        m_pCurFrame = frame->Clone();
        assert(m_pCurFrame);
        // Should the effect fail, nobody would receive the copy.
        const auto giveUp = [this](IRawAudioFrame* copy) {
            m_pCurFrame = nullptr;
            Releaser()(copy);
        };
        std::unique_ptr<IRawAudioFrame, decltype(giveUp)> unfinished(m_pCurFrame, giveUp);
        InnerProcFrame(m_pCurFrame);
        return unfinished.release();
    });
}

void CBasedAudioEffect::ProcFrameInPlace(IRawAudioFrame* frame) {
    Guarded([&] {
        if (!frame) Raise(kBadPointer, "Bad pointer");
        InnerProcFrame(frame);
    });
}

} // namespace AVBased
