// The module that the host finds. People link it into the folders that hosts look into, where no library
// would find those beside it: what works is opened by its real place.
#include <dlfcn.h>

#include <exception>
#include <stdexcept>

#include <framework/mlt.h>

#include "adapters/support/plugin_place.h"

namespace {

using Register = void(mlt_repository);

Register* FindRegister() {
    const std::filesystem::path file = aveffect::adapters::OwnDirectory() / "libaveffect_mlt.so";
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const address = library ? dlsym(library, "aveffect_mlt_register") : nullptr;
    if (!address) throw std::runtime_error(dlerror());
    return reinterpret_cast<Register*>(address);
}

} // namespace

extern "C" __attribute__((visibility("default"))) MLT_REPOSITORY {
    try {
        FindRegister()(repository);
    } catch (const std::exception& failure) {
        mlt_log_error(nullptr, "aveffect: there are no effects: %s\n", failure.what());
    }
}
