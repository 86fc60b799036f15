/// The resampler: every sample format, both byte orders, interleaved or not, any rate.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "aveffect/base_media.h"
#include "aveffect/errors.h"
#include "mediabridge/audio_frame.h"
#include "tests/companions/results.h"

namespace {

using namespace AVBased;
using namespace test;
using mediabridge::AudioFrame;

struct Destroyer {
    void operator()(IAudioResampler* resampler) const { resampler->Destroy(); }
};
using ResamplerPtr = std::unique_ptr<IAudioResampler, Destroyer>;

constexpr int kFormats[] = {1, 2, 3, 4, 7, 8, 9, 10};

bool IsUnsigned(int format) { return format == 2 || format == 4 || format == 8; }

/// Half the range of an integer format; 0 for floating point.
double HalfRange(int format) {
    return format >= sfFloat ? 0 : std::ldexp(1, static_cast<int>(mediabridge::SampleBytes(format)) * 8 - 1);
}

/// A sample of -1 to 1 in a format's own scale, zero and byte order.
void Encode(int format, double value, unsigned char* at, bool little) {
    const std::size_t bytes = mediabridge::SampleBytes(format);
    const double half = HalfRange(format);
    const auto real = static_cast<float>(value);
    const std::int64_t whole = std::llround(value * (half - 1) + (IsUnsigned(format) ? half : 0));
    const void* sample = format == sfDouble ? static_cast<const void*>(&value) : &real;
    std::memcpy(at, half != 0 ? &whole : sample, bytes);
    if (!little) std::reverse(at, at + bytes);
}

double Decode(int format, const unsigned char* at) {
    const std::size_t bytes = mediabridge::SampleBytes(format);
    double real = 0;
    float single = 0;
    std::int64_t whole = 0;
    if (format == sfDouble) return std::memcpy(&real, at, bytes), real;
    if (format == sfFloat) return std::memcpy(&single, at, bytes), single;
    std::memcpy(&whole, at, bytes);
    const double half = HalfRange(format);
    const auto value = static_cast<double>(whole);
    return (IsUnsigned(format) ? value - half : value < half ? value : value - 2 * half) / half;
}

/// Each channel has its own tone; the clock goes on from frame to frame.
double Tone(int channel, double second) {
    return 0.5 * std::sin(2 * std::numbers::pi * (channel == 0 ? 440 : 700) * second);
}

AudioFrame::Ptr Tones(const AudioFrame::Shape& shape, unsigned first) {
    AudioFrame::Ptr frame = AudioFrame::Allocate(shape, first * 1000 / shape.rate);
    const unsigned bytes = mediabridge::SampleBytes(shape.format);
    for (unsigned i = 0; i < shape.samples; ++i)
        for (int channel = 0; channel < shape.channels; ++channel) {
            const unsigned place =
                shape.interleaved ? i * static_cast<unsigned>(shape.channels) + static_cast<unsigned>(channel)
                                  : i;
            unsigned char* buffer = frame->GetBuffer(shape.interleaved ? 0 : channel, nullptr);
            Encode(shape.format, Tone(channel, (first + i) / static_cast<double>(shape.rate)),
                   buffer + place * bytes, shape.littleEndian);
        }
    return frame;
}

void Append(IRawAudioFrame& frame, int channel, std::vector<double>& samples) {
    const unsigned bytes = mediabridge::SampleBytes(frame.GetSampleFormat());
    const auto channels = static_cast<unsigned>(frame.GetChannels());
    unsigned size = 0;
    const unsigned char* data = frame.GetBuffer(frame.IsInterleaved() ? 0 : channel, &size);
    ASSERT_EQ(size, frame.GetSampleCount() * bytes * (frame.IsInterleaved() ? channels : 1));
    for (unsigned i = 0; i < frame.GetSampleCount(); ++i)
        samples.push_back(Decode(
            frame.GetSampleFormat(),
            data + bytes * (frame.IsInterleaved() ? i * channels + static_cast<unsigned>(channel) : i)));
}

TEST(Resampler, EveryFormatLayoutAndByteOrder) {
    for (const int from : kFormats)
        for (const int to : kFormats)
            for (int variant = 0; variant < 8; ++variant) {
                SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to) + " variant " +
                             std::to_string(variant));
                const AudioFrame::Shape shape{.format = from,
                                              .rate = 48000,
                                              .channels = 2,
                                              .interleaved = (variant & 1) != 0,
                                              .littleEndian = (variant & 2) != 0,
                                              .samples = 300};
                const bool interleaved = (variant & 4) != 0;
                const ResamplerPtr resampler(CreateAudioResampler(to, 48000, 2, 0, interleaved, 0, 0));
                IRawAudioFrame* result = resampler->Convert(Tones(shape, 480).get());
                ASSERT_TRUE(result);
                EXPECT_EQ(result->GetSampleFormat(), to);
                EXPECT_EQ(result->GetChannelLayout(), 3u);
                EXPECT_EQ(result->IsInterleaved(), interleaved);
                EXPECT_TRUE(result->IsLittleEndian());
                EXPECT_EQ(result->GetTimeStamp(), 10u);
                ASSERT_EQ(result->GetSampleCount(), 300u);
                const double tolerance = from <= 2 || to <= 2 ? 0.02 : 0.0001;
                for (const int channel : {0, 1}) {
                    std::vector<double> samples;
                    Append(*result, channel, samples);
                    for (unsigned i = 0; i < 300; ++i)
                        ASSERT_NEAR(samples[i], Tone(channel, (480 + i) / 48000.0), tolerance)
                            << "sample " << i;
                }
            }
}

