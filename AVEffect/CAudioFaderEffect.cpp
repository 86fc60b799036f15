#include "AVEffect/CAudioFaderEffect.h"

#include "BaseTools/guarded.h"
#include "aveffect/catalogue/sounds.h"

namespace AVBased {

CAudioFaderEffect::CAudioFaderEffect()
    : CBasedAudioEffect(catalogue::kFadeSound) {
    Bind("fader_start_time", &m_Settings.startTime);
    Bind("fader_duration", &m_Settings.duration);
    Bind("fader_start_scale", &m_Settings.startScale);
    Bind("fader_end_scale", &m_Settings.endScale);
}

void CAudioFaderEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    const Settings previous = m_Settings;
    CBasedAudioEffect::OnSetProperty(name, node);
    if (m_Settings == previous) return;
    if (m_Settings.startScale >= 0.0 && m_Settings.endScale >= 0.0) BuildAudioFader();
}

void CAudioFaderEffect::BuildAudioFader() {
    m_Fader.emplace(static_cast<unsigned>(m_Settings.duration), m_Settings.startScale, m_Settings.endScale);
}

void CAudioFaderEffect::InnerProcFrame(IRawAudioFrame* frame) {
    if (!frame) BaseTool::Raise(kBadPointer, "Bad pointer");
    // Unsigned: with the duration of -1 that it has at first, a stretch that begins at 0 never ends.
    const auto start = static_cast<unsigned>(m_Settings.startTime);
    const unsigned end = start + static_cast<unsigned>(m_Settings.duration);
    const unsigned time = frame->GetTimeStamp();
    if (!m_Fader || time < start || time > end) return;
    if (!m_Fader->Fade(frame)) BuildAudioFader();
}

} // namespace AVBased
