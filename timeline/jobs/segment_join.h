#pragma once
/// One file of pieces that were encoded alike.
#include <functional>
#include <string>
#include <vector>

#include "host/jobs/transition.h"
#include "host/output/output_plan.h"
#include "host/output/sound_stream.h"

namespace aveffect {

/// An encoded piece.
struct Segment {
    std::string path;
    int64_t pictures;
    std::optional<int64_t> delay = {}; ///< as DelayOf() finds it; absent: it is looked for
    std::optional<Moment> start = {};  ///< in the film, where pictures have times of their own
};

/// Packets come as they are decoded, which may be before they are shown: by how many pictures at the most.
int64_t DelayOf(const std::string& path, AVRational rate, const std::atomic<bool>& cancel);

/// Pieces one after the other, and what lies beside them.
struct SegmentRow {
    std::vector<Segment> segments;
    AVRational rate;           ///< pictures a second; where they have times of their own, about
    Moment first = {};         ///< of the first picture, where the rate is constant
    std::string beside = {};   ///< a file whose streams lie beside the pictures; empty: there is none
    int64_t besideShiftUs = 0; ///< microseconds by which they begin earlier than that file says
    /// Told each packet of a piece, by the piece's number, and null at its end. May throw.
    std::function<void(size_t, const AVPacket*)> check = {};
};

/// Copies the pieces' pictures one after the other, and encodes the sound beside them. Tags and chapters are
/// the first piece's. The file appears under its name only when it is whole. What is said of the sound's
/// damage. Throws Error: Output also when pieces don't go together.
DamageReport JoinSegments(const SegmentRow& row, const OutputPlan& plan, bool overwrite,
                          std::optional<SoundFeed> sound, const std::atomic<bool>& cancel);

} // namespace aveffect
