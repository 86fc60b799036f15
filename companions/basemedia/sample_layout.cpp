#include "companions/basemedia/sample_layout.h"

#include <algorithm>
#include <bit>

#include "aveffect/audio_frame.h"
#include "mediabridge/audio_frame.h"

namespace basemedia {
namespace {

void FlipSigns(const SampleLayout& layout, std::span<unsigned char> samples) {
    static_assert(std::endian::native == std::endian::little,
                  "the top byte of a sample is taken to be its last");
    for (std::size_t top = layout.bytes - 1; top < samples.size(); top += layout.bytes) samples[top] ^= 0x80;
}

AVSampleFormat PackedFormat(int format) {
    switch (format) {
    case AVBased::sfSigned8:
    case AVBased::sfUnsigned8:
        return AV_SAMPLE_FMT_U8;
    case AVBased::sfSigned16:
    case AVBased::sfUnsigned16:
        return AV_SAMPLE_FMT_S16;
    case AVBased::sfSigned32:
    case AVBased::sfUnsigned32:
        return AV_SAMPLE_FMT_S32;
    case AVBased::sfFloat:
        return AV_SAMPLE_FMT_FLT;
    case AVBased::sfDouble:
        return AV_SAMPLE_FMT_DBL;
    default:
        return AV_SAMPLE_FMT_NONE;
    }
}

} // namespace

std::optional<SampleLayout> FindSampleLayout(int format) {
    const AVSampleFormat packed = PackedFormat(format);
    if (packed == AV_SAMPLE_FMT_NONE) return std::nullopt;
    // The library knows 8 bits without a sign and wider integers with one.
    const bool flipSign =
        format == AVBased::sfSigned8 || format == AVBased::sfUnsigned16 || format == AVBased::sfUnsigned32;
    return SampleLayout{packed, mediabridge::SampleBytes(format), flipSign};
}

void ToLibrary(const SampleLayout& layout, bool swapBytes, std::span<unsigned char> samples) {
    if (swapBytes && layout.bytes > 1)
        for (std::size_t at = 0; at + layout.bytes <= samples.size(); at += layout.bytes)
            std::ranges::reverse(samples.subspan(at, layout.bytes));
    if (layout.flipSign) FlipSigns(layout, samples);
}

void FromLibrary(const SampleLayout& layout, std::span<unsigned char> samples) {
    if (layout.flipSign) FlipSigns(layout, samples);
}

} // namespace basemedia
