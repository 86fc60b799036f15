#include "cli/scratch_folder.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

#include "host/support/error.h"

namespace aveffect {

namespace {

[[noreturn]] void Fail(const std::string& what) {
    throw Error(ErrorKind::Output, what + ": " + std::strerror(errno));
}

[[noreturn]] void RemoveAtEnd(const std::string& path, int alive) noexcept {
    // What ends the program at its terminal ends its whole group.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) std::signal(signal, SIG_IGN);
    char byte = 0;
    while (read(alive, &byte, 1) < 0 && errno == EINTR) {
    }
    std::error_code failed;
    std::filesystem::remove_all(path, failed);
    _exit(0);
}

} // namespace

ScratchFolder::ScratchFolder() {
    std::error_code failed;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(failed);
    if (failed) throw Error(ErrorKind::Output, "there is no folder for temporary files; name one in TMPDIR");
    m_path = (std::filesystem::canonical(parent, failed) / "aveffect.XXXXXX").string();
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) Fail("no pipe");
    if (!mkdtemp(m_path.data())) {
        close(ends[0]);
        close(ends[1]);
        Fail("no folder can be made in " + parent.string());
    }
    m_remover = fork();
    if (m_remover == 0) {
        close(ends[1]);
        RemoveAtEnd(m_path, ends[0]);
    }
    close(ends[0]);
    m_alive = ends[1];
    if (m_remover > 0) return;
    std::filesystem::remove(m_path, failed);
    close(m_alive);
    Fail("no process can be started");
}

ScratchFolder::~ScratchFolder() {
    close(m_alive);
    while (waitpid(m_remover, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace aveffect
