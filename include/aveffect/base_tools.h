#pragma once
/// The tools library (libAVBaseTools.so), which a host ships beside the plug-in.
#include "aveffect/errors.h"

extern "C" {

/// The calling thread's error record: made on first use, never null, freed when the thread ends.
IBaseException* GetBaseException();

/// Frees the calling thread's error record; the next GetBaseException() makes a fresh one.
void ReleaseBaseException();

/// The process's logger, never null. It writes to standard error.
IBaseLogger* GetBaseLogger();

/// Lets the logger write messages of this level and above (0 debug, 1 info, 2 warning, 3 error; 4 silences
/// it). The level at start is 2. Safe from any thread.
void AVBasedSetLogLevel(int level);
}
