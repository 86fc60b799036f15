#pragma once
/// Owners of what crosses the plug-in's boundary and has an end of its own kind.
#include <memory>

#include "aveffect/base_media.h"
#include "aveffect/video_frame.h"

namespace AVBased {

struct FrameFreer {
    void operator()(IRawVideoFrame* frame) const { frame->Free(); }
};
using FramePtr = std::unique_ptr<IRawVideoFrame, FrameFreer>;

struct ConverterReleaser {
    void operator()(IImageConverter* converter) const { converter->Release(); }
};
using ConverterPtr = std::unique_ptr<IImageConverter, ConverterReleaser>;

} // namespace AVBased
