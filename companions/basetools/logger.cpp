/// The process's logger: one line of standard error a message.
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <new>
#include <string>
#include <unistd.h>

#include "aveffect/base_tools.h"

namespace {

constexpr int kWarning = 2;
std::atomic<int> g_level{kWarning};

/// One write a line, so that lines of different threads never mix; more only when the system takes less.
void WriteWhole(const std::string& line) {
    std::size_t done = 0;
    while (done < line.size()) {
        const ssize_t written = write(STDERR_FILENO, line.data() + done, line.size() - done);
        if (written > 0)
            done += static_cast<std::size_t>(written);
        else if (written == 0 || errno != EINTR)
            return;
    }
}

class Logger final : public IBaseLogger {
public:
    void Write(int level, const char* source, const char* message, int, int) override {
        if (level < g_level.load(std::memory_order_relaxed)) return;
        static constexpr std::array<const char*, 4> kNames = {"debug", "info", "warning", "error"};
        const auto name = static_cast<std::size_t>(std::clamp(level, 0, 3));
        try {
            std::string line = std::string("aveffect: ") + kNames[name] + ": ";
            if (source && *source) line += std::string(source) + ": ";
            line += message ? message : "";
            std::ranges::replace(line, '\n', ' ');
            WriteWhole(line + '\n');
        } catch (const std::bad_alloc&) {
            static const std::string kNoMemory = "aveffect: error: no memory for a message\n";
            WriteWhole(kNoMemory);
        }
    }
};

Logger g_logger;

} // namespace

IBaseLogger* GetBaseLogger() { return &g_logger; }

void AVBasedSetLogLevel(int level) { g_level.store(level, std::memory_order_relaxed); }
