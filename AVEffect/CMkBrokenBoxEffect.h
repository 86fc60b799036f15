#pragma once
/// Staggered boxes of the second picture shrink until it shows whole.
#include "AVEffect/MKBaseTransitionEffect.h"

namespace AVBased {

class CMkBrokenBoxEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;
};

} // namespace AVBased
