#include "cli/compare_arguments.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "cli/exit_code.h"
#include "cli/messages.h"
#include "cli/option_values.h"

namespace aveffect {

namespace {

constexpr int64_t kMsPerSecond = 1000, kSecondsPerMinute = 60;

std::string Pictures(int64_t count) {
    return std::to_string(count) + (count == 1 ? " picture" : " pictures");
}

/// "picture 12 (0:00.480)"
std::string Place(const ComparedPair& pair) {
    char text[64];
    const int64_t seconds = pair.timeMs / kMsPerSecond;
    std::snprintf(text, sizeof text, "picture %" PRId64 " (%" PRId64 ":%02" PRId64 ".%03" PRId64 ")",
                  pair.index, seconds / kSecondsPerMinute, seconds % kSecondsPerMinute,
                  pair.timeMs % kMsPerSecond);
    return text;
}

std::string Number(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string Rest(const std::string& name, int64_t pictures) {
    return pictures > 0 ? OneLine(name) + " goes on for " + Pictures(pictures) + "\n" : "";
}

nlohmann::json PairJson(const std::optional<ComparedPair>& pair) {
    if (!pair) return nullptr;
    return {{"picture", pair->index}, {"milliseconds", pair->timeMs}};
}

nlohmann::json Ratio(double decibels) {
    return std::isfinite(decibels) ? nlohmann::json(decibels) : nlohmann::json(nullptr);
}

} // namespace

void AddCompare(CLI::App& app, CompareCommand& command) {
    CLI::App* const compare =
        app.add_subcommand("compare", "Tell where the pictures of two clips or stills differ, and how much");
    compare->add_option("A", command.options.first, "Clip or picture; A?vstreamid=1 chooses a stream")
        ->required();
    compare->add_option("B", command.options.second, "The one to compare it with")->required();
    compare
        ->add_option("--difference", command.options.difference,
                     "Picture to write: the difference where it is largest, brightened")
        ->type_name("FILE");
    compare->add_option("--fps", command.fps, "Pictures a second of numbered ones; 25 if not given")
        ->type_name("RATE");
    compare->add_flag("--json", command.json, "Tell it as JSON");
    AddRunOptions(*compare, command.run);
    compare->footer(std::string("Pictures count from 0 and are compared one by one, in A's pixel format.\n"
                                "Example:\n  aveffect compare a.mp4 b.mp4 --difference difference.png\n\n") +
                    kExitCodeHelp);
}

CompareOptions MakeCompareOptions(const CompareCommand& command) {
    CompareOptions options = command.options;
    options.overwrite = command.run.overwrite;
    if (command.fps) options.rate = RateOption(*command.fps);
    return options;
}

std::string ComparisonText(const CompareOptions& options, const Comparison& found) {
    if (found.Same()) return "no difference in " + Pictures(found.pairs) + "\n";
    std::string text;
    if (found.firstDifference) {
        text += "first difference: " + Place(*found.firstDifference) +
                "\nlargest difference: " + Place(*found.largestDifference) +
                "\ndiffering: " + std::to_string(found.differing) + " of " + Pictures(found.pairs) +
                "\nPSNR: " + Number(found.psnr, 2) + " dB, lowest " + Number(found.lowestPsnr, 2) +
                " dB\nSSIM: " + Number(found.ssim, 6) + "\n";
        if (!options.difference.empty())
            text +=
                OneLine(options.difference) + ": the largest difference" +
                (found.brightened > 1 ? ", " + std::to_string(found.brightened) + " times as bright" : "") +
                "\n";
    } else {
        text += "no difference in the first " + Pictures(found.pairs) + "\n";
    }
    return text + Rest(options.first, found.restOfFirst) + Rest(options.second, found.restOfSecond);
}

std::string ComparisonJson(const Comparison& found) {
    const nlohmann::json json = {{"same", found.Same()},
                                 {"pictures", found.pairs},
                                 {"differing", found.differing},
                                 {"only_in_a", found.restOfFirst},
                                 {"only_in_b", found.restOfSecond},
                                 {"first_difference", PairJson(found.firstDifference)},
                                 {"largest_difference", PairJson(found.largestDifference)},
                                 {"psnr", Ratio(found.psnr)},
                                 {"lowest_psnr", Ratio(found.lowestPsnr)},
                                 {"ssim", found.ssim}};
    return json.dump() + "\n";
}

} // namespace aveffect
