#pragma once
/// Locks and the event, thin layers over POSIX threads. Timeouts are in milliseconds.
#include <pthread.h>

namespace BaseTool {

/// As a timeout: wait as long as it takes.
inline constexpr unsigned kWaitForever = 0xFFFFFFFF;

/// All that polls looks again after so long.
inline constexpr unsigned kPollMilliseconds = 10;

/// Sleeps for one such step.
void SleepOnePoll() noexcept;

/// A recursive mutex. An error of the system, such as an Unlock() by a thread that does not hold it, fails an
/// assertion.
class CXMutex {
public:
    CXMutex();
    virtual ~CXMutex();
    CXMutex(const CXMutex&) = delete;
    CXMutex& operator=(const CXMutex&) = delete;

    /// With kWaitForever blocks. Any other timeout makes one attempt every 10 ms, ceil((timeout + 1) / 10) in
    /// all, and waits after each; false after the last.
    bool Lock(unsigned timeout);
    /// Returns true.
    bool Unlock();

private:
    pthread_mutex_t m_Mutex;
    pthread_mutexattr_t m_Attributes;
};

/// A new CXMutex behind an opaque pointer, released with delete_critical. All the others throw CBaseException
/// 10021003 "Bad pointer" for null.
void* init_critical();
void delete_critical(void* critical);
void enter_critical(void* critical);
void leave_critical(void* critical);

/// Gives back a critical section that its owner has entered; does nothing for null. An exception ends the
/// program.
class CCriticalAutoLock {
public:
    explicit CCriticalAutoLock(void* critical) noexcept
        : m_pCritical(critical) {}
    ~CCriticalAutoLock() {
        if (m_pCritical) leave_critical(m_pCritical);
    }
    CCriticalAutoLock(const CCriticalAutoLock&) = delete;
    CCriticalAutoLock& operator=(const CCriticalAutoLock&) = delete;

private:
    void* m_pCritical;
};

/// Something that happens, and that threads wait for.
class CXEvent {
public:
    /// An auto-reset event is reset by the thread that its Wait() lets through. Throws CBaseException.
    CXEvent(bool autoReset, bool initialState);
    ~CXEvent();
    CXEvent(const CXEvent&) = delete;
    CXEvent& operator=(const CXEvent&) = delete;

    void Set();
    void Reset();

    /// True when the event is or becomes signalled; every wake-up counts, its cause is not looked into.
    ///
    /// A timeout in milliseconds asks once: it is handed on as a point in time near the epoch, so that an
    /// event that is not signalled gives false at once. Its lock then stays with the calling thread, and
    /// nobody can use the event any more.
    bool Wait(unsigned timeout);

private:
    bool m_bAutoReset;
    bool m_bSignalled;
    pthread_mutex_t m_Mutex;
    pthread_cond_t m_Condition;
};

} // namespace BaseTool
