#include "adapters/support/plugin_place.h"

#include <dlfcn.h>

#include <stdexcept>

namespace aveffect::adapters {

namespace fs = std::filesystem;

fs::path OwnDirectory() {
    Dl_info info{};
    static const char place = 0;
    if (dladdr(&place, &info) == 0) throw std::runtime_error("the modules' own folder can't be found");
    return fs::canonical(info.dli_fname).parent_path();
}

fs::path PluginDirectory() {
    const fs::path above = OwnDirectory().parent_path();
    const fs::path installed = above / "aveffect", built = above.parent_path() / "bin";
    std::error_code failure;
    return !fs::exists(installed, failure) && fs::exists(built / "libAVEffect.so", failure) ? built
                                                                                            : installed;
}

} // namespace aveffect::adapters
