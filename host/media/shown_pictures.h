#pragma once
/// The pictures of a clip that are shown at moments.
#include <utility>

#include "host/media/source.h"

namespace aveffect {

/// Goes through a clip from the first moment that is asked for on. Used by one thread at a time.
class ShownPictures {
public:
    /// The source, of which nothing has been read, and the flag outlive this.
    ShownPictures(Source& source, const std::atomic<bool>& cancel)
        : m_source(source)
        , m_cancel(cancel) {}

    /// The picture shown at a moment of the clip, in milliseconds: the last one that starts at or before it,
    /// or the clip's first. Moments never go back. Throws Error.
    mediabridge::AVFramePtr At(int64_t atMs);

    /// Whether At() may be asked for that moment, and finds it sooner than from anew.
    bool IsNear(int64_t atMs) const;

private:
    bool Begins(const AVFrame& picture, int64_t atMs) const;
    mediabridge::AVFramePtr Read();

    Source& m_source;
    const std::atomic<bool>& m_cancel;
    mediabridge::AVFramePtr m_shown, m_next;
    bool m_begun = false;
};

} // namespace aveffect
