#include "BaseTools/sysutils.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "aveffect/base_tools.h"

namespace BaseTool {

std::string GetLastCommonExpAsText() {
    const IBaseException* record = GetBaseException();
    if (record->GetExceptionCode() == AVBased::kNoError) return {};
    int line = 0;
    const std::string file = record->GetExceptionSource(&line);
    return "[!!! Exception Code: " + std::to_string(record->GetExceptionCode()) +
           "\nMsg: " + record->GetExceptionMsg() + "\nFile: " + file + "\nLine: " + std::to_string(line) +
           " !!!]";
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers of the library rely on this signature
std::string FormatCommonExp(const CBaseException& e, std::string format) {
    int line = 0;
    const char* path = e.GetExceptionSource(&line);
    const char* slash = std::strrchr(path, '/');
    char text[256];
    const int length =
        std::snprintf(text, sizeof text, format.c_str(), slash ? slash + 1 : path, line, e.GetMsg());
    return length < 0 ? std::string() : std::string(text);
}

void debug_print(const char* format, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, "%s\n", text);
}

void log_common_msg(int level, const char* file, int line, const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::string source = std::string(file) + ":" + std::to_string(line);
    GetBaseLogger()->Write(level, source.c_str(), text, 0, 0);
}

} // namespace BaseTool
