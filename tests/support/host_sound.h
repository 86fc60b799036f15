#pragma once
/// A host's own sound for tests: any format, layout and byte order; buffers may be missing or short.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "aveffect/audio_frame.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/trouble.h"

namespace test {

struct SoundShape {
    int format = AVBased::sfSigned16;
    unsigned rate = 48000;
    int channels = 2;
    bool interleaved = true;
    bool littleEndian = true;
    unsigned samples = 0; ///< a channel
};

/// 4 for what is no format.
inline size_t SampleBytesOf(int format) {
    constexpr size_t kBytes[] = {0, 1, 1, 2, 2, 3, 3, 4, 4, 4, 8};
    return format < 0 || format > 10 ? 4 : kBytes[format];
}

inline bool IsSampleFormat(int format) { return format > 0 && format <= 10 && format != 5 && format != 6; }

/// For messages.
inline std::string Describe(const SoundShape& shape) {
    return "format " + std::to_string(shape.format) + ", " + std::to_string(shape.samples) + " samples at " +
           std::to_string(shape.rate) + " Hz, " + std::to_string(shape.channels) + " channels" +
           (shape.interleaved ? ", interleaved" : "");
}

class HostSound final : public HostMedia, public AVBased::IRawAudioFrame {
public:
    /// Buffers of so many bytes.
    HostSound(const SoundShape& ofShape, size_t bytes, unsigned atTime)
        : shape(ofShape)
        , time(atTime) {
        const int count = shape.interleaved ? 1 : std::max(shape.channels, 0);
        buffers.assign(static_cast<size_t>(count), GuardedBytes(bytes));
    }
    explicit HostSound(const SoundShape& ofShape, unsigned atTime = 0)
        : HostSound(ofShape, BytesOf(ofShape), atTime) {}

    /// Of one buffer.
    static size_t BytesOf(const SoundShape& shape) {
        const auto together = static_cast<size_t>(shape.interleaved ? std::max(shape.channels, 0) : 1);
        return shape.samples * SampleBytesOf(shape.format) * together;
    }
    void Randomise(unsigned seed) {
        std::mt19937 random(seed);
        for (auto& buffer : buffers)
            for (unsigned char& byte : buffer) byte = static_cast<unsigned char>(random());
    }
    bool operator==(const HostSound& other) const { return buffers == other.buffers; }

    SoundShape shape;
    unsigned time;
    std::vector<GuardedBytes> buffers;

    int GetSampleFormat() override { return shape.format; }
    unsigned GetSampleRate() override { return shape.rate; }
    int GetChannels() override { return shape.channels; }
    unsigned GetChannelLayout() override { return 0; }
    bool IsInterleaved() override { return shape.interleaved; }
    bool IsLittleEndian() override { return shape.littleEndian; }
    unsigned GetSampleCount() override { return shape.samples; }
    unsigned GetTimeStamp() override { return time; }
    void SetTimeStamp(unsigned milliseconds) override { time = milliseconds; }
    unsigned char* GetBuffer(int index, unsigned* size) override {
        const auto place = static_cast<size_t>(index);
        const bool exists = GivesBuffers() && place < buffers.size();
        *size = exists ? static_cast<unsigned>(buffers[place].size()) : 0;
        return exists ? buffers[place].data() : nullptr;
    }
    void Release() override { Delete(this); }
    AVBased::IRawAudioFrame* Clone() override { return CloneOf(*this); }
};

inline HostSound MakeSound(const SoundShape& shape, unsigned seed = 1) {
    HostSound sound(shape);
    sound.Randomise(seed);
    return sound;
}

} // namespace test
