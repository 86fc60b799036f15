#include "cli/machine_memory.h"

#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace aveffect {
namespace {

namespace fs = std::filesystem;

struct GroupCase {
    const char* groups;                             ///< /proc/self/cgroup
    std::pair<const char*, const char*> one, other; ///< files below /sys/fs/cgroup
    uint64_t bytes;
};
constexpr GroupCase kCases[] = {
    {"0::/a/b\n", {"a/memory.max", "3000"}, {"a/b/memory.max", "max"}, 3000},
    {"0::/a/b\n", {"a/memory.max", "3000"}, {"a/b/memory.max", "2000"}, 2000},
    {"0::/elsewhere\n", {"memory.max", "5000"}, {"a/memory.max", "1"}, 5000},
    {"3:cpu:/\n4:hugetlb,memory:/x\n",
     {"memory/x/memory.limit_in_bytes", "700"},
     {"cpu/memory.limit_in_bytes", "1"},
     700},
    {"4:memory:/\n0::/s\n", {"memory/memory.limit_in_bytes", "9000"}, {"unified/s/memory.max", "800"}, 800},
    {"nothing\n", {"memory.max", "1"}, {"memory/memory.limit_in_bytes", "1"}, UINT64_MAX},
};

TEST(MachineMemory, IsWhatTheGroupsLeave) {
    for (const GroupCase& each : kCases) {
        const fs::path root = fs::path(testing::TempDir()) / "groups";
        fs::remove_all(root);
        const auto write = [](const fs::path& file, const char* text) {
            fs::create_directories(file.parent_path());
            std::ofstream(file) << text << "\n";
        };
        write(root / "proc/self/cgroup", each.groups);
        for (const auto& [name, text] : {each.one, each.other}) write(root / "sys/fs/cgroup" / name, text);
        EXPECT_EQ(GroupMemory(root), each.bytes) << each.groups;
        fs::remove_all(root);
    }
}

} // namespace
} // namespace aveffect
