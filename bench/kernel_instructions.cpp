// Runs each kernel once between two lines that go out by themselves, so that whoever counts instructions
// outside (an emulator) can tell whose they are: bench/instructions.sh.
#include <unistd.h>

#include <memory>

#include "bench/kernel_calls.h"

namespace {

constexpr size_t kWidth = 64, kHeight = 16;

void Say(const std::string& line) {
    if (write(STDOUT_FILENO, line.data(), line.size()) < 0) std::abort();
}

} // namespace

int main() {
    using namespace bench;
    std::vector<KernelCall> calls;
    AddSampleCalls(calls, ~0u);
    AddPlaceCalls(calls, ~0u);
    AddDrawingCalls(calls, ~0u);
    for (const KernelCall& call : calls) {
        const size_t pitch = kWidth * call.unitBytes, bytes = pitch * kHeight;
        std::vector<std::vector<uint8_t>> memories(call.planes, std::vector<uint8_t>(bytes));
        std::vector<Plane8> planes;
        uint32_t grain = 1;
        for (auto& memory : memories) {
            for (uint8_t& byte : memory)
                byte = static_cast<uint8_t>((grain = grain * 1664525 + 1013904223) >> 24);
            planes.push_back({memory.data(), pitch, pitch, kHeight});
        }
        call.run(planes); // scratch is there then
        Say("begin " + std::to_string(bytes * call.planes) + " " + call.name + "\n");
        call.run(planes);
        Say("end\n");
    }
}
