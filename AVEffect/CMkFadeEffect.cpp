#include "AVEffect/CMkFadeEffect.h"

#include "kernels/transition.h"

namespace AVBased {

bool CMkFadeEffect::BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                   int time) {
    return DrawFromStart(out, first, second, time, [&](const Canvas& canvas) {
        const auto pixels = [&](const Plane8& plane) {
            return Plane32{plane.data, canvas.width, plane.pitch, canvas.height};
        };
        Kernels<kernels::TransitionKernels>().crossFadeRgba32(pixels(canvas.out), pixels(canvas.first),
                                                              pixels(canvas.second), Progress(time));
    });
}

} // namespace AVBased
