#pragma once
/// The calling thread's error record, filled with the place of the call.
#include "aveffect/base_tools.h"

namespace mediabridge {

/// Null messages count as empty. Leave line and file to the defaults.
inline void RecordError(AVBased::ErrorCode code, const char* message, int line = __builtin_LINE(),
                        const char* file = __builtin_FILE()) {
    GetBaseException()->SetException(code, message, line, file);
}

inline void RecordNoMemory(int line = __builtin_LINE(), const char* file = __builtin_FILE()) {
    RecordError(AVBased::kNoMemory, "No enough memory", line, file);
}

} // namespace mediabridge
