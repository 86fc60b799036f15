#pragma once
/// Which streams a render's output has, and what of its input becomes of each.
#include <memory>
#include <optional>
#include <string>

#include "host/effects/stereo.h"
#include "host/media/span.h"
#include "host/output/media_writer.h"
#include "host/sound/clip_sound.h"
#include "host/support/reporter.h"

namespace aveffect {

/// What becomes of a clip's sound.
struct SoundPlan {
    ClipSoundSetup clip;
    const std::string& codec; ///< encoder or codec name; empty: as UsualSoundCodec
    bool changes; ///< all sound goes through effects or an encoder; else what the container holds is copied
    bool endsWithPictures;
    std::optional<Moment> end; ///< otherwise, from the start, when it was asked for

    /// For SoundSupply::EndAt, beside pictures that end there.
    std::optional<Moment> EndBeside(const Moment& pictures) const {
        return endsWithPictures ? std::optional(pictures) : end;
    }
};

/// Adds a stream for that one's sound, changed and encoded, with its tags; without a stream, for the sound
/// that effects bring. Throws Error.
void AddClipSound(MediaWriter& output, const SoundPlan& plan, const SourceRequest& request,
                  const AVStream* stream, Reporter& reporter);

/// A clip and what is made of it. All of it outlives the output.
struct ClipMapping {
    /// Which of its streams the output has.
    enum class Streams { All, Pictures, Beside };

    const OutputPlan& plan;
    const Source& source;
    SpanLimits limits; ///< of the whole output
    bool overwrite;
    bool turned; ///< the pictures were turned upright, and what the input says of their sides is no more
    const SourceRequest& request;           ///< of the source
    const SoundPlan& sound;                 ///< what becomes of the sound
    std::optional<Presentation> views = {}; ///< how they hold two views; absent: as the input says
    std::optional<AVRational> rate = {};    ///< the pictures' own, whose ticks their times count
    Streams streams = Streams::All;         ///< Beside: all but the pictures
};

/// An output with the clip's streams, tags and chapters, started. Its pictures look like the sample and come
/// with pts and pkt_duration as SpanReader gives them; without a sample their packets are copied. Null where
/// nothing lies beside pictures that are left out. Throws Error: Usage for an encoder or a copied stream that
/// does not fit, Output, Interrupted.
std::unique_ptr<MediaWriter> OpenOutput(const ClipMapping& clip, const AVFrame* sample, Reporter& reporter,
                                        const std::atomic<bool>& cancel);

} // namespace aveffect
