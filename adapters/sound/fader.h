#pragma once
/// The fader's ramp by the sample.
#include <cstdint>

namespace AVBased::sound {

/// The ramp that the plug-in's fader makes of a stretch which it is handed as one frame: the same samples
/// have the same gain, wherever a host cuts them. The gain changes in steps of 5 ms of whole samples; a rest
/// shorter than half a step belongs to the one before it.
class FadeRamp {
public:
    /// Times in milliseconds, a length of -1 as the unsigned number that the plug-in takes it for; gains from
    /// 0 to 1, negative ones for no ramp.
    struct Settings {
        double start, length, startGain, endGain;

        bool operator==(const Settings&) const = default;
    };

    FadeRamp() = default;
    /// At least 200 samples a second.
    FadeRamp(const Settings& settings, uint64_t rate) noexcept;

    /// Samples from the first one of the stretch to behind its last.
    uint64_t First() const { return m_First; }
    uint64_t End() const { return m_End; }

    /// The gain of a sample of the stretch, and behind it the first sample that need not have it. Samples
    /// that are asked for one after the other have the sums that the plug-in adds up, others their product.
    double GainAt(uint64_t sample, uint64_t* until) noexcept;

private:
    uint64_t m_First = 0, m_End = 0; // samples; the same: no stretch
    uint64_t m_StepSamples = 1;
    uint64_t m_LastStep = 0;   // that begins within the stretch
    uint64_t m_Increments = 0; // steps until which the gain changes
    double m_StartGain = 1, m_Increment = 0;

    uint64_t m_Step = 0; // whose gain is known
    double m_Gain = 1;
};

} // namespace AVBased::sound
