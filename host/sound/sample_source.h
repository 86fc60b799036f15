#pragma once
/// Where samples come from.
#include <cstdint>

#include "mediabridge/av_ptr.h"

namespace aveffect {

/// Gives out samples in a row, of one format, rate and layout. Used by one thread at a time.
class SampleSource {
public:
    SampleSource() = default;
    virtual ~SampleSource() = default;
    SampleSource(const SampleSource&) = delete;
    SampleSource& operator=(const SampleSource&) = delete;

    /// Makes so many ready, and says how many are; fewer at the end. Throws Error.
    virtual int64_t Available(int64_t wanted) = 0;
    /// The next samples, which are ready. Throws Error (Effect) when memory is short.
    virtual mediabridge::AVFramePtr Pop(int64_t samples) = 0;
};

} // namespace aveffect
