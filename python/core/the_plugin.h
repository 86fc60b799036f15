#pragma once
/// The plug-in, as this module has it.
#include "host/effects/plugin.h"

namespace aveffect::python {

/// The one beside the companions that this module is linked with. Loaded by the first call, for the life of
/// the process. Safe from any thread. Throws Error (Effect) that names the file and the reason.
const Plugin& ThePlugin();

} // namespace aveffect::python
