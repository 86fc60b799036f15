#include "BaseTools/thread.h"

#include <cstdint>

#include "BaseTools/guarded.h"
#include "BaseTools/synchronisation.h"

namespace BaseTool {

bool PollUntil(const std::atomic<bool>& done, unsigned timeout) {
    for (uint64_t waited = 0; timeout == kWaitForever || waited < timeout; waited += kPollMilliseconds) {
        if (done) return true;
        SleepOnePoll();
    }
    return done;
}

CBaseToolThread::CBaseToolThread()
    : m_Exception(AVBased::kNoError, nullptr, 0, nullptr) {
    if (pthread_create(&m_hThread, nullptr, &CBaseToolThread::Run, this) != 0)
        Raise(AVBased::kUnknownException, "Unexpected error");
}

CBaseToolThread::~CBaseToolThread() { pthread_join(m_hThread, nullptr); }

void* CBaseToolThread::Run(void* thread) {
    auto& self = *static_cast<CBaseToolThread*>(thread);
    while (self.m_bSuspended) SleepOnePoll();
    const unsigned code = Guarded(kNoExitCode, [&] { return self.ThreadProc(); });
    self.m_Exception.Copy(GetBaseException());
    ReleaseBaseException();
    self.m_nExitCode = code;
    self.m_bEnded = true;
    return nullptr;
}

int CBaseToolThread::Wait(unsigned timeout) { return PollUntil(m_bEnded, timeout) ? 1 : 0; }

bool CBaseToolThread::GetExitCode(unsigned& code) const {
    if (!m_bEnded) return false;
    code = m_nExitCode;
    return true;
}

} // namespace BaseTool
