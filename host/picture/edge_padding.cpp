#include "host/picture/edge_padding.h"

#include <array>
#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "host/support/error.h"
#include "mediabridge/picture_pool.h"

namespace aveffect {
namespace {

/// A plane of a format: bytes from one of its samples to the next, and by how much it is smaller than the
/// picture.
struct PlaneShape {
    int step = 0;
    int shiftX = 0, shiftY = 0;
};

std::array<PlaneShape, 4> PlanesOf(const AVPixFmtDescriptor& format) {
    std::array<PlaneShape, 4> planes;
    for (int index = 0; index < format.nb_components; ++index) {
        const AVComponentDescriptor& component = format.comp[index];
        const bool chroma = (index == 1 || index == 2) && component.plane > 0;
        planes[static_cast<size_t>(component.plane)] = {component.step, chroma ? format.log2_chroma_w : 0,
                                                        chroma ? format.log2_chroma_h : 0};
    }
    return planes;
}

} // namespace

mediabridge::AVFramePtr PadByEdge(const AVFrame& picture, int width, int height) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    mediabridge::AVFramePtr padded = mediabridge::AllocatePicture(format, width, height);
    if (!padded || av_frame_copy_props(padded.get(), &picture) < 0)
        throw NoMemory("no memory for a picture of " + std::to_string(width) + "x" + std::to_string(height));
    const auto planes = PlanesOf(*av_pix_fmt_desc_get(format));
    for (size_t index = 0; index < planes.size() && planes[index].step > 0; ++index) {
        const auto& [step, shiftX, shiftY] = planes[index];
        const int columns = AV_CEIL_RSHIFT(picture.width, shiftX),
                  rows = AV_CEIL_RSHIFT(picture.height, shiftY);
        const int wide = AV_CEIL_RSHIFT(width, shiftX), high = AV_CEIL_RSHIFT(height, shiftY);
        uint8_t* const data = padded->data[index];
        const ptrdiff_t pitch = padded->linesize[index];
        const auto bytes = [step = static_cast<size_t>(step)](int samples) {
            return static_cast<size_t>(samples) * step;
        };
        for (int row = 0; row < high; ++row) {
            uint8_t* const line = data + row * pitch;
            if (row >= rows) {
                std::memcpy(line, line - pitch, bytes(wide));
                continue;
            }
            std::memcpy(line, picture.data[index] + ptrdiff_t{row} * picture.linesize[index], bytes(columns));
            for (int column = columns; column < wide; ++column)
                std::memcpy(line + bytes(column), line + bytes(column - 1), bytes(1));
        }
    }
    return padded;
}

} // namespace aveffect
