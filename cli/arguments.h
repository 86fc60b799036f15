#pragma once
/// The command line: what was asked for, and the host's options made from it.
#include <string>
#include <variant>
#include <vector>

#include "cli/compare_arguments.h"
#include "cli/farm_arguments.h"
#include "cli/film_arguments.h"
#include "cli/output_arguments.h"
#include "cli/progress.h"
#include "cli/run_arguments.h"
#include "cli/studio_arguments.h"
#include "cli/timeline_arguments.h"
#include "host/jobs/batch.h"
#include "host/jobs/render.h"

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
    std::string output, format;
    std::vector<std::string> effects;
    std::string pixelFormat = "auto";
    bool lenient = false;
    bool sdr = false, strip = false;
    StreamArguments streams;
    RunArguments run;
};

/// Where a second view comes from.
struct StereoArguments {
    std::string right;
    std::string layout;
};

struct RenderCommand {
    MediaArguments media;
    StereoArguments stereo;
    std::vector<std::string> audioEffects;
    std::optional<std::string> from, to, frames;
    bool restart = false;
    EncoderArguments encoder;
    FramingArguments framing;
    std::optional<std::string> fps;
    ProgressStyle progress = ProgressStyle::Auto;
};

struct FrameCommand {
    MediaArguments media;
    StereoArguments stereo;
    std::string at = "0";
    QualityArguments quality;
    FramingArguments framing;
};

/// Many files through the effects of one render, whose input and output are empty.
struct BatchCommand {
    RenderCommand render;
    std::vector<std::string> inputs;
    std::string directory, extension;
    std::optional<std::string> workers;
    bool skipExisting = false, json = false;
};

/// The render that is played has no output.
struct PlayCommand {
    RenderCommand render;
};

using Command =
    std::variant<TextCommand, ListCommand, DescribeCommand, RenderCommand, FrameCommand, TransitionCommand,
                 JoinCommand, SheetCommand, CompareCommand, BatchCommand, PlayCommand, TimelineCommand,
                 PlanCommand, WorkCommand, FinishCommand, StatusCommand, StudioCommand>;

/// Throws Error (Usage) with one line that says what is wrong.
Command ParseCommandLine(int count, const char* const* arguments);

/// Check and translate the values. Throw Error (Usage) that names the option, the value and what would be
/// right.
RenderOptions MakeRenderOptions(const RenderCommand& command);
FrameOptions MakeFrameOptions(const FrameCommand& command);
BatchOptions MakeBatchOptions(const BatchCommand& command);

} // namespace aveffect
