#pragma once
/// Media files are strangers' programs for the libraries that decode them. What these can be made to do ends
/// at a wall that the process raises around itself, for good, before it parses the first one.
#include <string>

#include "cli/confinement/reach.h"

namespace aveffect {

/// From now on this process reads and writes what the reach names and what its libraries need, starts no
/// program, and talks to nobody; what else is tried fails with EACCES or EPERM. Call from the main thread
/// before others are started. Returns what this system can't hold back, in words; empty: everything is.
/// Where a name stands for nothing yet, nothing of that name can be reached.
std::string Confine(const Reach& reach);

} // namespace aveffect
