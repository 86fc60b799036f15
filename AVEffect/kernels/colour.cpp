#include "AVEffect/kernels/colour.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/colour.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

AVEFFECT_SELECT_BY_LEVEL(ColourKernels)

void FillPitch(Plane8 plane, uint8_t value) noexcept {
    if (plane.data) std::memset(plane.data, value, plane.pitch * plane.rows);
}

} // namespace AVBased::kernels
