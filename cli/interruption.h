#pragma once
/// Requests to stop: the signals that end a program by default and that it can catch, other than those of its
/// own faults.
#include <atomic>
#include <cstdint>

namespace aveffect {

/// From now on these signals set a flag and nothing else, so that a second one does not end the program in
/// the middle of its cleaning up. A hang-up that was ignored at start (nohup) stays ignored. SIGPIPE and
/// SIGXFSZ are ignored: writing to a closed pipe or beyond the file size limit fails instead. Call once, from
/// the main thread, before others are started.
void CatchInterruptions();

/// Set as soon as one of the signals came.
const std::atomic<bool>& Interrupted();

/// Has SIGALRM come after that time, above 0. Where the run has not ended two seconds later, because
/// something in it never does, the process removes its unfinished outputs, says so and ends with 142. Call
/// once, after CatchInterruptions().
void InterruptAfter(int64_t milliseconds);

/// The time that was given, when it is what ended the run; else 0.
int64_t EndedAfter();

/// The number of the first signal that came, 0 for none.
int InterruptingSignal();

} // namespace aveffect
