#pragma once
/// The media support library (libAVBaseMedia.so), which a host ships beside the plug-in.
#include <cstddef>

#include "aveffect/audio_frame.h"
#include "aveffect/video_frame.h"

namespace AVBased {

/// Converts pictures to one pixel format and size. Used by one thread at a time.
class IImageConverter {
public:
    /// A new top-down frame, the caller's to Free(), with the source's time stamp, duration, field flags and
    /// view id. Null with an error recorded on failure.
    virtual IRawVideoFrame* Convert(IRawVideoFrame* source) = 0;
    virtual void Release() = 0;

protected:
    ~IImageConverter() = default;
};

/// Places pictures inside margins filled with black (opaque on BGRA). Used by one thread at a time.
class IRawVideoFrameCropPan {
public:
    /// Margins in pixels, 0 at first.
    virtual void SetLeft(unsigned pixels) = 0;
    virtual void SetTop(unsigned pixels) = 0;
    virtual void SetRight(unsigned pixels) = 0;
    virtual void SetBottom(unsigned pixels) = 0;
    /// A new frame, the caller's to Free(): the picture, unscaled, inside the margins. Null with an error
    /// recorded on failure.
    virtual IRawVideoFrame* Process(IRawVideoFrame* source) = 0;
    virtual void Release() = 0;

protected:
    ~IRawVideoFrameCropPan() = default;
};

/// Converts sound to one sample format, rate and channel count. Used by one thread at a time.
class IAudioResampler {
public:
    /// The resampler's own frame, valid until the next Convert or Destroy; null when nothing came out yet.
    virtual IRawAudioFrame* Convert(IRawAudioFrame* source) = 0;
    virtual void Destroy() = 0;

protected:
    ~IAudioResampler() = default;
};

/// Bits of AVBasedGetCPUFeatures().
enum CPUFeature : unsigned {
    kCpuMMX = 1u << 0,
    kCpuSSE = 1u << 1,
    kCpuSSE2 = 1u << 2,
    kCpuSSE3 = 1u << 3,
    kCpuSSSE3 = 1u << 4,
    kCpuSSE41 = 1u << 5,
    kCpuSSE42 = 1u << 6,
    kCpuAVX = 1u << 7,
    kCpuAVX2 = 1u << 8,
    kCpuAVX512 = 1u << 9, ///< F, BW, DQ and VL together
    kCpuAVX512VBMI = 1u << 10,
};

} // namespace AVBased

extern "C" {

/// Copies bytes between ranges that do not overlap; returns dst.
void* AVBasedMemCopy(void* dst, const void* src, size_t bytes);

/// What the processor can do, see AVBased::CPUFeature, less what the mask takes away.
unsigned AVBasedGetCPUFeatures();

/// Hides features from AVBasedGetCPUFeatures(): only the mask's bits are reported from now on (all bits at
/// start). Processors choose their kernels when they are made, so set this first. Safe from any thread.
void AVBasedSetCPUFeatureMask(unsigned mask);

/// Functions that give the same bits on every processor and beside every C library, for what reaches a
/// picture: off by one unit in the last of 53 bits at most (SLEEF's deterministic functions). Angles in
/// radians. What the C library gives NaN or infinity for gives it here. Any thread.
double AVBasedSine(double radians);
double AVBasedCosine(double radians);
double AVBasedTangent(double radians);
/// 0 to pi for a cosine of 1 to -1.
double AVBasedArcCosine(double cosine);
double AVBasedPower(double base, double exponent);

/// Sine and cosine of each of `count` angles in single precision: the nearest numbers but for one in
/// millions. The three ranges hold so many numbers each and do not overlap.
void AVBasedSinesAndCosines(const float* radians, float* sines, float* cosines, size_t count);

/// As CreateImageConverterEx with quality 0.
AVBased::IImageConverter* CreateImageConverter(unsigned format, unsigned width, unsigned height);

/// A converter to the format (an id of pixel_format.h) and size in pixels; width and height 0 keep each
/// source's own size. Quality: 0 fastest, 1 bilinear, 4 bicubic. Null with an error recorded when the format
/// is not served.
AVBased::IImageConverter* CreateImageConverterEx(unsigned format, unsigned width, unsigned height,
                                                 unsigned quality);

/// A crop/pan frame with all margins 0.
AVBased::IRawVideoFrameCropPan* CreateRawVideoFrameCropPan();

/// A resampler from any audio frame to this sample format (see AVBased::SampleFormat), rate in Hz and channel
/// count, interleaved or one buffer a channel, little-endian. The reserved arguments are not looked at;
/// effects pass 0, 1 and 0. Null with an error recorded when it can't be made.
AVBased::IAudioResampler* CreateAudioResampler(int format, unsigned rate, int channels, int reserved1,
                                               bool interleaved, int reserved2, int reserved3);
}
