#pragma once
/// A linear ramp of the gain, in steps of 5 ms.
#include "aveffect/audio_frame.h"

namespace AVBased {

/// Multiplies so many samples of every channel by the scale, from the sample of that index on, and limits
/// them to their format's range (see kernels::ScaleSamples); what lies beyond a buffer's end is left out.
/// Other formats stay. In an interleaved frame, whose samples are in the machine's byte order, an offset
/// beyond the buffer fails an assertion that names the sample's type.
void ProcessAudioFade(IRawAudioFrame* frame, double scale, int sampleOffset, int sampleCount);

/// One run of the ramp. After its first step the scale is kept between 0 and 1.
class CAudioFader {
public:
    /// The duration is in milliseconds; below 5 ms the scale stays at the start.
    CAudioFader(unsigned duration, double start, double end);

    /// Applies the ramp's next steps to a frame: one for each whole 5 ms, and one for the rest. A rest
    /// shorter than half a step is added to the last whole one. False when the ramp has run its time. Throws
    /// CBaseException 10021008 for rates that have no sample in 5 ms.
    bool Fade(IRawAudioFrame* frame);

private:
    void Advance(unsigned milliseconds);

    double m_dCurScale; // of the next step
    double m_dStep;
    unsigned m_nDuration;
    unsigned m_nElapsed = 0; // milliseconds
};

} // namespace AVBased
