#pragma once
/// What a clip holds, found by reading it through once.
#include <atomic>
#include <optional>
#include <string>

#include "host/media/source.h"

namespace aveffect {

/// Sound as encoders take it.
struct SoundShape {
    int rate = 0;       ///< Hz
    std::string layout; ///< in libavutil's words

    bool operator==(const SoundShape&) const = default;
};

/// The layout's text, a usual layout of as many channels where it has none.
std::string LayoutText(const AVChannelLayout& layout);

struct ClipScan : ClipEnd {
    SourceRequest request;
    AVRational rate{25, 1};                 ///< pictures a second
    Moment start;                           ///< of the clip, in the file's times
    AVPixelFormat format = AV_PIX_FMT_NONE; ///< of the first picture
    std::optional<SoundShape> sound = {};

    /// Pictures that the clip gives at a constant rate; at least 1.
    int64_t PicturesAt(AVRational wanted) const;
    int64_t LengthMs() const { return av_rescale_q(end.ticks, end.base, kMilliseconds); }
};

/// Reads a source: decodes its first picture, and counts the packets up to its end, since
/// not every container tells the length of its pictures, or tells it truly. Throws Error (Input) when the
/// source can't be opened twice, is no media or gives no picture, and Error (Interrupted). Where the end is
/// known already, the packets are left.
ClipScan ScanClip(const SourceRequest& request, const std::atomic<bool>& cancel,
                  const std::optional<ClipEnd>& known = {});

} // namespace aveffect
