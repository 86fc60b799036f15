// A child process's command line: split, written again with every character escaped, and split again.
#include <cstdlib>

#include "BaseTools/process.h"
#include "tests/support/input_bytes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = test::InputBytes(data, size).TakeRest();
    std::vector<std::string> arguments, again;
    BaseTool::parse_cmd_line(text, arguments);

    std::string escaped;
    for (const std::string& argument : arguments) {
        if (argument.empty()) std::abort();
        for (const char c : argument) {
            escaped += '\\';
            escaped += c;
        }
        escaped += ' ';
    }
    if (escaped.size() > 3 * text.size()) std::abort();
    BaseTool::parse_cmd_line(escaped, again);
    if (again != arguments) std::abort();
    return 0;
}
