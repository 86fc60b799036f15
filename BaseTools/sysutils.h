#pragma once
/// Error texts and logging, and with them the whole of the support library: locks and events, threads, child
/// processes, the byte queue.
#include <string>

#include "BaseTools/CBaseException.h"
#include "BaseTools/data_buffer.h"
#include "BaseTools/process.h"
#include "BaseTools/synchronisation.h"
#include "BaseTools/thread.h"

namespace BaseTool {

/// The calling thread's error as text of four lines, empty when its code is 0.
std::string GetLastCommonExpAsText();

/// Formats printf-style with three arguments in this order: the error's file name without directories (%s),
/// its line (%d), its message (%s). Cut to 255 characters.
std::string FormatCommonExp(const CBaseException& e, std::string format);

/// Writes a formatted line, cut to 255 characters, to standard error.
[[gnu::format(printf, 1, 2)]] void debug_print(const char* format, ...);

/// Hands a formatted message, cut to 1023 characters, to the process's logger with the source text
/// "file:line". Levels as IBaseLogger::Write has them.
[[gnu::format(printf, 4, 5)]] void log_common_msg(int level, const char* file, int line, const char* format,
                                                  ...);

} // namespace BaseTool
