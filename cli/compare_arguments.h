#pragma once
/// The command line of `compare`, and how it tells what was found.
#include <optional>
#include <string>

#include "cli/run_arguments.h"
#include "host/jobs/compare.h"

namespace CLI {
class App;
}

namespace aveffect {

struct CompareCommand {
    CompareOptions options;
    RunArguments run;
    std::optional<std::string> fps;
    bool json = false;
};

void AddCompare(CLI::App& app, CompareCommand& command);

/// Checks and translates the values. Throws Error (Usage).
CompareOptions MakeCompareOptions(const CompareCommand& command);

/// A line for each of: where the pictures differ, the ratios, what one clip has more than the other.
std::string ComparisonText(const CompareOptions& options, const Comparison& found);

/// The same as one JSON object and a line break. Infinite ratios are null.
std::string ComparisonJson(const Comparison& found);

} // namespace aveffect
