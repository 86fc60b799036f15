#pragma once
/// A clock's hand sweeps the second picture in.
#include "AVEffect/MKBaseTransitionEffect.h"

namespace AVBased {

/// From twelve to twelve. After that, and so at the end itself, the frame's own picture stays.
class CMkClockEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;

private:
    static void DrawFirstQuarter(const Canvas& canvas, const Layers& layers, double angle);
    static void DrawMiddleQuarters(const Canvas& canvas, const Layers& layers, double angle);
    static void DrawLastQuarter(const Canvas& canvas, const Layers& layers, double angle);
};

} // namespace AVBased
