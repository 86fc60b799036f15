#pragma once
/// Settings of an encoder that are made by name, and by a scale that all encoders of pictures share.
#include <string>
#include <utility>
#include <vector>

#include "host/support/av_owner.h"

namespace aveffect {

/// Names and values of options as libavcodec has them.
using EncoderSettings = std::vector<std::pair<std::string, std::string>>;

/// Throws Error (Usage) for an option that the encoder does not have, or a value that it does not take, which
/// tells those that it takes.
void CheckSettings(const AVCodec& codec, const EncoderSettings& settings);

/// Throws Error (Usage) for an encoder that keeps everything and so has no bit rate.
void RequireBitRate(const AVCodec& codec);

/// Throws Error (Usage) for an encoder whose quality isn't set on a scale to 100.
void RequireQuality(const AVCodec& codec);

/// Make settings of an encoder that is not open yet.
void ApplySettings(AVCodecContext& context, const EncoderSettings& settings);
/// From 1 to 100, best.
void ApplyQuality(AVCodecContext& context, int quality);

} // namespace aveffect
