#pragma once
/// The first picture is rolled up from the left; its edge is a bright roll.
#include "AVEffect/MKBaseTransitionEffect.h"
#include "AVEffect/scratch.h"

namespace AVBased {

class CMkRollEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;

private:
    void Roll(const Canvas& canvas, size_t shift);

    Scratch m_Gains;
};

} // namespace AVBased
