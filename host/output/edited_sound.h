#pragma once
/// Sound of which its own file leaves parts out, as the edit lists of MP4 and MOV do.
#include <cstdint>
#include <optional>
#include <string>

#include "host/output/output_plan.h"

namespace aveffect {

/// What a file's edit list leaves out of a stream, in the stream's time base and the file's times.
struct SoundEdit {
    int64_t heardFrom = 0;   ///< the first sample that is heard
    int64_t lead = 0;        ///< how much lies before it, which decoders may need all the same
    int64_t packet = 0;      ///< length of the first packet
    bool cutsPacket = false; ///< the lead ends inside a packet
    bool inside = false;     ///< packets between others are left out too
};

/// Absent where all packets are heard, or the file has no edit list.
std::optional<SoundEdit> EditOf(const AVFormatContext& input, const AVStream& stream);

/// What may become of such a stream's packets in another file.
enum class EditedCopy {
    Heard,    ///< those that are heard are copied
    WithLead, ///< the lead too: it is what encoders put before sound, or the file says that it is not heard
    None      ///< the sound has to be encoded again
};

/// A start (in the stream's base, the file's times) is where the packets that are copied begin; absent: with
/// the stream.
EditedCopy CopyOf(const SoundEdit& edit, const AVStream& stream, const OutputPlan& plan,
                  std::optional<int64_t> start);

/// Why it is encoded again.
std::string EditedNote(const AVStream& stream);

} // namespace aveffect
