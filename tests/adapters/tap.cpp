// A module for tests: writes a line of what it sees to the file that AVEFFECT_TAP names, and passes it on.
#include <fcntl.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "adapters/frei0r/frei0r_interface.h"
#include "tests/adapters/picture_hash.h"

namespace {

struct Tap {
    unsigned width, height;
    std::string label;
};

} // namespace

int f0r_init() { return 1; }
void f0r_deinit() {}
void f0r_get_plugin_info(f0r_plugin_info_t* info) {
    *info = {"tap", "tests", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888, FREI0R_MAJOR_VERSION, 0, 1,
             1,     ""};
}
void f0r_get_param_info(f0r_param_info_t* info, int) { *info = {"label", F0R_PARAM_STRING, ""}; }
f0r_instance_t f0r_construct(unsigned width, unsigned height) { return new Tap{width, height, {}}; }
void f0r_destruct(f0r_instance_t instance) { delete static_cast<Tap*>(instance); }
void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int) {
    const char* const text = *static_cast<char**>(value);
    static_cast<Tap*>(instance)->label = text ? text : "";
}
void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int) {
    *static_cast<const char**>(value) = static_cast<Tap*>(instance)->label.c_str();
}

// One line: label, size, the picture's first address modulo 16, the time as the host gives it, the hash.
void f0r_update(f0r_instance_t instance, double time, const uint32_t* in, uint32_t* out) {
    const Tap& tap = *static_cast<Tap*>(instance);
    const size_t count = size_t{tap.width} * tap.height;
    char line[256];
    const int length = std::snprintf(
        line, sizeof line, "%s %ux%u %u %.3g %016" PRIx64 "\n", tap.label.c_str(), tap.width, tap.height,
        static_cast<unsigned>(reinterpret_cast<uintptr_t>(in) % 16), time, test::PictureHash(in, count));
    const char* const path = std::getenv("AVEFFECT_TAP");
    const int file = path ? open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file < 0 || write(file, line, static_cast<size_t>(length)) != length) std::abort();
    close(file);
    std::memcpy(out, in, count * sizeof *out);
}
