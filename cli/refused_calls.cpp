#include "cli/refused_calls.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>

#include "cli/interruption.h"

namespace aveffect {

#ifdef AVEFFECT_HAS_SANITIZERS
bool SeesRefusals() noexcept { return false; }
} // namespace aveffect
#else
bool SeesRefusals() noexcept { return true; }

namespace {

/// What a call would have reached. Looked up by the first one, before anything of ours is set up.
template <class Result, class... Arguments>
class Next {
public:
    Result Call(const char* name, Arguments... arguments) noexcept {
        void* found = m_found.load(std::memory_order_relaxed);
        if (!found) m_found.store(found = dlsym(RTLD_NEXT, name), std::memory_order_relaxed);
        return reinterpret_cast<Result (*)(Arguments...)>(found)(arguments...);
    }

private:
    std::atomic<void*> m_found = nullptr;
};

constinit Next<int, void**, size_t, size_t> nextAligned;
constinit Next<void*, void*, size_t> nextMoved;
constinit Next<int, pthread_t*, const pthread_attr_t*, void* (*)(void*), void*> nextThread;

} // namespace
} // namespace aveffect

// Programs come before libraries where names are looked up: the media libraries' calls come here.
extern "C" {

__attribute__((visibility("default"))) int posix_memalign(void** memory, size_t alignment,
                                                          size_t bytes) noexcept {
    const int code = aveffect::nextAligned.Call("posix_memalign", memory, alignment, bytes);
    if (code != 0) aveffect::NoteRefusal();
    return code;
}

__attribute__((visibility("default"))) void* realloc(void* memory, size_t bytes) noexcept {
    void* const moved = aveffect::nextMoved.Call("realloc", memory, bytes);
    if (!moved && bytes != 0) aveffect::NoteRefusal();
    return moved;
}

__attribute__((visibility("default"))) int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                                          void* (*start)(void*), void* argument) noexcept {
    const int code = aveffect::nextThread.Call("pthread_create", thread, attributes, start, argument);
    if (code != 0) aveffect::NoteRefusal();
    return code;
}
}
#endif
