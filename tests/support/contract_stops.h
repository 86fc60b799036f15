#pragma once
/// What is stated to stop the program: assertions are part of the contract. Sweeps and fuzz targets keep away
/// from it.
#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "avbase/avbase_srcutils/holders.h"
#include "aveffect/audio_frame.h"
#include "aveffect/base_media.h"
#include "aveffect/catalogue.h"
#include "aveffect/plugin.h"
#include "tests/support/host_sound.h"

namespace test {

/// Formats, sizes and planes; of whatever pitches, which SameLayout() might refuse.
inline bool AreAlike(AVBased::IRawVideoFrame& a, AVBased::IRawVideoFrame& b) {
    const auto shapeOf = [](AVBased::IRawVideoFrame& frame) {
        std::vector<unsigned> shape = {frame.GetPixelFormat(), 0, 0};
        frame.GetDimension(&shape[1], &shape[2]);
        for (unsigned i = 0; i < frame.GetBufferCount(); ++i) {
            unsigned width = 0, pitch = 0, rows = 0;
            frame.GetBuffer(i, &width, &pitch, &rows);
            shape.insert(shape.end(), {width, pitch, rows});
        }
        return shape;
    };
    return shapeOf(a) == shapeOf(b);
}

/// Whether the processor, as it is set, ends the program on that frame.
inline bool StopsByContract(const AVBased::EffectInfo& effect, AVBased::IVideoProc& proc,
                            AVBased::IRawVideoFrame& frame) {
    if (effect.kind == AVBased::EffectKind::Transition)
        return !AVBased::ConverterPtr(CreateImageConverter(frame.GetPixelFormat(), 0, 0));
    if (effect.kind != AVBased::EffectKind::Stereo) return false;
    const int mode = std::atoi(proc.GetProperty("render_3d_mode", nullptr));
    if (mode == 1 || mode == 2) return frame.GetBufferCount() != 1 && frame.GetBufferCount() != 3;
    if (mode == 3 || mode == 4) return false;
    // Showing one view alone is a copy between frames that must be alike.
    auto* second = static_cast<AVBased::IRawVideoFrame*>(frame.GetInterface(AVBased::kSubsetFrameInterface));
    return second && !AreAlike(frame, *second);
}

inline bool StopsByContract(const AVBased::EffectInfo& effect, AVBased::IAudioProc&,
                            AVBased::IRawAudioFrame& sound) {
    const int format = sound.GetSampleFormat();
    unsigned bytes = 0;
    const unsigned char* const first = sound.GetBuffer(0, &bytes);
    if (effect.name == std::string_view(AVBased::effectNameAudioVolume))
        return !sound.IsInterleaved() || format != AVBased::sfSigned16 || (first && bytes == 0);
    const bool asserts = IsSampleFormat(format) && format != AVBased::sfUnsigned32;
    if (effect.name != std::string_view(AVBased::effectNameAudioFader) || !sound.IsInterleaved() || !asserts)
        return false;
    // No step may begin behind the buffer; the last one begins at the last sample at the latest.
    const size_t stride = static_cast<size_t>(std::max(1, sound.GetChannels())) * SampleBytesOf(format);
    return sound.GetSampleCount() != 0 && (sound.GetSampleCount() - 1) * stride >= bytes;
}

} // namespace test
