#pragma once
/// Sound of the media libraries as frames of the plug-in's boundary.
#include <memory>
#include <vector>

#include "aveffect/audio_frame.h"
#include "mediabridge/av_ptr.h"

namespace mediabridge {

/// Bytes a sample of an AVBased::SampleFormat, 0 for other codes.
unsigned SampleBytes(int format);

/// An IRawAudioFrame with its own samples. Always on the heap and released with Release().
class AudioFrame final : public AVBased::IRawAudioFrame {
public:
    struct Releaser {
        void operator()(AudioFrame* frame) const noexcept { frame->Release(); }
    };
    using Ptr = std::unique_ptr<AudioFrame, Releaser>;

    struct Shape {
        int format = AVBased::sfSigned16; ///< AVBased::SampleFormat
        unsigned rate = 0;                ///< Hz
        int channels = 0;
        unsigned channelLayout = 0; ///< speaker mask, 0 when not known
        bool interleaved = true;
        bool littleEndian = true;
        unsigned samples = 0; ///< a channel
    };

    /// A silent frame of that shape; null for other format codes, for less than one channel or when memory is
    /// short.
    static Ptr Allocate(const Shape& shape, unsigned timeStampMs);

    /// Copies decoded sound. Null for sample formats that the boundary has no code for.
    static Ptr Copy(const AVFrame* sound, unsigned timeStampMs);

    int GetSampleFormat() override;
    unsigned GetSampleRate() override;
    int GetChannels() override;
    unsigned GetChannelLayout() override;
    bool IsInterleaved() override;
    bool IsLittleEndian() override;
    unsigned GetSampleCount() override;
    unsigned char* GetBuffer(int index, unsigned* size) override;
    unsigned GetTimeStamp() override;
    void SetTimeStamp(unsigned milliseconds) override;
    void Release() override;
    AVBased::IRawAudioFrame* Clone() override;

private:
    AudioFrame() = default;
    AudioFrame(const AudioFrame&) = default;
    ~AudioFrame() = default;

    Shape m_shape;
    unsigned m_timeStamp = 0;
    std::vector<std::vector<unsigned char>> m_buffers;
};

} // namespace mediabridge
