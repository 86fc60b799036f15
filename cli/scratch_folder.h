#pragma once
/// A folder for files that last no longer than the program.
#include <string>

namespace aveffect {

/// Made where temporary files go (TMPDIR, else /tmp), readable by this user alone. A process of its own waits
/// for the end of this one, however it ends, and removes the folder then: behind the walls that this program
/// raises around itself it could not.
class ScratchFolder {
public:
    /// Before other threads are started. Throws Error (Output).
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const noexcept { return m_path; }

private:
    std::string m_path;
    int m_alive = -1;   ///< a pipe's end, which the other process waits for to close
    int m_remover = -1; ///< the process
};

} // namespace aveffect
