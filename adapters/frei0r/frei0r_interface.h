#pragma once
/// The frei0r interface, version 1.2, as far as modules need it: pictures of 4 bytes a pixel without padding,
/// the top line first. A host may run different instances on different threads, each on one at a time.
#include <cstdint>

extern "C" {

/// What a module is, and its colour model: bytes in memory.
enum {
    F0R_PLUGIN_TYPE_FILTER = 0,
    F0R_PLUGIN_TYPE_MIXER2 = 2,
    F0R_COLOR_MODEL_BGRA8888 = 0,
    F0R_COLOR_MODEL_PACKED32 = 2, ///< any order of the four
    FREI0R_MAJOR_VERSION = 1
};

/// How a parameter's value is passed: a double that is true from 0.5 on, a double, three floats, or the
/// address of a text; numbers from 0 to 1. There is a fifth type, a position, which not every host can set.
enum { F0R_PARAM_BOOL = 0, F0R_PARAM_DOUBLE = 1, F0R_PARAM_COLOR = 2, F0R_PARAM_STRING = 4 };

struct f0r_plugin_info_t {
    const char* name;
    const char* author;
    int plugin_type;
    int color_model;
    int frei0r_version;
    int major_version;
    int minor_version;
    int num_params;
    const char* explanation;
};

struct f0r_param_info_t {
    const char* name;
    int type;
    const char* explanation;
};

struct f0r_param_color_t {
    float r, g, b;
};

using f0r_instance_t = void*;
using f0r_param_t = void*;

/// Called once each; 0 from the first means failure.
int f0r_init();
void f0r_deinit();

/// The texts stay the module's. Allowed before f0r_init.
void f0r_get_plugin_info(f0r_plugin_info_t* info);
void f0r_get_param_info(f0r_param_info_t* info, int index);

/// An instance for pictures of that size; null on failure.
f0r_instance_t f0r_construct(unsigned width, unsigned height);
void f0r_destruct(f0r_instance_t instance);

/// A text that is set is copied; one that is asked for stays the instance's.
void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index);
void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index);

/// Time is said to be in seconds.
void f0r_update(f0r_instance_t instance, double time, const uint32_t* in, uint32_t* out);
void f0r_update2(f0r_instance_t instance, double time, const uint32_t* first, const uint32_t* second,
                 const uint32_t* third, uint32_t* out);
}
