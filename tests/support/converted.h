#pragma once
/// Pictures in another format, by the converter that hosts bring.
#include <algorithm>
#include <memory>

#include "aveffect/base_media.h"
#include "tests/support/host_frame.h"

namespace test {

struct ReleaseMedia {
    void operator()(AVBased::IRawVideoFrame* frame) const { frame->Free(); }
    template <class Object>
    void operator()(Object* object) const {
        object->Release();
    }
};
using ConvertedFrame = std::unique_ptr<AVBased::IRawVideoFrame, ReleaseMedia>;

/// Bicubic; of the same size where none is given.
inline ConvertedFrame Converted(AVBased::IRawVideoFrame& frame, unsigned format, unsigned width = 0,
                                unsigned height = 0) {
    const std::unique_ptr<AVBased::IImageConverter, ReleaseMedia> converter(
        CreateImageConverterEx(format, width, height, 4));
    return ConvertedFrame(converter->Convert(&frame));
}

/// The rows of as much of a picture as both frames have become those of the other.
inline void CopyPicture(HostFrame& to, AVBased::IRawVideoFrame& from) {
    for (unsigned i = 0; i < std::min<size_t>(to.planes.size(), from.GetBufferCount()); ++i) {
        unsigned width = 0, pitch = 0, rows = 0;
        const unsigned char* data = from.GetBuffer(i, &width, &pitch, &rows);
        for (unsigned y = 0; y < std::min(rows, to.planes[i].rows); ++y)
            std::copy_n(data + size_t{y} * pitch, std::min(width, to.planes[i].width),
                        &to.planes[i].At(0, y));
    }
}

} // namespace test
