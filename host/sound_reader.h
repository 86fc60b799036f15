#pragma once
/// A clip's decoded sound.
#include <memory>

#include "host/clip_scan.h"

namespace aveffect {

/// Reads a clip's sound in one shape, whatever the file's is or becomes, as planar floating point. Used by
/// one thread at a time.
class SoundReader {
public:
    /// The scan has found sound. Throws Error (Input, Interrupted).
    SoundReader(const ClipScan& scan, SoundShape shape, const std::atomic<bool>& cancel);
    SoundReader(const SoundReader&) = delete; // the library holds on to its place
    SoundReader& operator=(const SoundReader&) = delete;

    /// The next samples; pts counts samples from the clip's start and may be negative. Null at the end.
    mediabridge::AVFramePtr Next();

private:
    mediabridge::AVFramePtr Decode();
    mediabridge::AVFramePtr Convert(AVFrame* sound);

    std::string m_path;
    SoundShape m_shape;
    Moment m_start;
    ReadInterrupt m_interrupt;
    InputContextPtr m_input;
    AVStream* m_stream = nullptr;
    std::unique_ptr<Decoder> m_decoder;
    mediabridge::AVPacketPtr m_packet;
    mediabridge::SwrContextPtr m_resampler;
    int64_t m_end = 0; ///< of what was given out, in samples
    bool m_draining = false;
    bool m_flushed = false;
};

} // namespace aveffect
