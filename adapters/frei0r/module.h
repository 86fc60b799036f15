#pragma once
/// What a module does, given which effect it is: the one library behind all of them. Nothing here throws.
#include "adapters/frei0r/frei0r_interface.h"

/// The short name of the effect that this module is; each module has its own.
extern const char kModuleEffect[];

namespace aveffect::frei0r::module {

/// Effects are named by their short names, which must be the catalogue's; texts stay for the life of the
/// process.
void Describe(const char* effect, f0r_plugin_info_t* info) noexcept;
/// An index that there is not leaves the description alone.
void DescribeParameter(const char* effect, f0r_param_info_t* info, int index) noexcept;

/// Null without memory, and for pictures that no effect can have.
f0r_instance_t Construct(const char* effect, unsigned width, unsigned height) noexcept;
/// Instances may be null, here and below.
void Destruct(f0r_instance_t instance) noexcept;
void SetParameter(f0r_instance_t instance, f0r_param_t value, int index) noexcept;
void GetParameter(f0r_instance_t instance, f0r_param_t value, int index) noexcept;
/// The second picture is for transitions, which pass the first one on without it.
void Update(f0r_instance_t instance, const uint32_t* first, const uint32_t* second, uint32_t* out) noexcept;

} // namespace aveffect::frei0r::module
