#pragma once
/// A worker thread with an exit code and an error of its own.
#include <atomic>
#include <pthread.h>

#include "BaseTools/CBaseException.h"

namespace BaseTool {

/// As an exit code: it ended by an exception, or in a way that gave none.
inline constexpr unsigned kNoExitCode = 0xFFFFFFFF;

/// Polls done() every 10 ms while 10 x k < timeout (in milliseconds, kWaitForever for no limit); what it is
/// at last.
bool PollUntil(const std::atomic<bool>& done, unsigned timeout);

/// Derive, write ThreadProc(), call Resume(). The body works on the derived object, so a derived class waits
/// for it in its own destructor; this class's joins what still runs, for good when the thread was never
/// resumed.
class CBaseToolThread {
public:
    /// Starts the thread, suspended. Throws CBaseException 10021008 "Unexpected error".
    CBaseToolThread();
    virtual ~CBaseToolThread();
    CBaseToolThread(const CBaseToolThread&) = delete;
    CBaseToolThread& operator=(const CBaseToolThread&) = delete;

    /// Both count until the body starts, which it does once it finds the thread not suspended.
    void Suspend() { m_bSuspended = true; }
    void Resume() { m_bSuspended = false; }
    bool IsSuspended() const { return m_bSuspended; }

    pthread_t GetThreadHandle() const { return m_hThread; }

    /// The error that the thread's record held when the body ended; code 0 for none. Meant for afterwards.
    CBaseException& GetThreadException() { return m_Exception; }

    /// 1 when the body has ended, else 0. The timeout is in milliseconds, 0xFFFFFFFF for none.
    int Wait(unsigned timeout);

    /// False while the body has not ended.
    bool GetExitCode(unsigned& code) const;

protected:
    /// The body; what it returns is the exit code. An exception goes into the thread's record and makes the
    /// exit code 0xFFFFFFFF.
    virtual unsigned ThreadProc() = 0;

private:
    static void* Run(void* thread);

    CBaseException m_Exception;
    std::atomic<bool> m_bSuspended = true;
    std::atomic<bool> m_bEnded = false; // written last by the thread: what it left behind is readable then
    unsigned m_nExitCode = 0;
    pthread_t m_hThread{};
};

} // namespace BaseTool
