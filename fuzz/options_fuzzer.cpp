// The program's own parsers: an effect chain in both strictnesses, and a command line, one argument a line,
// with the options made from it.
#include <vector>

#include "cli/arguments.h"
#include "fuzz/input_bytes.h"
#include "host/error.h"

namespace {

// Errors are answers; anything else is not.
template <class Body>
void Answered(Body body) {
    try {
        body();
    } catch (const aveffect::Error&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::InputBytes input(data, size);
    const uint8_t what = input.Take<uint8_t>() % 3;
    if (what < 2) {
        Answered([&] { aveffect::ParseEffect(input.TakeRest(), what == 1); });
        return 0;
    }
    std::vector<std::string> words = {"aveffect"};
    while (!input.Empty() && words.size() < 40) words.push_back(input.TakeLine());
    std::vector<const char*> arguments;
    arguments.reserve(words.size());
    for (const std::string& word : words) arguments.push_back(word.c_str());
    Answered([&] {
        const aveffect::Command command =
            aveffect::ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
        if (const auto* render = std::get_if<aveffect::RenderCommand>(&command))
            aveffect::MakeRenderOptions(*render);
        if (const auto* frame = std::get_if<aveffect::FrameCommand>(&command))
            aveffect::MakeFrameOptions(*frame);
    });
    return 0;
}
