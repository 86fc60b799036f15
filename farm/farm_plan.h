#pragma once
/// What a render is shared out by: which machine makes which part, and how the parts become one file.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/rational.h>
}

#include "host/media/moment.h"

namespace aveffect {

/// Pictures that are rendered together.
struct PlannedChunk {
    int64_t begin = 0, end = 0;         ///< of the output's pictures, from begin on up to the one before end
    std::optional<int64_t> fromMs = {}; ///< of a clip: what is read
    std::optional<int64_t> toMs = {};
    std::optional<int64_t> startTicks =
        {}; ///< when the first one is shown, where pictures have times of their own
};

/// A file that is read, with its size, by which another machine's file of that name is told apart.
struct PlannedMedium {
    std::string name;
    int64_t bytes;
};

/// Neither clocks nor places of one machine: names count from a root that each machine has for itself.
struct FarmPlan {
    std::string version;            ///< of the program; others refuse it
    std::vector<std::string> words; ///< the command that is shared out, as it would be given alone
    std::string output;             ///< the file that it would write
    std::string kind;               ///< of the chunks' files: an extension
    bool numbered = false;          ///< chunks are directories of numbered pictures
    unsigned seed = 1;              ///< of random numbers, for each picture
    AVRational rate{25, 1};         ///< pictures a second; about, where they have times of their own
    AVRational ticks{1, 1000};      ///< seconds that the ticks below are
    int64_t firstTicks = 0;         ///< when the first picture is shown
    int64_t wholeStart = 0;         ///< of a clip: as ClipShare has them
    std::optional<int64_t> wholeToMs = {}, wholeLengthMs = {};
    std::vector<PlannedMedium> media;
    std::vector<ClipEnd> clipEnds; ///< of a join's clips, so that no worker has to read them to their ends
    std::string probe;             ///< what the first picture is encoded to, as a checksum
    std::vector<PlannedChunk> chunks;

    /// Chunks, and behind them what lies beside the pictures as one more.
    int64_t Parts() const { return static_cast<int64_t>(chunks.size()) + 1; }
};

std::string PlanText(const FarmPlan& plan);
/// Throws Error (Input) that names the file and says what is wrong with it.
FarmPlan ParsePlan(const std::string& text, const std::string& path);

} // namespace aveffect
