/// Conversion of sample format, rate and channels.
#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "aveffect/base_media.h"
#include "companions/basemedia/failure.h"
#include "companions/basemedia/sample_layout.h"
#include "mediabridge/audio_frame.h"
#include "mediabridge/av_ptr.h"

namespace basemedia {
namespace {

using mediabridge::AudioFrame;
using Planes = std::vector<std::vector<unsigned char>>;

constexpr int kMaxChannels = 64;

AVChannelLayout SpeakersFor(unsigned mask, int channels) {
    AVChannelLayout layout{};
    if (std::popcount(mask) == channels)
        av_channel_layout_from_mask(&layout, mask);
    else
        av_channel_layout_default(&layout, channels);
    return layout;
}

unsigned MaskOf(const AVChannelLayout& layout) {
    return layout.order == AV_CHANNEL_ORDER_NATIVE && layout.u.mask <= UINT_MAX
               ? static_cast<unsigned>(layout.u.mask)
               : 0;
}

std::string DescribeShape(const AudioFrame::Shape& shape) {
    return std::to_string(shape.channels) + " channels at " + std::to_string(shape.rate) +
           " Hz in sample format " + std::to_string(shape.format);
}

SampleLayout CheckShape(const AudioFrame::Shape& shape) {
    const auto layout = FindSampleLayout(shape.format);
    if (!layout)
        throw Failure(AVBased::kUnknownException,
                      "Sample format " + std::to_string(shape.format) + " is none of 1 to 4 and 7 to 10");
    if (shape.rate == 0 || shape.rate > INT_MAX)
        throw Failure(AVBased::kUnknownException,
                      "A sample rate of " + std::to_string(shape.rate) + " Hz can't be converted");
    if (shape.channels < 1 || shape.channels > kMaxChannels)
        throw Failure(AVBased::kUnknownException, std::to_string(shape.channels) +
                                                      " channels can't be converted, 1 to " +
                                                      std::to_string(kMaxChannels) + " can");
    return *layout;
}

AudioFrame::Shape ShapeOf(AVBased::IRawAudioFrame* source) {
    AudioFrame::Shape shape;
    shape.format = source->GetSampleFormat();
    shape.rate = source->GetSampleRate();
    shape.channels = source->GetChannels();
    shape.channelLayout = source->GetChannelLayout();
    shape.interleaved = source->IsInterleaved();
    shape.littleEndian = source->IsLittleEndian();
    shape.samples = source->GetSampleCount();
    return shape;
}

/// Everything but the length, which may change from frame to frame.
bool SameKind(const AudioFrame::Shape& a, const AudioFrame::Shape& b) {
    return a.format == b.format && a.rate == b.rate && a.channels == b.channels &&
           a.channelLayout == b.channelLayout && a.interleaved == b.interleaved &&
           a.littleEndian == b.littleEndian;
}

/// A copy of the samples as libswresample wants them.
Planes ReadSamples(AVBased::IRawAudioFrame* source, const AudioFrame::Shape& shape,
                   const SampleLayout& layout) {
    const auto channels = static_cast<std::size_t>(shape.channels);
    const std::size_t bytes = std::size_t{shape.samples} * layout.bytes * (shape.interleaved ? channels : 1);
    Planes planes(shape.interleaved ? 1 : channels);
    for (std::size_t index = 0; index < planes.size(); ++index) {
        unsigned size = 0;
        const unsigned char* data = source->GetBuffer(static_cast<int>(index), &size);
        RequirePointer(data);
        if (size < bytes)
            throw Failure(AVBased::kUnknownException, "Sound buffer " + std::to_string(index) + " holds " +
                                                          std::to_string(size) + " bytes, its samples need " +
                                                          std::to_string(bytes));
        planes[index].assign(data, data + bytes);
        ToLibrary(layout, !shape.littleEndian, planes[index]);
    }
    return planes;
}

class AudioResampler final : public AVBased::IAudioResampler {
public:
    explicit AudioResampler(const AudioFrame::Shape& target)
        : m_target(target)
        , m_layout(CheckShape(target)) {}

    AVBased::IRawAudioFrame* Convert(AVBased::IRawAudioFrame* source) override {
        return Guarded([&]() -> AVBased::IRawAudioFrame* {
            RequirePointer(source);
            const AudioFrame::Shape shape = ShapeOf(source);
            const SampleLayout layout = CheckShape(shape);
            if (shape.samples == 0) return nullptr;
            if (shape.samples > INT_MAX / 2)
                throw Failure(AVBased::kUnknownException,
                              std::to_string(shape.samples) + " samples in one frame are too many");
            const Planes input = ReadSamples(source, shape, layout);
            const unsigned start = StartTime(source->GetTimeStamp());
            StartOutput();
            if (!m_context || !SameKind(shape, m_source)) {
                Run(nullptr, 0); // what the previous kind of sound still has inside
                Open(shape, layout);
            }
            Run(&input, static_cast<int>(shape.samples));
            return Deliver(start);
        });
    }

