#include "AVEffect/support/plane_copy.h"

#include <algorithm>

#include "aveffect/base_media.h"

namespace AVBased {

namespace {

void Copy(uint8_t* to, const uint8_t* from, size_t bytes) {
    if (bytes) AVBasedMemCopy(to, from, bytes); // planes without bytes may have no address
}

} // namespace

void CopyRows(const Plane8& to, const Plane8& from) {
    const size_t bytes = std::min(to.width, from.width);
    for (size_t y = 0; y < std::min(to.rows, from.rows); ++y) Copy(to.Row(y), from.Row(y), bytes);
}

void CopyPicture(const Plane8& to, const Plane8& from) {
    if (to.pitch == from.pitch)
        Copy(to.data, from.data, std::min(to.rows, from.rows) * to.pitch);
    else
        CopyRows(to, from);
}

} // namespace AVBased
