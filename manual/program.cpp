#include "manual/program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <stdexcept>

namespace aveffect::manual {

void RunProgram(std::vector<std::string> words, const std::filesystem::path& output) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr mode_t kMode = 0644;
    if (!output.empty())
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, kMode);
    pid_t child = 0;
    int status = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (status == 0) waitpid(child, &status, 0);
    if (status != 0) throw std::runtime_error("'" + words.front() + "' failed for " + words.back());
}

} // namespace aveffect::manual
