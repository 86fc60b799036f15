#pragma once
/// The first picture is rolled up from the left; its edge is a bright roll.
#include "AVEffect/MKBaseTransitionEffect.h"
#include "AVEffect/support/scratch.h"
#include "kernels/transition.h"

namespace AVBased {

class CMkRollEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;

private:
    kernels::ColumnGains Gains(size_t width);
    void Roll(const Canvas& canvas, size_t shift);

    Scratch m_Gains;
    size_t m_nGainsWidth = 0; // of the frame that they were made for
};

} // namespace AVBased
