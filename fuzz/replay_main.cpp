// Runs a fuzz target's body over files and folders of inputs, as an ordinary test.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int count, char** arguments) {
    namespace fs = std::filesystem;
    size_t inputs = 0;
    bool refused = false; // what names no effect, for one
    const auto replay = [&](const fs::path& file) {
        std::printf("%s\n", file.c_str());
        std::fflush(stdout);
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        refused |= LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()) != 0;
        ++inputs;
    };
    for (int i = 1; i < count; ++i) {
        if (fs::is_directory(arguments[i])) {
            for (const auto& entry : fs::recursive_directory_iterator(arguments[i]))
                if (entry.is_regular_file()) replay(entry.path());
        } else {
            replay(arguments[i]);
        }
    }
    std::printf("%zu inputs\n", inputs);
    return inputs && !refused ? 0 : 1; // a corpus that is missing is no passed test
}
