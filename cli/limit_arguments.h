#pragma once
/// Options of every command that reads media: how much of the machine it may take, and what of it reach.
#include <cstdint>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace aveffect {

/// Values are as they were written.
struct LimitArguments {
    std::optional<std::string> pixels, memory, timeout;
    bool noSandbox = false;
};

void AddLimitOptions(CLI::App& app, LimitArguments& limits);

/// Sets the limits of this process, for good. Call once, before media are read. Throws Error (Usage).
void ApplyLimits(const LimitArguments& limits);

} // namespace aveffect
