#pragma once
/// The second picture closes in from both sides.
#include "AVEffect/MKBaseTransitionEffect.h"

namespace AVBased {

class CMkCloseDoorEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;
};

} // namespace AVBased
