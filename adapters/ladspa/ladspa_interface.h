#pragma once
/// The interface of LADSPA 1.1 plug-ins: structures and numbers as hosts expect them.

namespace AVBased::ladspa {

using Handle = void*;

enum Properties : int {
    kHardRealTime = 0x4, ///< neither memory nor locks nor files, time in proportion to the samples
};

enum PortKind : int { kInput = 0x1, kOutput = 0x2, kControl = 0x4, kAudio = 0x8 };

enum Hint : int {
    kBoundedBelow = 0x1,
    kBoundedAbove = 0x2,
    kInteger = 0x20,
    kDefaultMinimum = 0x40,
    kDefaultMaximum = 0x140,
    kDefault0 = 0x200,
    kDefault1 = 0x240,
    kDefault100 = 0x280,
};

struct RangeHint {
    int hints;
    float lower;
    float upper;
};

struct Descriptor {
    unsigned long number; ///< no other plug-in has it
    const char* label;    ///< no other plug-in of the file has it; no blanks
    int properties;
    const char* name;
    const char* maker;
    const char* copyright;
    unsigned long portCount;
    const int* portKinds;
    const char* const* portNames;
    const RangeHint* rangeHints;
    void* own; ///< the plug-in's
    Handle (*instantiate)(const Descriptor* descriptor, unsigned long rate);
    void (*connectPort)(Handle instance, unsigned long port, float* place);
    void (*activate)(Handle instance);
    void (*run)(Handle instance, unsigned long count);
    void (*runAdding)(Handle instance, unsigned long count);
    void (*setRunAddingGain)(Handle instance, float gain);
    void (*deactivate)(Handle instance);
    void (*cleanup)(Handle instance);
};

} // namespace AVBased::ladspa
