#pragma once
/// Keeps the media libraries' log off standard error and at hand for messages.
#include <string>

namespace aveffect {

/// Replaces the libraries' log callback of the whole process, once: from then on nothing is printed and the
/// last error line of each thread is kept. Safe from any thread.
void CaptureLibraryLog();

/// The calling thread's error line, which is then forgotten. Empty when there is none. Call it before an
/// operation too, so that what it returns afterwards is about that operation.
std::string TakeLibraryError();

} // namespace aveffect
