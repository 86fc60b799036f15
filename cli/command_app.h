#pragma once
/// The commands and options as CLI11 knows them: parsed from a command line, and walked through for manuals
/// and shells' completion.
#include <memory>

#include <CLI/CLI.hpp>

#include "cli/arguments.h"

namespace aveffect {

/// What parsing fills.
struct AllCommands {
    ListCommand list;
    DescribeCommand describe;
    RenderCommand render;
    FrameCommand frame;
    TransitionCommand transition;
    JoinCommand join;
    SheetCommand sheet;
    CompareCommand compare;
    BatchCommand batch;
    PlayCommand play;
    TimelineCommands timeline;
    FarmCommands farm;
    StudioCommand studio;
};

/// The App refers to the commands, which have to live longer.
std::unique_ptr<CLI::App> MakeApp(AllCommands& commands);

} // namespace aveffect
