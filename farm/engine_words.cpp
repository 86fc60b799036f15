#include "farm/engine_words.h"

#include <algorithm>
#include <functional>

#include <nlohmann/json.hpp>

#include "host/support/shell_word.h"

namespace aveffect {

namespace {

std::string Command(const EngineWords& words, const std::string& verb, const std::string& part) {
    std::string text = ShellWord(words.program) + " " + verb + " " + ShellWord(words.folder);
    if (!part.empty()) text += " " + part;
    if (!words.mediaRoot.empty()) text += " --media-root " + ShellWord(words.mediaRoot);
    return text;
}

std::string Lines(const EngineWords& words) {
    std::string text;
    for (int64_t part = 0; part < words.parts; ++part)
        text += Command(words, "work", std::to_string(part)) + "\n";
    return text + Command(words, "finish", "") + "\n";
}

/// In a Makefile a dollar sign stands twice.
std::string ForMake(std::string text) {
    for (size_t at = 0; (at = text.find('$', at)) != std::string::npos; at += 2) text.insert(at, 1, '$');
    return text;
}

// The parts are no files for make: work on a finished one returns at once.
std::string Make(const EngineWords& words) {
    std::string text = "# make -j4 -k -f THIS_FILE\nparts :=";
    for (int64_t part = 0; part < words.parts; ++part) text += " part" + std::to_string(part);
    text += "\n.PHONY: film $(parts)\nfilm: $(parts)\n\t" + ForMake(Command(words, "finish", "")) +
            "\n$(parts): part%:\n\t" + ForMake(Command(words, "work", "")) + " $*\n";
    return text;
}

// Clusters allow arrays of 1001 jobs if nothing else is said.
std::string Slurm(const EngineWords& words) {
    constexpr int64_t kArray = 1000;
    std::string text = "#!/bin/sh\n# Submits the parts and, behind them, the join.\nset -eu\nwork=\n";
    for (int64_t begin = 0; begin < words.parts; begin += kArray) {
        const int64_t last = std::min(begin + kArray, words.parts) - begin - 1;
        const std::string part = "$((" + std::to_string(begin) + " + SLURM_ARRAY_TASK_ID))";
        text += "work=$work:$(sbatch --parsable --requeue --array=0-" + std::to_string(last) + " --wrap " +
                ShellWord("exec " + Command(words, "work", part)) + ")\n";
    }
    return text + "sbatch --dependency=\"afterok$work\" --wrap " +
           ShellWord("exec " + Command(words, "finish", "")) + "\n";
}

nlohmann::ordered_json Container(const std::string& command) {
    return {{"name", "aveffect"},
            {"image", "aveffect"},
            {"command", {"sh", "-c", "exec " + command}},
            {"workingDir", "/share"},
            {"volumeMounts", {{{"name", "share"}, {"mountPath", "/share"}}}}};
}

nlohmann::ordered_json Job(const std::string& name, nlohmann::ordered_json fields,
                           const std::string& command) {
    fields["template"]["spec"] = {
        {"restartPolicy", "OnFailure"},
        {"containers", {Container(command)}},
        {"volumes", {{{"name", "share"}, {"persistentVolumeClaim", {{"claimName", "share"}}}}}}};
    return {{"apiVersion", "batch/v1"}, {"kind", "Job"}, {"metadata", {{"name", name}}}, {"spec", fields}};
}

// JSON is YAML. The join waits until somebody says that the parts are done.
std::string Kubernetes(const EngineWords& words) {
    const int64_t atATime = std::min<int64_t>(words.parts, 100);
    const auto parts = Job("aveffect-work",
                           {{"completionMode", "Indexed"},
                            {"completions", words.parts},
                            {"parallelism", atATime},
                            {"backoffLimit", 6 * words.parts}},
                           Command(words, "work", "$JOB_COMPLETION_INDEX"));
    const auto join = Job("aveffect-finish", {{"suspend", true}}, Command(words, "finish", ""));
    return "# kubectl apply -f THIS_FILE\n"
           "# kubectl wait --for=condition=complete --timeout=-1s job/aveffect-work\n"
           "# kubectl patch job aveffect-finish -p '{\"spec\":{\"suspend\":false}}'\n"
           "# The image holds aveffect; the claim is the folder that plan and media lie in.\n" +
           parts.dump(2) + "\n---\n" + join.dump(2) + "\n";
}

} // namespace

std::string EngineText(Engine engine, const EngineWords& words) {
    switch (engine) {
    case Engine::Lines:
        return Lines(words);
    case Engine::Make:
        return Make(words);
    case Engine::Slurm:
        return Slurm(words);
    case Engine::Kubernetes:
        return Kubernetes(words);
    }
    return {};
}

} // namespace aveffect
