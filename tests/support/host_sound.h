#pragma once
/// A host's own sound for tests: any format, layout and byte order; buffers may be missing or short.
#include <cstdint>
#include <random>
#include <vector>

#include "aveffect/audio_frame.h"
#include "tests/support/guarded_bytes.h"

namespace test {

struct SoundShape {
    int format = AVBased::sfSigned16;
    unsigned rate = 48000;
    int channels = 2;
    bool interleaved = true;
    bool littleEndian = true;
    unsigned samples = 0; ///< a channel
};

inline size_t SampleBytesOf(int format) {
    constexpr size_t kBytes[] = {0, 1, 1, 2, 2, 3, 3, 4, 4, 4, 8};
    return kBytes[format];
}

inline bool IsSampleFormat(int format) { return format > 0 && format <= 10 && format != 5 && format != 6; }

/// Says what it is; where its samples are, others know.
class ShapedSound : public AVBased::IRawAudioFrame {
public:
    explicit ShapedSound(const SoundShape& ofShape, unsigned atTime = 0)
        : shape(ofShape)
        , time(atTime) {}

    SoundShape shape;
    unsigned time;

    int GetSampleFormat() override { return shape.format; }
    unsigned GetSampleRate() override { return shape.rate; }
    int GetChannels() override { return shape.channels; }
    unsigned GetChannelLayout() override { return 0; }
    bool IsInterleaved() override { return shape.interleaved; }
    bool IsLittleEndian() override { return shape.littleEndian; }
    unsigned GetSampleCount() override { return shape.samples; }
    unsigned GetTimeStamp() override { return time; }
    void SetTimeStamp(unsigned milliseconds) override { time = milliseconds; }

protected:
    ~ShapedSound() = default;
};

class HostSound final : public ShapedSound {
public:
    explicit HostSound(const SoundShape& ofShape, unsigned atTime = 0)
        : ShapedSound(ofShape, atTime) {
        const auto channels = static_cast<size_t>(shape.channels);
        const size_t bytes = shape.samples * SampleBytesOf(shape.format);
        buffers.assign(shape.interleaved ? 1 : channels,
                       GuardedBytes(shape.interleaved ? bytes * channels : bytes));
    }
    void Randomise(unsigned seed) {
        std::mt19937 random(seed);
        for (auto& buffer : buffers)
            for (unsigned char& byte : buffer) byte = static_cast<unsigned char>(random());
    }

    std::vector<GuardedBytes> buffers;
    bool hasBuffers = true;

    unsigned char* GetBuffer(int index, unsigned* size) override {
        const auto place = static_cast<size_t>(index);
        const bool exists = hasBuffers && place < buffers.size();
        *size = exists ? static_cast<unsigned>(buffers[place].size()) : 0;
        return exists ? buffers[place].data() : nullptr;
    }
    void Release() override { delete this; }
    AVBased::IRawAudioFrame* Clone() override { return new HostSound(*this); }
};

} // namespace test
