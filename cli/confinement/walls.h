#pragma once
/// The two walls, one for names and one for system calls. Each returns why it does not stand, or not whole;
/// empty: it does.
#include <string>

#include "cli/confinement/reach.h"

namespace aveffect {

/// Landlock: files and folders by what they are when this is called, whatever becomes of their names; no
/// connections by TCP, no signals to others, no sockets without names, where the kernel knows these.
std::string RestrictNames(const Reach& reach);

/// A filter of system calls: those on the list, the others fail with EPERM. Of all threads.
std::string RestrictCalls(const Reach& reach);

} // namespace aveffect
