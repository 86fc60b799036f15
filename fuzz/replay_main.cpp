// Runs a fuzz target's body over files and folders of inputs, as an ordinary test: TARGET_replay [--changes
// N] PATH... With changes, each is tried in so many forms besides that the target's own mutator makes of it,
// always the same ones.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" __attribute__((weak)) size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t room,
                                                                unsigned seed);

namespace {

constexpr size_t kRoom = 1 << 20;

std::vector<uint8_t> Changed(const std::string& bytes, unsigned seed) {
    std::vector<uint8_t> data(bytes.begin(), bytes.end());
    const size_t size = data.size();
    data.resize(size + kRoom);
    data.resize(LLVMFuzzerCustomMutator(data.data(), size, data.size(), seed));
    return data;
}

} // namespace

int main(int count, char** arguments) {
    namespace fs = std::filesystem;
    size_t inputs = 0;
    bool refused = false; // what names no effect, for one
    unsigned changes = 0;
    const fs::path changedInput = fs::temp_directory_path() / ("changed-input-" + std::to_string(getpid()));
    const auto replay = [&](const fs::path& file) {
        std::printf("%s\n", file.c_str());
        std::fflush(stdout);
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        refused |= LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()) != 0;
        for (unsigned seed = 0; seed < changes; ++seed) {
            std::printf("  change %u\n", seed);
            std::fflush(stdout);
            const std::vector<uint8_t> changed = Changed(bytes, seed);
            // Found there by whoever looks for the reason of a failure.
            std::ofstream(changedInput, std::ios::binary)
                .write(reinterpret_cast<const char*>(changed.data()),
                       static_cast<std::streamsize>(changed.size()));
            LLVMFuzzerTestOneInput(changed.data(), changed.size());
        }
        ++inputs;
    };
    for (int i = 1; i < count; ++i) {
        if (arguments[i] == std::string("--changes") && i + 1 < count && LLVMFuzzerCustomMutator) {
            changes = static_cast<unsigned>(std::stoul(arguments[++i]));
        } else if (fs::is_directory(arguments[i])) {
            for (const auto& entry : fs::recursive_directory_iterator(arguments[i]))
                if (entry.is_regular_file()) replay(entry.path());
        } else {
            replay(arguments[i]);
        }
    }
    fs::remove(changedInput);
    std::printf("%zu inputs\n", inputs);
    return inputs && !refused ? 0 : 1; // a corpus that is missing is no passed test
}
