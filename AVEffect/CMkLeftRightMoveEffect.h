#pragma once
/// The second picture pushes the first one out to the left.
#include "AVEffect/MKBaseTransitionEffect.h"

namespace AVBased {

class CMkLeftRightMoveEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;
};

} // namespace AVBased
