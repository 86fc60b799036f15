// What hosts call in a module, handed on to the library beside it with the one thing that is the module's
// own.
#include "adapters/frei0r/module.h"

namespace module = aveffect::frei0r::module;

int f0r_init() { return 1; }

void f0r_deinit() {}

void f0r_get_plugin_info(f0r_plugin_info_t* info) { module::Describe(kModuleEffect, info); }

void f0r_get_param_info(f0r_param_info_t* info, int index) {
    module::DescribeParameter(kModuleEffect, info, index);
}

f0r_instance_t f0r_construct(unsigned width, unsigned height) {
    return module::Construct(kModuleEffect, width, height);
}

void f0r_destruct(f0r_instance_t instance) { module::Destruct(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    module::SetParameter(instance, value, index);
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    module::GetParameter(instance, value, index);
}

// Hosts give seconds, milliseconds or nothing of use for the time: nobody looks at it.
void f0r_update(f0r_instance_t instance, double /*time*/, const uint32_t* in, uint32_t* out) {
    module::Update(instance, in, nullptr, out);
}

void f0r_update2(f0r_instance_t instance, double /*time*/, const uint32_t* first, const uint32_t* second,
                 const uint32_t* /*third*/, uint32_t* out) {
    module::Update(instance, first, second, out);
}
