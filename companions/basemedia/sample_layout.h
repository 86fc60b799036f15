#pragma once
/// Sample formats of the boundary in terms of libswresample: the one that differs from each by no more than
/// the byte order and the sign bit.
#include <cstddef>
#include <optional>
#include <span>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace basemedia {

struct SampleLayout {
    AVSampleFormat packed = AV_SAMPLE_FMT_NONE; ///< the library's format, interleaved
    std::size_t bytes = 0;                      ///< a sample
    bool flipSign = false;                      ///< the library's samples have the other sign bit

    AVSampleFormat LibraryFormat(bool interleaved) const {
        return interleaved ? packed : av_get_planar_sample_fmt(packed);
    }
};

/// Nothing for codes that are no sample format.
std::optional<SampleLayout> FindSampleLayout(int format);

/// Turns samples of the boundary, in native byte order or the other one, into the library's; the sign bit is
/// flipped last.
void ToLibrary(const SampleLayout& layout, bool swapBytes, std::span<unsigned char> samples);

/// Turns the library's samples into the boundary's, in native byte order.
void FromLibrary(const SampleLayout& layout, std::span<unsigned char> samples);

} // namespace basemedia
