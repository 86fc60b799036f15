#pragma once
/// Work while other threads of Python's run.
#include <pybind11/pybind11.h>

namespace aveffect::python {

/// Lets the interpreter's lock go for its own life. A thread that would take it again while the interpreter
/// ends never returns, for there is nothing left to return to.
class Unlocked {
public:
    Unlocked();
    ~Unlocked();
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;

private:
    PyThreadState* m_state;
};

/// Has the interpreter wait at its end for threads that are unlocked. Call once, with the module.
void WaitForUnlockedAtExit();

} // namespace aveffect::python
