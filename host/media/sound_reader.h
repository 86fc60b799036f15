#pragma once
/// A clip's decoded sound.
#include <memory>

#include "host/media/clip_scan.h"

namespace aveffect {

/// Which sound is read, and as what.
struct SoundRequest {
    SourceRequest source;
    Moment start; ///< where times count from, in the file's times
    SoundShape shape;
    AVSampleFormat format = AV_SAMPLE_FMT_FLTP;
};

/// Whether reading begins near a start. Other files, sound alone as a rule, are read from their beginning.
bool CanJump(const AVFormatContext& input, const AVStream& sound);

/// Reads a clip's sound in one shape, whatever the file's is or becomes. Used by one thread at a time.
class SoundReader {
public:
    /// The file is known to have sound. Throws Error (Input, Interrupted).
    SoundReader(SoundRequest request, const std::atomic<bool>& cancel);
    SoundReader(const SoundReader&) = delete; // the library holds on to its place
    SoundReader& operator=(const SoundReader&) = delete;

    /// The next samples; pts counts samples from the request's start and may be negative. Null at the end.
    mediabridge::AVFramePtr Next();

    /// What was found to be wrong so far.
    DamageReport Damage() const;

private:
    void SeekNearStart();
    int64_t Samples(const Moment& time) const;
    mediabridge::AVFramePtr Decode();
    mediabridge::AVFramePtr Convert(AVFrame* sound);

    SoundRequest m_request;
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
