#include "adapters/sound/effects.h"

#include <algorithm>
#include <array>
#include <new>

#include "adapters/sound/fader.h"
#include "aveffect/audio_frame.h"
#include "kernels/sound.h"

namespace AVBased::sound {

namespace {

constexpr double kLeastRate = 200; // 5 ms are a sample
constexpr double kMostRate = 1e7;

/// A control's range for each property.
template <const EffectInfo& kInfo>
constexpr auto kControls = [] {
    std::array<ControlRange, kInfo.properties.size()> ranges{};
    static_assert(ranges.size() <= kMostControls);
    for (size_t i = 0; i < ranges.size(); ++i) ranges[i] = RangeOf(kInfo.properties[i]);
    return ranges;
}();

/// An effect's channel with its controls and the plug-in's own kernel: products limited to -1..1.
template <const EffectInfo& kInfo>
class ScalingChannel : public Channel {
protected:
    ScalingChannel() noexcept
        : Channel(kControls<kInfo>)
        , m_Scale(Kernels<kernels::SoundKernels>().scale[sfFloat]) {}

    void Scale(float* samples, size_t count, double gain) const noexcept {
        m_Scale(reinterpret_cast<uint8_t*>(samples), count, gain);
    }

private:
    const kernels::ScaleSamples m_Scale;
};

class VolumeChannel final : public ScalingChannel<catalogue::kVolume> {
    void Work(float* samples, size_t count, std::span<const double> controls) noexcept override {
        const double percent = controls[0];
        if (percent == 100) return;
        // The plug-in's gain, which is a whole number of 256ths.
        Scale(samples, count, static_cast<int>(percent / 100.0 * 256.0) / 256.0);
    }
};

class FaderChannel final : public ScalingChannel<catalogue::kFadeSound> {
public:
    explicit FaderChannel(uint64_t rate) noexcept
        : m_Rate(rate) {}

    void Begin() noexcept override {
        m_Position = 0;
        m_Ramp = FadeRamp(m_Settings, m_Rate);
    }

private:
    /// Other settings are another ramp, at the place where the sound is.
    void Work(float* samples, size_t count, std::span<const double> controls) noexcept override {
        const FadeRamp::Settings settings = {controls[0], controls[1], controls[2], controls[3]};
        if (settings != m_Settings) m_Ramp = FadeRamp(m_Settings = settings, m_Rate);
        const uint64_t begin = m_Position, end = m_Position += count;
        const uint64_t stop = std::min(end, m_Ramp.End());
        for (uint64_t at = std::max(begin, m_Ramp.First()), until = 0; at < stop; at = until) {
            const double gain = m_Ramp.GainAt(at, &until);
            until = std::min(until, stop);
            Scale(samples + (at - begin), until - at, gain);
        }
    }

    const uint64_t m_Rate;
    uint64_t m_Position = 0; // of the next sample
    FadeRamp::Settings m_Settings = {0, 0, -1, -1};
    FadeRamp m_Ramp;
};

} // namespace

std::unique_ptr<Channel> MakeChannel(size_t effect, double rate) noexcept {
    if (!(rate >= kLeastRate && rate <= kMostRate)) return nullptr;
    const EffectInfo* const info = kEffects[effect];
    if (info == &catalogue::kVolume) return std::unique_ptr<Channel>(new (std::nothrow) VolumeChannel);
    return std::unique_ptr<Channel>(new (std::nothrow) FaderChannel(static_cast<uint64_t>(rate)));
}

} // namespace AVBased::sound
