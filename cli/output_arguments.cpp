#include "cli/output_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/option_values.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

constexpr std::string_view kSoundPrefix = "a:";

StreamChoice ChoiceOption(const std::string& text) {
    constexpr int64_t kMost = 1'000'000;
    constexpr char kRule[] = "streams such as 2, v:0, a:1 or s:0, with commas between";
    const bool named = text.size() > 2 && text[1] == ':';
    const AVMediaType kind = !named           ? AVMEDIA_TYPE_UNKNOWN
                             : text[0] == 'v' ? AVMEDIA_TYPE_VIDEO
                             : text[0] == 'a' ? AVMEDIA_TYPE_AUDIO
                             : text[0] == 's' ? AVMEDIA_TYPE_SUBTITLE
                                              : AVMEDIA_TYPE_NB;
    const std::string number = named ? text.substr(2) : text;
    const bool digits = !number.empty() && number.size() < 7 &&
                        std::ranges::all_of(number, [](char c) { return c >= '0' && c <= '9'; });
    if (!digits || kind == AVMEDIA_TYPE_NB) Refuse("--stream", kRule, text);
    return {kind, static_cast<int>(WholeOption("--stream", number, 0, kMost))};
}

} // namespace

void AddStreamOptions(CLI::App& app, StreamArguments& streams) {
    app.add_flag("--no-sound", streams.noSound, "Leave the sound out");
    app.add_flag("--no-subtitles", streams.noSubtitles, "Leave subtitles out");
    app.add_option("--stream", streams.streams,
                   "Streams to take, by their place in the file (2) or among those of their kind (v:0, a:1, "
                   "s:0), with commas between; the usual ones of kinds that are not named")
        ->type_name("STREAMS");
}

void AddQualityOptions(CLI::App& app, QualityArguments& quality) {
    app.add_option("--quality", quality.quality, "Quality of JPEG, WebP and AVIF, 1 to 100, higher is better")
        ->type_name("NUMBER");
    app.add_option("--encoder-option", quality.encoderOptions,
                   "An option of the encoder; a:KEY=VALUE for the encoder of sound; repeat for more")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
}

void AddFramingOptions(CLI::App& app, FramingArguments& framing) {
    app.add_option("--size", framing.size,
                   "Size of the pictures: 1080x1920, 1080: or :1920 with the other side by their shape, 50%")
        ->type_name("SIZE");
    app.add_option("--fit", framing.fit,
                   "How pictures of another shape get that size: contain (all of them, background around, if "
                   "not given), cover (edges cut off) or stretch")
        ->type_name("HOW");
    app.add_option("--background", framing.background, "Colour around contained pictures; black if not given")
        ->type_name("COLOUR");
    app.add_option(
           "--crop", framing.crop,
           "Part of the pictures to keep, before they get a size: width, height and corner, in pixels "
           "or percent; the middle without a corner")
        ->type_name("W:H[:X:Y]");
    app.add_flag("--size-after", framing.after, "Crop and size behind the effects instead of before");
}

void AddRateOption(CLI::App& app, std::optional<std::string>& rate) {
    app.add_option("--fps", rate,
                   "Pictures a second: 25, 29.97, 30000/1001, ...; pictures are shown again or left out, "
                   "numbered ones come at that rate")
        ->type_name("RATE");
}

void AddEncoderOptions(CLI::App& app, EncoderArguments& encoder, const char* audioCodecHelp) {
    app.add_option(
           "--codec", encoder.codec,
           "Video encoder or codec, the format's usual one if not given; render copies the pictures as they "
           "are with \"copy\"")
        ->type_name("NAME");
    app.add_option("--audio-codec", encoder.audioCodec, audioCodecHelp)->type_name("NAME");
    app.add_option(
           "--output-format", encoder.outputFormat,
           "Pixel format of the output, such as yuv444p; if not given, yuv420p for codecs that people "
           "play, else the clip's")
        ->type_name("NAME");
    app.add_option("--crf", encoder.crf, "Constant quality of the encoder, lower is better")
        ->type_name("NUMBER");
    app.add_option("--bitrate", encoder.bitRate, "Bits a second of the pictures, such as 5M or 800k")
        ->type_name("RATE");
    app.add_option("--audio-bitrate", encoder.audioBitRate, "Bits a second of the sound, such as 192k")
        ->type_name("RATE");
    AddQualityOptions(app, encoder.quality);
    app.add_option("--preset", encoder.preset, "Preset of the encoder, such as ultrafast")->type_name("NAME");
    app.add_option("--threads", encoder.threads,
                   "Threads of decoder, effects and encoder together; 0 for what the processors give")
        ->type_name("N");
    app.add_option("--memory", encoder.memory,
                   "Bytes that pictures between decoder and encoder may take, such as 512M or 2G; 1G if not "
                   "given")
        ->type_name("BYTES");
}

StreamSelection MakeStreamSelection(const StreamArguments& streams) {
    StreamSelection selection;
    selection.sound = !streams.noSound;
    selection.subtitles = !streams.noSubtitles;
    if (streams.streams.empty()) return selection;
    for (size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = streams.streams.find(',', begin);
        selection.chosen.push_back(ChoiceOption(streams.streams.substr(begin, end - begin)));
    }
    return selection;
}

void TakeQuality(const QualityArguments& quality, OutputOptions& options) {
    constexpr int64_t kBest = 100;
    if (quality.quality)
        options.quality = static_cast<int>(WholeOption("--quality", *quality.quality, 1, kBest));
    for (const std::string& text : quality.encoderOptions) {
        const bool sound = text.starts_with(kSoundPrefix);
        const std::string setting = sound ? text.substr(kSoundPrefix.size()) : text;
        const size_t equals = setting.find('=');
        if (equals == std::string::npos || equals == 0)
            Refuse("--encoder-option", "KEY=VALUE, or a:KEY=VALUE for sound", text);
        (sound ? options.audioEncoderSettings : options.encoderSettings)
            .emplace_back(setting.substr(0, equals), setting.substr(equals + 1));
    }
}

void TakeFraming(const FramingArguments& framing, OutputOptions& options) {
    Framing& taken = options.framing;
    if (framing.size) FramedSizeOption(*framing.size, taken);
    if (framing.fit) taken.fit = FitOption(*framing.fit);
    if (framing.crop) taken.crop = CropOption(*framing.crop);
    taken.background = framing.background;
    taken.afterEffects = framing.after;
}

void TakeRate(const std::optional<std::string>& rate, OutputOptions& options) {
    if (rate) options.rate = RateOption(*rate);
}

void TakeEncoder(const EncoderArguments& encoder, OutputOptions& options) {
    options.videoCodec = encoder.codec;
    options.audioCodec = encoder.audioCodec;
    options.outputFormat = encoder.outputFormat;
    options.preset = encoder.preset;
    if (encoder.crf) options.crf = CrfOption(*encoder.crf);
    if (encoder.threads) options.threads = ThreadsOption(*encoder.threads);
    if (encoder.memory) options.memory = BytesOption("--memory", *encoder.memory);
    if (encoder.bitRate) options.bitRate = BitRateOption("--bitrate", *encoder.bitRate);
    if (encoder.audioBitRate) options.audioBitRate = BitRateOption("--audio-bitrate", *encoder.audioBitRate);
    TakeQuality(encoder.quality, options);
}

} // namespace aveffect
