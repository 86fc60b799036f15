#pragma once
/// Options of what is read of inputs and of how outputs are encoded. Values are as they were written.
#include <optional>
#include <string>
#include <vector>

#include "host/jobs/render.h"
#include "host/media/source_request.h"

namespace CLI {
class App;
}

namespace aveffect {

/// Which of an input's streams are taken.
struct StreamArguments {
    bool noSound = false, noSubtitles = false;
    std::string streams;
};

/// How good still pictures are that are encoded.
struct QualityArguments {
    std::optional<std::string> quality;
    std::vector<std::string> encoderOptions;
};

/// Which part of pictures is shown, and at what size.
struct FramingArguments {
    std::optional<std::string> size, fit, background, crop;
    bool after = false;
};

/// Everything about the encoders of clips.
struct EncoderArguments {
    std::string codec, audioCodec, outputFormat, preset;
    std::optional<std::string> crf, threads, memory, bitRate, audioBitRate;
    QualityArguments quality;
};

void AddStreamOptions(CLI::App& app, StreamArguments& streams);
void AddQualityOptions(CLI::App& app, QualityArguments& quality);
void AddFramingOptions(CLI::App& app, FramingArguments& framing);
void AddRateOption(CLI::App& app, std::optional<std::string>& rate);
/// All of them, with the help of --audio-codec.
void AddEncoderOptions(CLI::App& app, EncoderArguments& encoder, const char* audioCodecHelp);

/// Check and translate the values. Throw Error (Usage).
StreamSelection MakeStreamSelection(const StreamArguments& streams);
void TakeQuality(const QualityArguments& quality, OutputOptions& options);
void TakeFraming(const FramingArguments& framing, OutputOptions& options);
void TakeRate(const std::optional<std::string>& rate, OutputOptions& options);
void TakeEncoder(const EncoderArguments& encoder, OutputOptions& options);

} // namespace aveffect
