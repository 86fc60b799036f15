#pragma once
/// Failures of the host as Python's exceptions, which the package defines.
#include <pybind11/pybind11.h>

#include "host/support/error.h"

namespace aveffect::python {

/// Makes the module raise aveffect.UsageError and its like for Error, and MemoryError for a lack of memory.
void TranslateFailures();

/// One that the caller's arguments are at fault for.
Error Wrong(const std::string& text);

} // namespace aveffect::python
