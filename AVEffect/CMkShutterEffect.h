#pragma once
/// Upright slats of the second picture close over the first.
#include "AVEffect/MKBaseTransitionEffect.h"

namespace AVBased {

class CMkShutterEffect : public CMkBaseTransitionEffect {
public:
    using CMkBaseTransitionEffect::CMkBaseTransitionEffect;
    bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                        int time) override;

private:
    void Draw(const Canvas& canvas, int time) const;
};

} // namespace AVBased
