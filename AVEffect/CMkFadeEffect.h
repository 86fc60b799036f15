#pragma once
/// The second picture shows through the first more and more.
#include "AVEffect/MKBaseTransitionEffect.h"

namespace AVBased {

class CMkFadeEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;
};

} // namespace AVBased
