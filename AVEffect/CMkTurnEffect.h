#pragma once
/// The picture turns over about its middle row.
#include "AVEffect/MKBaseTransitionEffect.h"

namespace AVBased {

class CMkTurnEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;
};

} // namespace AVBased
