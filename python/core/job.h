#pragma once
/// Jobs on files: what the program does, by its own options.
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

namespace aveffect::python {

/// Runs a command line of the program's that writes media: render, frame, transition, join, sheet or timeline
/// render. Progress, if any, is called with (frames, frames expected or None, seconds left or None), and
/// warning with a text, both on the calling thread. What one of them raises, or Ctrl-C, ends the job and is
/// raised; nothing is written then. Returns (frames, what was damaged or None). Throws Error.
pybind11::tuple RunJob(std::vector<std::string> arguments, const pybind11::object& progress,
                       const pybind11::object& warning);

} // namespace aveffect::python
