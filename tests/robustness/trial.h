#pragma once
/// A processor and its twin at work, watched: what they must not touch, whether they come back, do the same
/// and leave nothing behind. Findings come as text, which is empty when there are none.
#include <signal.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "aveffect/base_tools.h"
#include "tests/memory/allocation_count.h"
#include "tests/support/feature_mask.h"
#include "tests/support/host_frame.h"
#include "tests/support/host_manager.h"
#include "tests/support/host_sound.h"
#include "tests/support/plugin.h"

namespace test {

/// What is under way, for those who must say so when a call does not come back.
inline std::string underWay;

/// Of the machine's time, which may have much else to do; 0: others watch it.
inline unsigned secondsPerCall = 60;

/// From now on deaths of this program say what was under way, and leave the rest to who would have had the
/// signal: a sanitizer, the system.
inline void ListenForDeaths() {
    static constexpr std::array kDeaths = {SIGALRM, SIGSEGV, SIGBUS, SIGFPE, SIGABRT};
    static std::array<struct sigaction, kDeaths.size()> before;
    static const bool once = [] {
        struct sigaction tell {};
        tell.sa_handler = [](int signal) {
            const std::string_view what = signal == SIGALRM ? "took too long: " : "died: ";
            for (const std::string_view text : {what, std::string_view(underWay), std::string_view("\n")}) {
                [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
            }
            for (size_t i = 0; i < kDeaths.size(); ++i)
                if (kDeaths[i] == signal) sigaction(signal, &before[i], nullptr);
            if (signal == SIGALRM || signal == SIGABRT) raise(signal);
        };
        for (size_t i = 0; i < kDeaths.size(); ++i) sigaction(kDeaths[i], &tell, &before[i]);
        return true;
    }();
    static_cast<void>(once);
}

/// The kinds of processors, as one.
template <class Media>
struct Kind;
template <>
struct Kind<HostFrame> {
    using Proc = AVBased::IVideoProc;
    static HostFrame* Copied(Proc& proc, HostFrame& frame, int time) {
        AVBased::ImagePostion position{};
        return static_cast<HostFrame*>(proc.ProcFrame(&position, time, &frame));
    }
    static void InPlace(Proc& proc, HostFrame& frame, int time) { Run(proc, frame, time); }
    static constexpr bool kLeavesLastCopy = false;
    static Proc* Create(const char* name, AVBased::IAVManager* manager = Sources()) {
        return CreateVideo(name, manager);
    }
};
template <>
struct Kind<HostSound> {
    using Proc = AVBased::IAudioProc;
    static HostSound* Copied(Proc& proc, HostSound& sound, int) {
        return static_cast<HostSound*>(proc.ProcFrame(&sound));
    }
    static void InPlace(Proc& proc, HostSound& sound, int) { proc.ProcFrameInPlace(&sound); }
    static constexpr bool kLeavesLastCopy = true; ///< to the host, when its processor is gone
    static Proc* Create(const char* name, AVBased::IAVManager* manager = Sources()) {
        return CreateAudio(name, manager);
    }
};

/// A processor as a host holds it, with the last copy that it gave.
template <class Media>
class Held {
public:
    using Proc = typename Kind<Media>::Proc;

    explicit Held(Proc* proc)
        : m_Proc(proc) {}
    ~Held() {
        m_Proc.reset();
        if (Kind<Media>::kLeavesLastCopy) delete m_Copy;
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    Proc* operator->() const { return m_Proc.get(); }
    explicit operator bool() const { return m_Proc != nullptr; }
    /// The frame that was worked on: itself, a copy, or null.
    Media* Process(Media& frame, int time, bool inPlace) {
        if (!inPlace) return m_Copy = Kind<Media>::Copied(*m_Proc, frame, time);
        Kind<Media>::InPlace(*m_Proc, frame, time);
        return &frame;
    }

private:
    std::unique_ptr<Proc, ProcFree> m_Proc;
    Media* m_Copy = nullptr;
};

template <class Media>
class Trial {
public:
    /// The twin is made and run with features of the machine hidden.
    Trial(const std::function<typename Kind<Media>::Proc*()>& make, unsigned mask)
        : m_Mask(mask)
        , m_Proc(make())
        , m_Twin([&] {
            const FeatureMask hidden(mask);
            return make();
        }()) {}

    /// Lets both do something that is no frame.
    template <class Body>
    void Both(Body body) {
        body(*m_Proc.operator->());
        body(*m_Twin.operator->());
    }
    typename Kind<Media>::Proc& Proc() { return *m_Proc.operator->(); }

    std::string Run(const Media& original, int time, bool inPlace, bool comparable) {
        const auto frame = std::make_unique<Media>(original), other = std::make_unique<Media>(original);
        if (secondsPerCall) alarm(secondsPerCall);
        const Media* const result = m_Proc.Process(*frame, time, inPlace);
        const FeatureMask hidden(m_Mask);
        const Media* const twins = m_Twin.Process(*other, time, inPlace);
        if (secondsPerCall) alarm(0);
        if (!inPlace && !(*frame == original)) return "the host's frame was changed";
        if (!result != !twins) return "only some levels fail";
        if (comparable && result && !(*result == *twins)) return "levels differ";
        return {};
    }

private:
    unsigned m_Mask;
    Held<Media> m_Proc, m_Twin;
};

/// Blocks of memory in use; the sanitizers count them themselves.
inline size_t BlocksInUse() {
#ifdef AVEFFECT_COUNTS_BLOCKS
    return LiveBlocks();
#else
    return 0;
#endif
}

/// Lives once, and once more where blocks are left: what is made once for the whole process is no leak.
inline std::string LeftBehind(const std::function<void()>& live) {
    for (const bool again : {false, true}) {
        ReleaseBaseException();
        const int readers = Sources()->readers, media = HostMedia::alive; // Sources() makes some
        const size_t blocks = BlocksInUse();
        live();
        ReleaseBaseException();
        if (HostMedia::alive != media) return "frames are left behind";
        if (Sources()->readers != readers) return "readers are left behind";
        if (BlocksInUse() == blocks) break;
        if (again) return "memory is left behind";
    }
    return {};
}

} // namespace test
