#include "host/output/edited_sound.h"

#include <string_view>

extern "C" {
#include <libavutil/avstring.h>
}

namespace aveffect {
namespace {

bool IsDiscarded(const AVIndexEntry& entry) { return (entry.flags & AVINDEX_DISCARD_FRAME) != 0; }

// Every packet tells all its samples.
bool StandsAlone(AVCodecID codec) {
    return std::string_view(avcodec_get_name(codec)).starts_with("pcm_") || codec == AV_CODEC_ID_FLAC ||
           codec == AV_CODEC_ID_ALAC;
}

// Up to 2112 samples of AAC and 5058 of HE-AAC, somewhat more than two packets; Opus tells its own.
bool IsPriming(const SoundEdit& edit, const AVStream& stream) {
    const int64_t own =
        av_rescale_q(stream.codecpar->initial_padding, {1, stream.codecpar->sample_rate}, stream.time_base);
    return edit.lead < 3 * edit.packet || edit.lead <= own;
}

} // namespace

// What demuxers make of an edit list stands in the index from the start; packets tell it only when they come.
std::optional<SoundEdit> EditOf(const AVFormatContext& input, const AVStream& stream) {
    if (!av_match_name("mp4", input.iformat->name) || stream.start_time == AV_NOPTS_VALUE)
        return std::nullopt;
    // The library does not change the stream, though it does not say so.
    auto* const indexed = const_cast<AVStream*>(&stream);
    const int count = avformat_index_get_entries_count(indexed);
    SoundEdit edit;
    edit.heardFrom = stream.start_time;
    bool heard = false, left = false, leftAfter = false;
    for (int index = 0; index < count; ++index) {
        const AVIndexEntry& entry = *avformat_index_get_entry(indexed, index);
        if (index == 0) edit.lead = edit.heardFrom - entry.timestamp;
        if (index == 1) edit.packet = entry.timestamp - (edit.heardFrom - edit.lead);
        left = left || IsDiscarded(entry);
        if (!IsDiscarded(entry)) {
            if (!heard) edit.cutsPacket = entry.timestamp < edit.heardFrom;
            edit.inside = edit.inside || leftAfter;
            heard = true;
        }
        leftAfter = heard && IsDiscarded(entry);
    }
    if (!left && edit.lead <= 0) return std::nullopt;
    return edit;
}

EditedCopy CopyOf(const SoundEdit& edit, const AVStream& stream, const OutputPlan& plan,
                  std::optional<int64_t> start) {
    if (edit.inside) return EditedCopy::None;
    if (start && *start >= edit.heardFrom) return EditedCopy::Heard;
    const bool alone = StandsAlone(stream.codecpar->codec_id);
    if (edit.lead <= 0 || (alone && !edit.cutsPacket)) return EditedCopy::Heard;
    if (!alone && IsPriming(edit, stream)) return EditedCopy::WithLead;
    return plan.HasIndex() && !start ? EditedCopy::WithLead : EditedCopy::None;
}

std::string EditedNote(const AVStream& stream) {
    return std::string("a part of the ") + avcodec_get_name(stream.codecpar->codec_id) +
           " sound is not heard, which a copy could not leave out; it is encoded again";
}

} // namespace aveffect
