#include "BaseTools/synchronisation.h"

#include <cassert>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <string>
#include <unistd.h>

#include "BaseTools/sysutils.h"

namespace BaseTool {

namespace {

constexpr unsigned kMicrosecondsPerMillisecond = 1000;
constexpr unsigned kMillisecondsPerSecond = 1000;
constexpr long kNanosecondsPerMillisecond = 1'000'000;

CXMutex& RequireMutex(void* critical) {
    if (!critical) Raise(AVBased::kBadPointer, "Bad pointer");
    return *static_cast<CXMutex*>(critical);
}

void RequireSuccess(const char* operation, int error) {
    if (error != 0)
        Raise(AVBased::kUnknownException, std::string(operation) + ": errno: " + std::to_string(error));
}

} // namespace

void SleepOnePoll() noexcept { usleep(kPollMilliseconds * kMicrosecondsPerMillisecond); }

CXMutex::CXMutex() {
    if (pthread_mutexattr_init(&m_Attributes) != 0) assert(false);
    if (pthread_mutexattr_settype(&m_Attributes, PTHREAD_MUTEX_RECURSIVE) != 0) assert(false);
    if (pthread_mutex_init(&m_Mutex, &m_Attributes) != 0) assert(false);
}

CXMutex::~CXMutex() {
    pthread_mutex_destroy(&m_Mutex);
    pthread_mutexattr_destroy(&m_Attributes);
}

bool CXMutex::Lock(unsigned timeout) {
    if (timeout == kWaitForever) {
        const int err = pthread_mutex_lock(&m_Mutex);
        if (err == 0) return true;
        assert(err != EINVAL);
        debug_print("pthread_mutex_lock failed: %d\n", err);
        assert(false);
    }
    for (uint64_t waited = 0; waited < uint64_t{timeout} + 1; waited += kPollMilliseconds) {
        const int err = pthread_mutex_trylock(&m_Mutex);
        if (err == 0) return true;
        if (err != EBUSY) assert(false);
        SleepOnePoll();
    }
    return false;
}

bool CXMutex::Unlock() {
    if (pthread_mutex_unlock(&m_Mutex) != 0) assert(false);
    return true;
}

void* init_critical() { return new CXMutex; }

void delete_critical(void* critical) { delete &RequireMutex(critical); }

void enter_critical(void* critical) {
    if (!RequireMutex(critical).Lock(kWaitForever)) assert(false);
}

void leave_critical(void* critical) { RequireMutex(critical).Unlock(); }

CXEvent::CXEvent(bool autoReset, bool initialState)
    : m_bAutoReset(autoReset)
    , m_bSignalled(initialState) {
    RequireSuccess("pthread_mutex_init", pthread_mutex_init(&m_Mutex, nullptr));
    const int error = pthread_cond_init(&m_Condition, nullptr);
    if (error != 0) pthread_mutex_destroy(&m_Mutex);
    RequireSuccess("pthread_cond_init", error);
}

CXEvent::~CXEvent() {
    pthread_cond_destroy(&m_Condition);
    pthread_mutex_destroy(&m_Mutex);
}

void CXEvent::Set() {
    pthread_mutex_lock(&m_Mutex);
    m_bSignalled = true;
    pthread_cond_broadcast(&m_Condition);
    pthread_mutex_unlock(&m_Mutex);
}

void CXEvent::Reset() {
    pthread_mutex_lock(&m_Mutex);
    m_bSignalled = false;
    pthread_mutex_unlock(&m_Mutex);
}

bool CXEvent::Wait(unsigned timeout) {
    pthread_mutex_lock(&m_Mutex);
    if (!m_bSignalled) {
        if (timeout == kWaitForever) {
            pthread_cond_wait(&m_Condition, &m_Mutex);
        } else {
            const timespec deadline = {static_cast<time_t>(timeout / kMillisecondsPerSecond),
                                       (timeout % kMillisecondsPerSecond) * kNanosecondsPerMillisecond};
            // The lock is kept: see the declaration.
            if (pthread_cond_timedwait(&m_Condition, &m_Mutex, &deadline) == ETIMEDOUT) return false;
        }
    }
    if (m_bAutoReset) m_bSignalled = false;
    pthread_mutex_unlock(&m_Mutex);
    return true;
}

} // namespace BaseTool
