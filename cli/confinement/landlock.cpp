#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "cli/confinement/walls.h"

namespace aveffect {

namespace {

// Rights that came after the headers of the oldest system this is built on.
constexpr uint64_t kTruncate = uint64_t{1} << 14, kControlDevice = uint64_t{1} << 15;
constexpr uint64_t kBindAndConnect = 3;
constexpr uint64_t kAbstractSockets = 1, kSignals = 2;

constexpr uint64_t kReadFile = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr uint64_t kReadFolder = kReadFile | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr uint64_t kWriteFile = kReadFile | LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate | kControlDevice;
constexpr uint64_t kWriteFolder = kReadFolder | kWriteFile | LANDLOCK_ACCESS_FS_MAKE_REG |
                                  LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                  LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REFER;
constexpr uint64_t kForFiles = kWriteFile | LANDLOCK_ACCESS_FS_EXECUTE;

/// As the kernel has it; versions look at the members they know by the size that they are given.
struct RulesetAttributes {
    uint64_t files, network, scoped;
};

/// By the version of the kernel's interface.
struct Handled {
    RulesetAttributes attributes;
    size_t size;
};
Handled HandledBy(long version, const Reach& reach) {
    constexpr int kFirstRights = 13; // of version 1
    uint64_t files = (uint64_t{1} << kFirstRights) - 1;
    if (version >= 2) files |= LANDLOCK_ACCESS_FS_REFER;
    if (version >= 3) files |= kTruncate;
    if (version >= 5) files |= kControlDevice;
    const uint64_t network = version >= 4 && !reach.network ? kBindAndConnect : 0;
    // Displays are often reached by a socket without a name.
    const uint64_t scoped =
        version >= 6 ? kSignals | (reach.player || reach.network ? 0 : kAbstractSockets) : 0;
    constexpr size_t kWord = sizeof(uint64_t);
    return {{files, network, scoped}, version >= 6 ? 3 * kWord : version >= 4 ? 2 * kWord : kWord};
}

class Descriptor {
public:
    explicit Descriptor(long number)
        : m_number(static_cast<int>(number)) {}
    ~Descriptor() {
        if (m_number >= 0) close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const noexcept { return m_number; }

private:
    int m_number;
};

class Ruleset {
public:
    explicit Ruleset(const Handled& handled)
        : m_files(handled.attributes.files)
        , m_set(syscall(SYS_landlock_create_ruleset, &handled.attributes, handled.size, 0)) {}

    /// What isn't there needs no right, and what lies in no file system (pipes) can't be restricted.
    void Allow(const std::string& path, uint64_t rights) {
        const Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
        struct stat info = {};
        if (place.Number() < 0 || fstat(place.Number(), &info) != 0) return;
        landlock_path_beneath_attr rule = {};
        rule.allowed_access = rights & m_files & (S_ISDIR(info.st_mode) ? ~uint64_t{0} : kForFiles);
        rule.parent_fd = place.Number();
        syscall(SYS_landlock_add_rule, m_set.Number(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }

    bool Enforce() const {
        return m_set.Number() >= 0 && syscall(SYS_landlock_restrict_self, m_set.Number(), 0) == 0;
    }

private:
    uint64_t m_files;
    Descriptor m_set;
};

/// Libraries that are loaded late, what these know of machine, time zone and languages, and devices of
/// nobody.
constexpr const char* kEverybodys[] = {
    "/usr/lib",     "/usr/lib64",       "/usr/local/lib",      "/lib",           "/lib64",
    "/usr/share",   "/etc/fonts",       "/etc/ld.so.cache",    "/etc/localtime", "/etc/timezone",
    "/proc/self",   "/proc/cpuinfo",    "/proc/meminfo",       "/proc/stat",     "/proc/filesystems",
    "/proc/sys/vm", "/proc/sys/kernel", "/sys/devices/system", "/sys/fs/cgroup", "/dev/zero",
    "/dev/random",  "/dev/urandom"};

/// Of displays and sound: their services' sockets, their devices, and what their libraries read.
constexpr const char* kPlayersReads[] = {"/etc", "/sys", "/run/udev", "/var/lib/dbus", "/proc"};
constexpr const char* kPlayersWrites[] = {"/dev/dri",      "/dev/snd",       "/dev/shm",
                                          "/dev/nvidia0",  "/dev/nvidiactl", "/dev/nvidia-modeset",
                                          "/tmp/.X11-unix"};

/// Names and addresses of other hosts, and whom to believe.
constexpr const char* kNetworkReads[] = {"/etc", "/run/systemd/resolve", "/run/nscd"};

void AllowPlayer(Ruleset& rules) {
    for (const char* place : kPlayersReads) rules.Allow(place, kReadFolder);
    for (const char* place : kPlayersWrites) rules.Allow(place, kWriteFolder);
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR")) rules.Allow(runtime, kWriteFolder);
    const char* const home = std::getenv("HOME");
    const char* const authority = std::getenv("XAUTHORITY");
    if (authority) rules.Allow(authority, kReadFile);
    if (!home) return;
    for (const char* place : {"/.Xauthority", "/.config/pulse", "/.asoundrc"})
        rules.Allow(home + std::string(place), kReadFolder);
}

} // namespace

std::string RestrictNames(const Reach& reach) {
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) return std::string("files aren't confined, Landlock: ") + std::strerror(errno);
    Ruleset rules(HandledBy(version, reach));
    for (const char* place : kEverybodys) rules.Allow(place, kReadFolder);
    rules.Allow("/dev/null", kWriteFile);
    // The effects lie beside the program, and libraries where the environment says, too.
    std::error_code failed;
    rules.Allow(std::filesystem::read_symlink("/proc/self/exe", failed).parent_path(), kReadFolder);
    if (const char* folders = std::getenv("LD_LIBRARY_PATH")) {
        const std::string list = folders;
        for (size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
            end = list.find(':', begin);
            rules.Allow(list.substr(begin, end - begin), kReadFolder);
        }
    }
    if (reach.player) AllowPlayer(rules);
    if (reach.network)
        for (const char* place : kNetworkReads) rules.Allow(place, kReadFolder);
    for (const std::string& place : reach.reads) rules.Allow(place, kReadFolder);
    for (const std::string& place : reach.writes) rules.Allow(place, kWriteFolder);
    if (!rules.Enforce()) return std::string("files aren't confined, Landlock: ") + std::strerror(errno);
    if (version < 3) return "this kernel can't hold back that other files are cut short";
    return "";
}

} // namespace aveffect
