#include "cli/confinement/confinement.h"

#include <cerrno>
#include <cstring>
#include <sys/prctl.h>

#include "cli/confinement/walls.h"

namespace aveffect {

// Names come first: the filter has no calls for them.
std::string Confine(const Reach& reach) {
    // Neither wall may be raised by a process that could gain rights by starting others.
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return std::string("the process can't give up rights: ") + std::strerror(errno);
    const std::string names = RestrictNames(reach), calls = RestrictCalls(reach);
    return names + (names.empty() || calls.empty() ? "" : "; ") + calls;
}

} // namespace aveffect
