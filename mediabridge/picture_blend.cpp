#include "mediabridge/picture_blend.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <new>

#include "aveffect/pixel_format.h"
#include "kernels/blend.h"
#include "mediabridge/frame_planes.h"
#include "mediabridge/picture_pool.h"

namespace mediabridge {
namespace {

using namespace AVBased;
using kernels::BlendKernels;
using kernels::kWholeWeight;
using kernels::Plane32;
using kernels::Plane8;

/// The planes of a pair of frames that match.
struct Pair {
    const FormatLayout* layout = nullptr; ///< null when they don't
    std::array<Plane8, 4> to = {}, before = {};

    Pair(IRawVideoFrame& frame, IRawVideoFrame& other) {
        const unsigned format = frame.GetPixelFormat();
        if (!IsEffectFormat(format) || other.GetPixelFormat() != format) return;
        const FormatLayout* const found = FindPixelFormat(format);
        for (unsigned i = 0; i < found->planeCount; ++i) {
            to[i] = PlaneAt(frame, i);
            before[i] = PlaneAt(other, i);
            if (to[i].width != before[i].width || to[i].rows != before[i].rows) return;
        }
        layout = found;
    }
    static Plane8 PlaneAt(IRawVideoFrame& frame, unsigned index) {
        unsigned widthBytes = 0, pitch = 0, rows = 0;
        unsigned char* const data = frame.GetBuffer(index, &widthBytes, &pitch, &rows);
        return {data, widthBytes, pitch, rows};
    }
    size_t Columns() const { return layout->packed ? to[0].width / 4 : to[0].width; }
};

unsigned WeightOf(double strength) {
    if (!(strength > 0)) return 0;
    return static_cast<unsigned>(std::lround(std::min(strength, 1.0) * kWholeWeight));
}

Plane32 Pixels(const Plane8& plane) { return {plane.data, plane.width / 4, plane.pitch, plane.rows}; }

/// Grey of that size, in the same memory as the last time where that fits.
void Prepare(AVFramePtr& grey, size_t width, size_t rows) {
    const int columns = static_cast<int>(width), lines = static_cast<int>(rows);
    if (!grey || grey->width != columns || grey->height != lines)
        grey = AllocatePicture(AV_PIX_FMT_GRAY8, columns, lines);
    if (!grey) throw std::bad_alloc();
}

} // namespace

int64_t NextMaskNumber() {
    static std::atomic<int64_t> number;
    return number++;
}

bool PictureBlend::Mix(IRawVideoFrame& frame, IRawVideoFrame& before, double strength) {
    const Pair pair(frame, before);
    if (!pair.layout) return false;
    for (size_t i = 0; i < pair.layout->planeCount; ++i)
        Kernels<BlendKernels>().mixBytes(pair.to[i], pair.before[i], WeightOf(strength));
    return true;
}

bool PictureBlend::Mask(IRawVideoFrame& frame, IRawVideoFrame& before, const AVFrame& mask, double strength) {
    const Pair pair(frame, before);
    if (!pair.layout || mask.format != AV_PIX_FMT_GRAY8) return false;
    Plane8 used = PlaneOf(mask, 0);
    if (used.width < pair.Columns() || used.rows < pair.to[0].rows) return false;
    if (pair.to[0].Empty()) return true;
    used.width = pair.Columns();
    used.rows = pair.to[0].rows;

    const auto& kernels = Kernels<BlendKernels>();
    const unsigned weight = WeightOf(strength);
    const bool subsampled = pair.layout->horizontalShift || pair.layout->verticalShift;
    const Plane8& chroma = pair.to[1];
    const Made wanted{mask.pts, weight, used.width, used.rows, chroma.width, chroma.rows};
    const bool made = mask.pts != AV_NOPTS_VALUE && wanted == m_made;
    m_made = {};
    if (weight < kWholeWeight) Prepare(m_scaled, used.width, used.rows);
    if (subsampled && !chroma.Empty()) Prepare(m_chroma, chroma.width, chroma.rows);

    m_made = wanted;
    if (weight < kWholeWeight) {
        const Plane8 scaled = PlaneOf(*m_scaled, 0);
        if (!made) kernels.scaleBytes(scaled, used, weight);
        used = scaled;
    }
    if (pair.layout->packed) {
        kernels.maskRgba32(Pixels(pair.to[0]), Pixels(pair.before[0]), used);
        return true;
    }
    Plane8 shared = used;
    if (subsampled && !chroma.Empty()) {
        shared = PlaneOf(*m_chroma, 0);
        if (!made) kernels.shrinkMask(shared, used, pair.layout->horizontalShift, pair.layout->verticalShift);
    }
    for (size_t i = 0; i < pair.layout->planeCount; ++i)
        kernels.maskBytes(pair.to[i], pair.before[i], i == 1 || i == 2 ? shared : used);
    return true;
}

} // namespace mediabridge
