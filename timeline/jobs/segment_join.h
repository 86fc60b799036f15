#pragma once
/// One file of pieces that were encoded alike.
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
};

/// Copies the pieces' pictures one after the other, at a constant rate, and encodes the sound beside them.
/// The file appears under its name only when it is whole. What is said of the sound's damage. Throws Error:
/// Output also when pieces don't go together.
DamageReport JoinSegments(const std::vector<Segment>& segments, AVRational rate, const OutputPlan& plan,
                          bool overwrite, std::optional<SoundFeed> sound, const std::atomic<bool>& cancel);

} // namespace aveffect
