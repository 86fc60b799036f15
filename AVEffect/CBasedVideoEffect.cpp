#include "AVEffect/CBasedVideoEffect.h"

#include <cassert>
#include <utility>

#include "BaseTools/guarded.h"
#include "avbase/avbase_srcutils/holders.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;

namespace {

constexpr unsigned kTypeVideo = 1;

void CheckArguments(const ImagePostion* position, const IRawVideoFrame* frame) {
    if (!position || !frame) Raise(kBadPointer, "Bad pointer");
}

} // namespace

CBasedVideoEffect::CBasedVideoEffect(const char* name, unsigned subType)
    : CProcessor(name, kTypeVideo, subType, IVideoProcName) {
    Bind(PROP_NAME_DURATION, &m_nDuration);
}

bool CBasedVideoEffect::Seek(unsigned int) { return true; }

IRawVideoFrame* CBasedVideoEffect::ProcFrame(ImagePostion*, int, IRawVideoFrame*) { return nullptr; }

void CBasedVideoEffect::ProcFrameInPlace(ImagePostion*, int, IRawVideoFrame*) {}

void CBasedVideoEffect::BlendFrame(const ImagePostion*, int, IRawVideoFrame*, IRawVideoFrame*) {}

void CBasedVideoMotionXYEffect::ProcFrameInPlace(ImagePostion* position, int time, IRawVideoFrame* frame) {
    Guarded([&] {
        CheckArguments(position, frame);
        InnerProcFrameInPlace(position, time, frame);
    });
}

CBasedVideoImageEffect::CBasedVideoImageEffect(const EffectInfo& effect, const char* name)
    : CBasedVideoEffect(name, kSubTypeImage) {
    AddProperties(effect);
}

CBasedVideoImageEffect::~CBasedVideoImageEffect() { const FramePtr last(m_pCurFrame); }

IRawVideoFrame* CBasedVideoImageEffect::ProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) {
    return Guarded(nullptr, [&] {
        CheckArguments(position, frame);
        // Emptied before the old frame goes and the new one comes: whichever of the two throws, nothing is
        // freed twice.
        if (IRawVideoFrame* previous = std::exchange(m_pCurFrame, nullptr)) previous->Free();
        m_pCurFrame = frame->Clone();
        assert(m_pCurFrame);
        InnerProcFrame(position, time, m_pCurFrame);
        return m_pCurFrame;
    });
}

void CBasedVideoImageEffect::ProcFrameInPlace(ImagePostion* position, int time, IRawVideoFrame* frame) {
    Guarded([&] {
        CheckArguments(position, frame);
        InnerProcFrame(position, time, frame);
    });
}

IRawVideoFrame* CBasedVideoMotionSizingEffect::ProcFrame(ImagePostion*, int, IRawVideoFrame*) {
    assert(false);
    return nullptr;
}

void CBasedVideoBlender::BlendFrame(const ImagePostion*, int, IRawVideoFrame*, IRawVideoFrame*) {
    assert(false);
}

} // namespace AVBased
