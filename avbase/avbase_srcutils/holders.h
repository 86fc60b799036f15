#pragma once
/// Owners of what crosses the plug-in's boundary and has an end of its own kind.
#include <memory>

#include "BaseTools/guarded.h"
#include "aveffect/base_media.h"
#include "aveffect/media.h"
#include "aveffect/video_frame.h"

namespace AVBased {

/// Lets the host's and the companions' objects go, and records what they throw then.
struct Releaser {
    void operator()(IRawVideoFrame* frame) const {
        BaseTool::Guarded([&] { frame->Free(); });
    }
    void operator()(IAudioResampler* resampler) const {
        BaseTool::Guarded([&] { resampler->Destroy(); });
    }
    template <class Object>
    void operator()(Object* object) const {
        BaseTool::Guarded([&] { object->Release(); });
    }
};
template <class Object>
using Owned = std::unique_ptr<Object, Releaser>;

using FramePtr = Owned<IRawVideoFrame>;
using ConverterPtr = Owned<IImageConverter>;

} // namespace AVBased
