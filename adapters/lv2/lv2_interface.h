#pragma once
/// The interface of LV2 plug-ins, as far as these need it: structures as hosts expect them.
#include <cstdint>

namespace AVBased::lv2 {

/// Stands before the effect's name in the catalogue.
constexpr char kUriPrefix[] = "urn:aveffect:";

using Handle = void*;

/// Something a host offers. None is needed here.
struct Feature;

struct Descriptor {
    const char* uri;
    Handle (*instantiate)(const Descriptor* descriptor, double rate, const char* bundle,
                          const Feature* const* features);
    void (*connectPort)(Handle instance, uint32_t port, void* place);
    void (*activate)(Handle instance);
    void (*run)(Handle instance, uint32_t count);
    void (*deactivate)(Handle instance);
    void (*cleanup)(Handle instance);
    const void* (*extensionData)(const char* uri);
};

} // namespace AVBased::lv2
