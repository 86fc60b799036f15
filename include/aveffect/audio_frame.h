#pragma once
/// Sound as it crosses the plug-in's boundary.

namespace AVBased {

/// Sample formats of IRawAudioFrame. Frames of any other code pass the effects unchanged.
enum SampleFormat : int {
    sfSigned8 = 1,
    sfUnsigned8 = 2,
    sfSigned16 = 3,
    sfUnsigned16 = 4,
    sfSigned32 = 7,
    sfUnsigned32 = 8,
    sfFloat = 9,   ///< 32 bits, -1 to 1
    sfDouble = 10, ///< 64 bits, -1 to 1
};

/// One stretch of sound. A frame is used by one thread at a time.
class IRawAudioFrame {
public:
    /// See SampleFormat.
    virtual int GetSampleFormat() = 0;
    /// Samples a second and channel.
    virtual unsigned GetSampleRate() = 0;
    virtual int GetChannels() = 0;
    /// Speaker mask, 0 when not known.
    virtual unsigned GetChannelLayout() = 0;
    /// True: all channels in buffer 0, sample by sample. False: one buffer a channel.
    virtual bool IsInterleaved() = 0;
    /// Byte order of samples of more than one byte.
    virtual bool IsLittleEndian() = 0;
    /// Samples a channel.
    virtual unsigned GetSampleCount() = 0;
    /// A buffer and its size in bytes, null when there is none of that index. The memory stays the frame's.
    virtual unsigned char* GetBuffer(int index, unsigned* size) = 0;
    /// Position of the first sample, in milliseconds.
    virtual unsigned GetTimeStamp() = 0;
    virtual void SetTimeStamp(unsigned milliseconds) = 0;
    /// Gives the frame up. Only its owner calls this.
    virtual void Release() = 0;
    /// A new frame with a copy of the samples, the caller's to Release().
    virtual IRawAudioFrame* Clone() = 0;

protected:
    ~IRawAudioFrame() = default;
};

} // namespace AVBased
