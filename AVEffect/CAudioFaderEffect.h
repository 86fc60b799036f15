#pragma once
/// "audio_fader": a ramp of the gain over a stretch of time.
#include <optional>

#include "AVEffect/AudioFader.h"
#include "AVEffect/CBasedAudioEffect.h"

namespace AVBased {

/// Frames whose time stamp lies in the stretch, both ends included, take the ramp's next steps in the order
/// in which they come. When it has run, a fresh one is ready for the next frame of the stretch.
class CAudioFaderEffect final : public CBasedAudioEffect {
public:
    CAudioFaderEffect();

    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(IRawAudioFrame* frame) override;

private:
    /// What the ramp is made of; times in milliseconds, a negative scale is not set.
    struct Settings {
        int startTime;
        int duration;
        double startScale;
        double endScale;

        bool operator==(const Settings&) const = default;
    };
    void BuildAudioFader();

    std::optional<CAudioFader> m_Fader; // none until both scales are set
    Settings m_Settings;
};

} // namespace AVBased
