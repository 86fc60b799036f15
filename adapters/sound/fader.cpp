#include "adapters/sound/fader.h"

#include <algorithm>

namespace AVBased::sound {

namespace {

constexpr unsigned kStepMilliseconds = 5;
constexpr unsigned kMillisecondsPerSecond = 1000;

uint64_t SamplesOf(uint64_t milliseconds, uint64_t rate) {
    return milliseconds / kMillisecondsPerSecond * rate +
           milliseconds % kMillisecondsPerSecond * rate / kMillisecondsPerSecond;
}

} // namespace

FadeRamp::FadeRamp(const Settings& settings, uint64_t rate) noexcept
    : m_StepSamples(rate * kStepMilliseconds / kMillisecondsPerSecond)
    , m_StartGain(settings.startGain)
    , m_Gain(settings.startGain) {
    if (settings.startGain < 0 || settings.endGain < 0) return;
    // The plug-in's times wrap at 32 bits: the length that never ends leaves no moment behind a later start.
    if (settings.length < 0 && settings.start > 0) return;
    const uint64_t length = settings.length < 0 ? UINT32_MAX : static_cast<uint64_t>(settings.length);
    const uint64_t samples = SamplesOf(length, rate);
    if (samples == 0) return;
    m_First = SamplesOf(static_cast<uint64_t>(settings.start), rate);
    m_End = m_First + samples;

    const uint64_t whole = samples / m_StepSamples, rest = samples % m_StepSamples;
    const uint64_t half = rate * kStepMilliseconds / (2 * kMillisecondsPerSecond);
    const bool joined = whole > 0 && rest < half;
    m_LastStep = joined || rest == 0 ? whole - 1 : whole;
    if (length < kStepMilliseconds) return;
    m_Increments = (length + kStepMilliseconds - 1) / kStepMilliseconds;
    m_Increment = (settings.endGain - settings.startGain) / static_cast<double>(length) * kStepMilliseconds;
}

double FadeRamp::GainAt(uint64_t sample, uint64_t* until) noexcept {
    const uint64_t step = std::min((sample - m_First) / m_StepSamples, m_LastStep);
    *until = step == m_LastStep ? m_End : m_First + (step + 1) * m_StepSamples;
    if (step == m_Step) return m_Gain;
    const uint64_t increments = std::min(step, m_Increments);
    if (step == m_Step + 1)
        m_Gain += increments == step ? m_Increment : 0;
    else
        m_Gain = m_StartGain + static_cast<double>(increments) * m_Increment;
    m_Gain = std::clamp(m_Gain, 0.0, 1.0);
    m_Step = step;
    return m_Gain;
}

} // namespace AVBased::sound
