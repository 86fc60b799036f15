#pragma once
/// The command line: what was asked for, and the host's options made from it.
#include <string>
#include <variant>
#include <vector>

#include "cli/progress.h"
#include "host/render.h"

namespace aveffect {

/// Something to print and be done: help or the version.
struct TextCommand {
    std::string text;
};

struct ListCommand {
    bool json = false;
};

struct DescribeCommand {
    std::string effect;
    bool json = false;
};

/// What `render` and `frame` have in common. Values are as they were written.
struct MediaArguments {
    std::string input;
    std::string output;
    std::vector<std::string> effects;
    std::string pixelFormat = "auto";
    std::string cpuLevel = "auto";
    bool lenient = false;
    bool overwrite = false;
    int verbosity = 0; ///< how often -v was given
};

struct RenderCommand {
    MediaArguments media;
    std::optional<std::string> from, to, frames, crf, threads;
    std::string codec;
    std::string preset;
    ProgressStyle progress = ProgressStyle::Auto;
};

struct FrameCommand {
    MediaArguments media;
    std::string at = "0";
};

using Command = std::variant<TextCommand, ListCommand, DescribeCommand, RenderCommand, FrameCommand>;

/// Throws Error (Usage) with one line that says what is wrong.
Command ParseCommandLine(int count, const char* const* arguments);

/// Check and translate the values. Throw Error (Usage) that names the option, the value and what would be
/// right.
RenderOptions MakeRenderOptions(const RenderCommand& command);
FrameOptions MakeFrameOptions(const FrameCommand& command);

/// Limits the instructions that effects use, before they are made: auto, sse2, avx2 or avx512. Returns a
/// warning when the processor lacks the level and a lower one is used, else an empty text. Throws Error
/// (Usage).
std::string ApplyCpuLevel(const std::string& level);

} // namespace aveffect