    void Destroy() override { delete this; }

private:
    ~AudioResampler() = default;

    /// The sound that comes out first has waited inside since before this frame.
    unsigned StartTime(unsigned timeStamp) const {
        const std::int64_t waiting = m_context ? (swr_get_delay(m_context.get(), 1'000'000) + 500) / 1000 : 0;
        return static_cast<unsigned>(std::max<std::int64_t>(0, std::int64_t{timeStamp} - waiting));
    }

    void Open(const AudioFrame::Shape& shape, const SampleLayout& layout) {
        m_context.reset();
        AVChannelLayout from = SpeakersFor(shape.channelLayout, shape.channels);
        // As many channels as there are stay as they are, whatever speakers they are for.
        AVChannelLayout to = shape.channels == m_target.channels ? from : SpeakersFor(0, m_target.channels);
        SwrContext* made = nullptr;
        int result = swr_alloc_set_opts2(&made, &to, m_layout.LibraryFormat(m_target.interleaved),
                                         static_cast<int>(m_target.rate), &from,
                                         layout.LibraryFormat(shape.interleaved),
                                         static_cast<int>(shape.rate), mediabridge::kSilent, nullptr);
        mediabridge::SwrContextPtr context(made);
        if (result >= 0) result = swr_init(context.get());
        RequireMemory(result);
        if (result < 0)
            throw Failure(AVBased::kUnknownException,
                          "Can't convert " + DescribeShape(shape) + " to " + DescribeShape(m_target));
        m_context = std::move(context);
        m_source = shape;
        m_target.channelLayout = MaskOf(to);
    }

    void StartOutput() {
        m_output.assign(m_target.interleaved ? 1 : static_cast<std::size_t>(m_target.channels), {});
        m_target.samples = 0;
    }

    std::size_t StrideBytes() const {
        return m_layout.bytes * (m_target.interleaved ? static_cast<std::size_t>(m_target.channels) : 1);
    }

    /// Converts the samples, or without any empties the context, and appends what comes out to the output.
    void Run(const Planes* input, int samples) {
        if (!m_context) return;
        const int room = swr_get_out_samples(m_context.get(), samples);
        if (room < 0) throw std::bad_alloc();
        std::vector<const std::uint8_t*> from;
        if (input)
            for (const auto& plane : *input) from.push_back(plane.data());
        std::vector<std::uint8_t*> to;
        const std::size_t done = m_target.samples * StrideBytes();
        for (auto& plane : m_output) {
            plane.resize(done + static_cast<std::size_t>(room) * StrideBytes());
            to.push_back(plane.data() + done);
        }
        const int count =
            swr_convert(m_context.get(), to.data(), room, input ? from.data() : nullptr, samples);
        RequireMemory(count);
        if (count < 0)
            throw Failure(AVBased::kUnknownException, "Converting " + DescribeShape(m_source) + " failed");
        m_target.samples += static_cast<unsigned>(count);
    }

    AVBased::IRawAudioFrame* Deliver(unsigned start) {
        if (m_target.samples == 0) return nullptr;
        AudioFrame::Ptr frame = AudioFrame::Allocate(m_target, start);
        if (!frame) throw std::bad_alloc();
        const std::size_t bytes = m_target.samples * StrideBytes();
        for (std::size_t index = 0; index < m_output.size(); ++index) {
            unsigned char* data = frame->GetBuffer(static_cast<int>(index), nullptr);
            std::memcpy(data, m_output[index].data(), bytes);
            FromLibrary(m_layout, {data, bytes});
        }
        m_frame = std::move(frame);
        return m_frame.get();
    }

    AudioFrame::Shape m_target; ///< with the samples and speakers of the present output
    SampleLayout m_layout;      ///< the target's
    AudioFrame::Shape m_source; ///< what the context was opened for
    mediabridge::SwrContextPtr m_context;
    Planes m_output;
    AudioFrame::Ptr m_frame;
};

} // namespace
} // namespace basemedia

AVBased::IAudioResampler* CreateAudioResampler(int format, unsigned rate, int channels, int, bool interleaved,
                                               int, int) {
    return basemedia::Guarded([=]() -> AVBased::IAudioResampler* {
        mediabridge::AudioFrame::Shape target;
        target.format = format;
        target.rate = rate;
        target.channels = channels;
        target.interleaved = interleaved;
        return new basemedia::AudioResampler(target);
    });
}
