#pragma once
/// What a render tells whoever asked for it.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace aveffect {

struct RenderProgress {
    int64_t framesDone = 0;
    std::optional<int64_t> framesExpected; ///< absent when the input does not tell
    double secondsElapsed = 0;
    double framesPerSecond = 0;
    std::optional<double> secondsLeft;
};

/// Told what happens, from the pipeline's threads, one call at a time.
struct RenderObserver {
    std::function<void(const RenderProgress&)> progress; ///< several times a second and once at the end
    std::function<void(const std::string&)>
        note; ///< a detail for the curious: the working format, for example
    std::function<void(const std::string&)> warning; ///< something the user should know
    std::function<void(const std::string&)> remark;  ///< what was chosen for the user; nothing is wrong
};

} // namespace aveffect
