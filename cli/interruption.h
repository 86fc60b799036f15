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

/// From now on a crash of the process ends it with 1 where memory or a thread was refused to anybody in it
/// before (refused_calls.h), for libraries may fall then: it removes its unfinished outputs, and says so.
/// Other crashes stay what they are. Call once, as CatchInterruptions().
void CatchCrashesBehindRefusals();

/// From now on a refusal dooms the run: has it not ended two seconds later, because libraries may wait for
/// ever then, the process ends in that same way. Call once, after CatchInterruptions().
void RefusalsDoom();

/// Sets g_refused. At any moment, from any thread.
void NoteRefusal() noexcept;

/// The time that was given, when it is what ended the run; else 0.
int64_t EndedAfter();

/// The number of the first signal that came, 0 for none.
int InterruptingSignal();

} // namespace aveffect
