#include "python/core/the_plugin.h"

#include <dlfcn.h>

#include "aveffect/base_tools.h"
#include "host/support/error.h"

namespace aveffect::python {

const Plugin& ThePlugin() {
    static const Plugin* const plugin = [] {
        Dl_info info{};
        if (dladdr(reinterpret_cast<const void*>(&AVBasedSetLogLevel), &info) == 0)
            throw Error(ErrorKind::Effect, "the folder of the effects can't be found");
        // Never unloaded: threads of Python's may still be in it when the interpreter ends.
        return new Plugin(std::filesystem::canonical(info.dli_fname).parent_path());
    }();
    return *plugin;
}

} // namespace aveffect::python
