#include "cli/machine_memory.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <unistd.h>

namespace aveffect {
namespace {

namespace fs = std::filesystem;

// What is no number, "max" say, limits nothing.
uint64_t LimitIn(const fs::path& file) {
    uint64_t bytes = 0;
    return std::ifstream(file) >> bytes ? bytes : UINT64_MAX;
}

// Groups lie in each other, and each limits all that are inside. A container sees the path of its group from
// outside, but the group itself where the mount begins.
uint64_t LeastAlong(const fs::path& mount, const std::string& group, const char* name) {
    uint64_t least = LimitIn(mount / name);
    fs::path reached = mount;
    for (const fs::path& part : fs::path(group).relative_path())
        least = std::min(least, LimitIn((reached /= part) / name));
    return least;
}

} // namespace

// Lines are "0::/path" of the one tree, and "4:memory:/path" of a controller's own.
uint64_t GroupMemory(const fs::path& root) {
    const fs::path mounts = root / "sys/fs/cgroup";
    uint64_t least = UINT64_MAX;
    std::ifstream groups(root / "proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        const size_t first = line.find(':'), second = line.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos) continue;
        const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
        const std::string group = line.substr(second + 1);
        if (line.starts_with("0::"))
            for (const fs::path& mount : {mounts, mounts / "unified"})
                least = std::min(least, LeastAlong(mount, group, "memory.max"));
        else if (controllers.find(",memory,") != std::string::npos)
            least = std::min(least, LeastAlong(mounts / "memory", group, "memory.limit_in_bytes"));
    }
    return least;
}

uint64_t MachineMemory() {
    const auto pages = static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES));
    return std::min(pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE)), GroupMemory());
}

} // namespace aveffect
