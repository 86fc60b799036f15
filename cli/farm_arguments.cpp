#include "cli/farm_arguments.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "cli/exit_code.h"
#include "cli/option_values.h"
#include "host/settings/value_text.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

void AddFolder(CLI::App& app, std::string& folder) {
    app.add_option("PLAN", folder, "Directory of the plan, which all machines see")->required();
}

void AddMediaRoot(CLI::App& app, std::string& root) {
    app.add_option("--media-root", root,
                   "Directory that names of media and of the output count from, the current one if not given")
        ->type_name("DIRECTORY");
}

void AddPlan(CLI::App& app, PlanCommand& command) {
    CLI::App* const plan = app.add_subcommand("plan", "Share a render, a join or a film out among machines");
    AddFolder(*plan, command.folder);
    CLI::Option* const chunks =
        plan->add_option("--chunks", command.chunks, "So many chunks of pictures")->type_name("N");
    plan->add_option("--chunk-seconds", command.chunkSeconds, "Chunks of so many seconds")
        ->type_name("SECONDS")
        ->excludes(chunks);
    AddMediaRoot(*plan, command.mediaRoot);
    plan->add_option("--as", command.as,
                     "Print the commands for an engine: lines (one a line), make, slurm or kubernetes")
        ->type_name("ENGINE");
    AddRunOptions(*plan, command.run);
    plan->prefix_command();
    plan->footer(
        std::string(
            "The command that is shared out follows with its own arguments: render, join or timeline render. "
            "Without one, the plan that is there is printed --as asked.\n"
            "Example:\n  aveffect plan shared/film --chunks 100 --as slurm render in.mp4 out.mp4 -e "
            "oilpainting\n\n") +
        kExitCodeHelp);
}

void AddWork(CLI::App& app, WorkCommand& command) {
    CLI::App* const work = app.add_subcommand("work", "Render one part of a plan");
    AddFolder(*work, command.folder);
    work->add_option("PART", command.part,
                     "Number of the chunk; the last part is what lies beside the pictures")
        ->required();
    AddMediaRoot(*work, command.mediaRoot);
    AddRunOptions(*work, command.run);
    AddProgressOption(*work, command.progress);
    work->footer(
        std::string("A part that is done is left as it is.\nExample:\n  aveffect work shared/film 12\n\n") +
        kExitCodeHelp);
}

void AddFinish(CLI::App& app, FinishCommand& command) {
    CLI::App* const finish = app.add_subcommand("finish", "Join the parts of a plan into its output");
    AddFolder(*finish, command.folder);
    AddMediaRoot(*finish, command.mediaRoot);
    AddRunOptions(*finish, command.run);
    finish->footer(std::string("Example:\n  aveffect finish shared/film\n\n") + kExitCodeHelp);
}

void AddStatus(CLI::App& app, StatusCommand& command) {
    CLI::App* const status =
        app.add_subcommand("status", "Show which parts of a plan are done, missing and failed");
    AddFolder(*status, command.folder);
    status->add_flag("--json", command.json, "As JSON");
    status->footer(std::string("Example:\n  aveffect status shared/film\n\n") + kExitCodeHelp);
}

} // namespace

void AddFarm(CLI::App& app, FarmCommands& commands) {
    AddPlan(app, commands.plan);
    AddWork(app, commands.work);
    AddFinish(app, commands.finish);
    AddStatus(app, commands.status);
}

ChunkSize MakeChunkSize(const PlanCommand& command) {
    ChunkSize size;
    if (command.chunks) size.chunks = WholeOption("--chunks", *command.chunks, 1);
    if (command.chunkSeconds) {
        constexpr double kMs = 1000;
        const int64_t ms = TimeOption("--chunk-seconds", *command.chunkSeconds);
        if (ms < 1) Refuse("--chunk-seconds", "a time above 0", *command.chunkSeconds);
        size.seconds = static_cast<double>(ms) / kMs;
    }
    if (!size.chunks && !size.seconds)
        throw Error(ErrorKind::Usage, "a plan needs --chunks N or --chunk-seconds S");
    return size;
}

std::optional<Engine> MakeEngine(const PlanCommand& command) {
    if (command.as.empty()) return std::nullopt;
    if (command.as == "lines") return Engine::Lines;
    if (command.as == "make") return Engine::Make;
    if (command.as == "slurm") return Engine::Slurm;
    if (command.as == "kubernetes") return Engine::Kubernetes;
    Refuse("--as", "lines, make, slurm or kubernetes", command.as);
}

std::string StatusText(const FarmStatus& status, const FarmPlan& plan) {
    std::string text = std::to_string(status.done) + " of " + std::to_string(plan.Parts()) + " parts of " +
                       plan.output + " are done\n";
    if (!status.missing.empty()) text += "missing: " + NumbersText(status.missing) + "\n";
    for (const auto& [part, message] : status.failed)
        text += "failed: " + std::to_string(part) + ": " + message + "\n";
    return text;
}

std::string StatusJson(const FarmStatus& status, const FarmPlan& plan) {
    nlohmann::ordered_json json = {{"output", plan.output},
                                   {"parts", plan.Parts()},
                                   {"done", status.done},
                                   {"missing", status.missing},
                                   {"failed", nlohmann::ordered_json::array()}};
    for (const auto& [part, message] : status.failed)
        json["failed"].push_back({{"part", part}, {"message", message}});
    return json.dump(2) + "\n";
}

} // namespace aveffect
