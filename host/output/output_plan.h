#pragma once
/// What an output's name and the options say about how it is written, checked before anything is read.
#include <optional>
#include <string>
#include <vector>

#include "host/output/output_options.h"
#include "host/support/av_owner.h"
#include "host/support/reporter.h"

namespace aveffect {

/// The encoder and its settings.
struct EncoderChoice {
    const AVCodec* codec = nullptr;
    std::optional<double> crf;
    std::optional<int> quality;
    std::optional<int64_t> bitRate;
    EncoderSettings settings;
    std::string preset;
    unsigned threads = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE; ///< that was asked for; none: what suits codec and clip
    /// That the clip's stream says; fields are coded too where its first picture has any.
    AVFieldOrder fieldOrder = AV_FIELD_UNKNOWN;
};

/// What is asked of the encoder of sound, whichever it is; as in OutputOptions.
struct SoundChoice {
    std::optional<int64_t> bitRate;
    EncoderSettings settings;
};

struct OutputPlan {
    std::string target;
    std::string format; ///< that was asked for by name; empty: the target's extension tells
    const AVOutputFormat* muxer = nullptr; ///< null for a still picture
    EncoderChoice encoder;
    SoundChoice sound;

    bool IsStill() const noexcept { return muxer == nullptr; }
    /// Whether each picture becomes a still picture of its own, numbered from 1.
    bool IsNumbered() const;
    /// The file that is written, or the first of them.
    std::string FirstFile() const;
    /// Whether the container is one for sound alone; it has no picture encoder.
    bool IsSound() const;
    /// The container's or picture format's name as people know it: the extension, unless another was asked
    /// for.
    std::string Kind() const;
    /// Whether the container carries a display matrix, so that players turn the picture.
    bool CarriesRotation() const;
    /// Whether the container says the colour range of its pictures.
    bool CarriesRange() const;
    /// Whether the container has one index of all packets, which may stand before them.
    bool HasIndex() const;
    /// Whether the container carries the second layer in which VP8 and VP9 hold transparency.
    bool CarriesAlphaLayer() const;
    /// Whether all pictures last equally long in the container.
    bool NeedsConstantRate() const;
    /// Whether the container numbers pictures instead of timing them, so that none may be missing.
    bool CountsPictures() const;
    /// The largest denominator of the encoder's time base, 0 for no limit.
    int LargestDenominator() const;
};

/// Throws Error: Output for a name without a known extension, Usage for an encoder that is unknown, does not
/// fit the container, lacks an option that is asked for, does not take its value or does not take the pixel
/// format of that name (empty: none is asked for), or for any choice of one in a container for sound.
OutputPlan PlanOutput(const OutputOptions& options);

/// The picture rate nearest to this one that container and codec have.
AVRational NearestRate(const OutputPlan& plan, AVRational rate);

/// Says that pictures of one rate are written at another, where these differ.
void SayRate(const OutputPlan& plan, AVRational own, AVRational written, Reporter& reporter);

/// As PlanOutput for still pictures only. Throws Error (Output) that lists the formats.
OutputPlan PlanStill(const std::string& target, const std::string& format = {});

/// Extensions of usual containers that hold streams of that codec, by that word on it, for messages: ".mkv,
/// .mov".
std::string ContainersFor(AVCodecID codec, bool (*holds)(const OutputPlan&, AVCodecID));

} // namespace aveffect
