#include "AVEffect/AudioFader.h"

#include <algorithm>
#include <cassert>
#include <cstdint>

#include "BaseTools/CBaseException.h"
#include "BaseTools/guarded.h"
#include "kernels/sound.h"

namespace AVBased {

namespace {

constexpr unsigned kStepMilliseconds = 5;
constexpr unsigned kMillisecondsPerSecond = 1000;

// The assertion of a format's case, with the sample's type in its text.
// clang-format off
#define AVEFFECT_CASE_STARTS_INSIDE(Format, Type)                                                            \
    case Format:                                                                                             \
        assert(sampleOffset*nChannels*sizeof(Type) < nSize);                                                 \
        break;
// clang-format on

void RequireStartInside(int format, size_t sampleOffset, size_t nChannels, unsigned nSize) {
    switch (format) {
        AVEFFECT_CASE_STARTS_INSIDE(sfSigned8, int8_t)
        AVEFFECT_CASE_STARTS_INSIDE(sfUnsigned8, uint8_t)
        AVEFFECT_CASE_STARTS_INSIDE(sfSigned16, int16_t)
        AVEFFECT_CASE_STARTS_INSIDE(sfUnsigned16, uint16_t)
        AVEFFECT_CASE_STARTS_INSIDE(sfSigned32, int32_t)
        AVEFFECT_CASE_STARTS_INSIDE(sfFloat, float)
        AVEFFECT_CASE_STARTS_INSIDE(sfDouble, double)
    default:
        break; // sfUnsigned32 has none
    }
}

constexpr size_t SampleBytes(int format) {
    switch (format) {
    case sfSigned8:
    case sfUnsigned8:
        return 1;
    case sfSigned16:
    case sfUnsigned16:
        return 2;
    case sfDouble:
        return 8;
    default:
        return 4;
    }
}

/// Samples of a buffer, as an index and a count; negative ones become huge, that is, lie beyond the end.
struct Range {
    size_t first, count;
};

void ScaleRange(unsigned char* buffer, unsigned bytes, size_t sampleBytes, Range range,
                kernels::ScaleSamples kernel, double scale) {
    const size_t held = bytes / sampleBytes;
    if (!buffer || range.first >= held) return;
    kernel(buffer + range.first * sampleBytes, std::min(range.count, held - range.first), scale);
}

} // namespace

void ProcessAudioFade(IRawAudioFrame* frame, double scale, int sampleOffset, int sampleCount) {
    const int format = frame->GetSampleFormat(), channels = frame->GetChannels();
    const auto& kernels = Kernels<kernels::SoundKernels>();
    if (format < 0 || format > kernels::kLastSampleFormat || !kernels.scale[format]) return;
    if (channels <= 0 || sampleCount <= 0) return;

    const Range range = {static_cast<size_t>(sampleOffset), static_cast<size_t>(sampleCount)};
    unsigned size = 0;
    if (frame->IsInterleaved()) {
        unsigned char* const buffer = frame->GetBuffer(0, &size);
        const auto each = static_cast<size_t>(channels);
        RequireStartInside(format, range.first, each, size);
        ScaleRange(buffer, size, SampleBytes(format), {range.first * each, range.count * each},
                   kernels.scale[format], scale);
        return;
    }
    const auto& kernel = (frame->IsLittleEndian() ? kernels.scale : kernels.scaleSwapped)[format];
    for (int channel = 0; channel < channels; ++channel) {
        size = 0;
        unsigned char* const buffer = frame->GetBuffer(channel, &size);
        ScaleRange(buffer, size, SampleBytes(format), range, kernel, scale);
    }
}

CAudioFader::CAudioFader(unsigned duration, double start, double end)
    : m_dCurScale(start)
    , m_dStep(duration < kStepMilliseconds ? 0.0 : (end - start) / duration * kStepMilliseconds)
    , m_nDuration(duration) {}

void CAudioFader::Advance(unsigned milliseconds) {
    if (m_nElapsed < m_nDuration) m_dCurScale += m_dStep;
    m_nElapsed += milliseconds;
    if (m_dCurScale > 1.0)
        m_dCurScale = 1.0;
    else if (m_dCurScale < 0.0)
        m_dCurScale = 0.0;
}

bool CAudioFader::Fade(IRawAudioFrame* frame) {
    const unsigned samples = frame->GetSampleCount(), rate = frame->GetSampleRate();
    const unsigned chunk = rate * kStepMilliseconds / kMillisecondsPerSecond;
    const unsigned half = rate * kStepMilliseconds / (2 * kMillisecondsPerSecond);
    if (chunk == 0)
        BaseTool::Raise(kUnknownException, "A sample rate below 200 Hz has no steps of 5 ms to fade in");

    unsigned chunks = samples / chunk, tail = samples % chunk;
    if (tail != 0 && tail < half && chunks != 0) {
        --chunks;
        tail += chunk;
    }
    for (unsigned i = 0; i < chunks; ++i) {
        ProcessAudioFade(frame, m_dCurScale, static_cast<int>(i * chunk), static_cast<int>(chunk));
        Advance(kStepMilliseconds);
    }
    if (tail != 0) {
        ProcessAudioFade(frame, m_dCurScale, static_cast<int>(chunks * chunk), static_cast<int>(tail));
        Advance(static_cast<unsigned>(uint64_t{tail} * kMillisecondsPerSecond / rate));
    }
    return m_nElapsed < m_nDuration;
}

} // namespace AVBased