/// The tone keeps its pitch and phase through rates, and every frame's time stamp says where it belongs.
TEST(Resampler, RatesKeepPitchPhaseAndTime) {
    const unsigned rates[][2] = {{44100, 48000}, {48000, 44100}, {8000, 48000}, {48000, 8000}};
    for (const auto& [from, to] : rates) {
        SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
        const ResamplerPtr resampler(CreateAudioResampler(sfFloat, to, 2, 0, false, 0, 0));
        std::vector<double> samples;
        for (unsigned first = 0; first < from; first += from / 10) {
            const AudioFrame::Shape shape{
                .format = sfFloat, .rate = from, .channels = 2, .samples = from / 10};
            IRawAudioFrame* result = resampler->Convert(Tones(shape, first).get());
            ASSERT_TRUE(result);
            EXPECT_NEAR(result->GetTimeStamp(), static_cast<double>(samples.size()) * 1000 / to, 1.5);
            Append(*result, 1, samples);
        }
        EXPECT_LE(samples.size(), to);
        EXPECT_GE(samples.size(), to - to / 40) << "only what the filter still needs may be missing";
        double noise = 0, signal = 0;
        for (std::size_t i = to / 10; i < samples.size(); ++i) {
            const double wanted = Tone(1, static_cast<double>(i) / to);
            noise += (samples[i] - wanted) * (samples[i] - wanted);
            signal += wanted * wanted;
        }
        EXPECT_GT(10 * std::log10(signal / noise), 50) << "decibels of signal over noise";
    }
}

TEST(Resampler, ChannelsAreMixed) {
    const AudioFrame::Shape mono{.format = sfSigned16, .rate = 48000, .channels = 1, .samples = 100};
    const ResamplerPtr spread(CreateAudioResampler(sfSigned16, 48000, 2, 0, true, 0, 0));
    IRawAudioFrame* result = spread->Convert(Tones(mono, 0).get());
    ASSERT_TRUE(result);
    std::vector<double> left, right;
    Append(*result, 0, left);
    Append(*result, 1, right);
    EXPECT_EQ(left, right);
    EXPECT_GT(*std::ranges::max_element(left), 0.3);

    const AudioFrame::Shape odd{.format = sfSigned16, .rate = 48000, .channels = 9, .samples = 10};
    EXPECT_EQ(spread->Convert(Tones(odd, 0).get()), nullptr) << "nobody knows what nine channels are";
    EXPECT_EQ(TakeCode(), kUnknownException);
    const ResamplerPtr same(CreateAudioResampler(sfFloat, 48000, 9, 0, true, 0, 0));
    EXPECT_TRUE(same->Convert(Tones(odd, 0).get())) << GetBaseException()->GetExceptionMsg();
}

/// A source that changes its rate in the middle loses no sound: what waited inside comes out first.
TEST(Resampler, FollowsTheSourcesShape) {
    const ResamplerPtr resampler(CreateAudioResampler(sfUnsigned16, 48000, 2, 0, true, 0, 0));
    std::size_t samples = 0;
    for (const unsigned rate : {44100u, 32000u, 48000u}) {
        const AudioFrame::Shape shape{.format = sfSigned16,
                                      .rate = rate,
                                      .channels = 2,
                                      .interleaved = rate != 32000,
                                      .samples = rate / 2};
        IRawAudioFrame* result = resampler->Convert(Tones(shape, 0).get());
        ASSERT_TRUE(result);
        samples += result->GetSampleCount();
    }
    EXPECT_NEAR(static_cast<double>(samples), 72000, 3);
}

TEST(Resampler, RefusesOrWaitsAsItShould) {
    GetBaseException()->Clear();
    for (const int format : {0, 5, 6, 11, -1}) {
        EXPECT_EQ(CreateAudioResampler(format, 48000, 2, 0, true, 0, 0), nullptr);
        EXPECT_EQ(TakeCode(), kUnknownException);
    }
    EXPECT_EQ(CreateAudioResampler(sfFloat, 0, 2, 0, true, 0, 0), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);
    EXPECT_EQ(CreateAudioResampler(sfFloat, 48000, 0, 0, true, 0, 0), nullptr);
    EXPECT_EQ(TakeCode(), kUnknownException);

    const ResamplerPtr resampler(CreateAudioResampler(sfFloat, 48000, 2, 0, true, 0, 0));
    EXPECT_EQ(resampler->Convert(nullptr), nullptr);
    EXPECT_EQ(TakeCode(), kBadPointer);
    const AudioFrame::Shape tiny{.format = sfFloat, .rate = 44100, .channels = 2, .samples = 1};
    EXPECT_EQ(resampler->Convert(Tones(tiny, 0).get()), nullptr) << "the filter needs more than one sample";
    EXPECT_EQ(TakeCode(), kNoError);
}

} // namespace
