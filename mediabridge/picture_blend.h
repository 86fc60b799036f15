#pragma once
/// What an effect made, blended with what was there before it.
#include <cstddef>
#include <cstdint>

#include "aveffect/video_frame.h"
#include "kernels/planes.h"
#include "mediabridge/av_ptr.h"

namespace mediabridge {

/// A number that no other mask has, for the pts of one that is drawn. From any thread.
int64_t NextMaskNumber();

/// Blends two top-down frames of one format and size, all of their planes, alpha too. The first is changed in
/// place, bytes beyond its rows stay; each sample is the nearest to plain arithmetic. Used by one thread at a
/// time.
///
/// A strength is 0 (the picture before) to 1 (the effect), to the nearest 32768th; other numbers count as the
/// nearer of the two. Results are false, with nothing changed, when the frames differ in format or size, or
/// when effects don't serve the format. Throws std::bad_alloc when memory is short for a mask.
class PictureBlend {
public:
    /// All of the picture by one strength.
    bool Mix(AVBased::IRawVideoFrame& frame, AVBased::IRawVideoFrame& before, double strength);

    /// Each pixel by its byte of a GRAY8 mask of the frame's size (255: the effect) times the strength,
    /// rounded to a byte; chroma by the mean of those that share it. What that takes is kept for the next
    /// frame: a mask of the same pts (NextMaskNumber) is the same one, without a pts it never is. False also
    /// when the mask is smaller or has another format.
    bool Mask(AVBased::IRawVideoFrame& frame, AVBased::IRawVideoFrame& before, const AVFrame& mask,
              double strength);

private:
    /// What the two below were made for.
    struct Made {
        int64_t mask = AV_NOPTS_VALUE;
        unsigned weight = 0;
        size_t columns = 0, rows = 0, chromaColumns = 0, chromaRows = 0;

        bool operator==(const Made&) const = default;
    };
    Made m_made;
    AVFramePtr m_scaled; ///< the mask times the strength
    AVFramePtr m_chroma; ///< the mask of the chroma planes
};

} // namespace mediabridge
