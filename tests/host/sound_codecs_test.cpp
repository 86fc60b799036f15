// Every encoder of sound that is installed, into every container: a file that another reader decodes to the
// right length, or one line that says why not.
#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include "host/media/input.h"
#include "host/output/sound_formats.h"
#include "tests/host/clips.h"

namespace {

using aveffect::ErrorKind;

/// Muxers that refuse in the middle of a file keep memory of the library's own.
#ifdef __SANITIZE_ADDRESS__
using LibrarysLeaks = __lsan::ScopedDisabler;
#else
struct LibrarysLeaks {};
#endif

constexpr double kSeconds = 0.6;

/// A tone as 16-bit WAV.
std::string MakeWav(const std::string& path, unsigned rate, unsigned channels) {
    const auto number = [](unsigned value, int bytes) {
        std::string text;
        for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value & 255);
        return text;
    };
    std::string sound;
    for (unsigned at = 0; at < rate * kSeconds; ++at)
        for (unsigned channel = 0; channel < channels; ++channel)
            sound += number(at * (440 + channel) * 8192 / rate % 8192, 2);
    const auto size = static_cast<unsigned>(sound.size());
    std::ofstream(path, std::ios::binary)
        << "RIFF" << number(36 + size, 4) << "WAVEfmt " << number(16, 4) << number(1, 2)
        << number(channels, 2) << number(rate, 4) << number(2 * channels * rate, 4) << number(2 * channels, 2)
        << number(16, 2) << "data" << number(size, 4) << sound;
    return path;
}

/// What FFmpeg's decoders make of a file.
struct Heard {
    double seconds = 0;
    double slack = 0;        ///< seconds that the codec's frames may add at both ends
    std::string damage = {}; ///< what its decoder says of it
};

Heard Listen(const std::string& path) {
    aveffect::ReadInterrupt interrupt{nullptr, std::nullopt};
    const aveffect::InputContextPtr input = aveffect::OpenInput({path}, interrupt);
    const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) return {};
    aveffect::Decoder decoder(input, *input->streams[index], 1);
    const mediabridge::AVPacketPtr packet(av_packet_alloc());
    Heard heard;
    const auto drain = [&] {
        while (const auto sound = decoder.Receive())
            heard.seconds += static_cast<double>(sound->nb_samples) / sound->sample_rate;
    };
    for (; av_read_frame(input.get(), packet.get()) >= 0; av_packet_unref(packet.get())) {
        if (packet->stream_index != index) continue;
        decoder.Send(packet.get());
        drain();
    }
    decoder.Send(nullptr);
    drain();
    heard.slack = 2.5 * std::max(decoder.Context().frame_size, 2048) / decoder.Context().sample_rate;
    heard.damage = decoder.Damage().Text().value_or("");
    return heard;
}

/// One container for sound or clips by each of the library's writers.
std::vector<aveffect::OutputPlan> Containers(const clips::TemporaryDirectory& directory) {
    std::vector<aveffect::OutputPlan> plans;
    void* at = nullptr;
    while (const AVOutputFormat* muxer = av_muxer_iterate(&at)) {
        if (!muxer->extensions || (muxer->flags & AVFMT_NOFILE) || muxer->audio_codec == AV_CODEC_ID_NONE)
            continue;
        const std::string names = muxer->extensions;
        plans.emplace_back().target = directory / "out." + names.substr(0, names.find(','));
        plans.back().muxer = av_guess_format(nullptr, plans.back().target.c_str(), nullptr);
    }
    return plans;
}

class SoundCodecs : public testing::Test {
protected:
    std::string Wav(unsigned rate, unsigned channels) {
        return MakeWav(m_directory / std::to_string(rate) + "x" + std::to_string(channels) + ".wav", rate,
                       channels);
    }

    /// True when there is a file.
    bool Try(const std::string& input, const std::string& output, const std::string& codec) {
        SCOPED_TRACE(input.substr(input.rfind('/') + 1) + " " + codec + " " +
                     output.substr(output.rfind('.')));
        aveffect::RenderOptions options;
        options.input = input;
        options.output = output;
        options.audioCodec = codec;
        const auto failure = clips::FailureOf([&] { clips::Render(options, m_cancel); });
        EXPECT_EQ(std::filesystem::exists(output), !failure.failed);
        if (failure.failed) {
            EXPECT_EQ(failure.kind, ErrorKind::Usage) << failure.text;
            EXPECT_EQ(failure.text.find('\n'), std::string::npos) << failure.text;
            EXPECT_GT(failure.text.size(), 20u);
            return false;
        }
        Heard heard;
        const auto deaf = clips::FailureOf([&] { heard = Listen(output); });
        EXPECT_FALSE(deaf.failed) << deaf.text;
        EXPECT_GT(heard.seconds, kSeconds - 0.05);
        EXPECT_LT(heard.seconds, kSeconds + 0.05 + heard.slack);
        // The reader of .w64 takes the filling at the end for sound.
        EXPECT_TRUE(heard.damage.empty() || output.ends_with(".w64")) << heard.damage;
        std::filesystem::remove(output);
        return true;
    }

    clips::TemporaryDirectory m_directory;
    std::atomic<bool> m_cancel{false};
};

TEST_F(SoundCodecs, EveryEncoderIntoEveryContainer) {
    [[maybe_unused]] const LibrarysLeaks leaks;
    std::vector<std::string> inputs;
    for (const unsigned rate : {8000u, 48000u, 11025u, 44100u, 96000u, 22050u, 192000u})
        for (const unsigned channels : {2u, 1u, 6u}) inputs.push_back(Wav(rate, channels));
    const auto containers = Containers(m_directory);
    size_t turn = 0, made = 0;
    void* at = nullptr;
    while (const AVCodec* codec = av_codec_iterate(&at)) {
        if (!av_codec_is_encoder(codec) || codec->type != AVMEDIA_TYPE_AUDIO) continue;
        size_t refused = 0;
        for (const auto& plan : containers)
            if (HoldsSound(plan, codec->id) || refused++ % 40 == 0)
                made += Try(inputs[turn++ % inputs.size()], plan.target, codec->name);
    }
    EXPECT_GT(made, 200u);
}

TEST_F(SoundCodecs, UsualOnesTakeEveryRate) {
    constexpr const char* kUsual[][2] = {{"ogg", "vorbis"}, {"opus", "opus"},     {"mp3", "mp3"},
                                         {"m4a", "aac"},    {"ts", "ac3"},        {"flac", "flac"},
                                         {"mpg", "mp2"},    {"wav", "pcm_s16le"}, {"mkv", "dca"},
                                         {"mka", "truehd"}, {"flv", "libspeex"},  {"flv", "mp3"}};
    for (const unsigned rate : {8000u, 11025u, 22050u, 96000u, 192000u})
        for (const auto& [extension, codec] : kUsual)
            EXPECT_TRUE(Try(Wav(rate, 2), m_directory / "out." + extension, codec)) << rate << codec;
}

} // namespace
