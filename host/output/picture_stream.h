#pragma once
/// An output's stream of pictures.
#include <map>

#include "host/output/container.h"
#include "host/output/output_clock.h"
#include "host/output/picture_encoder.h"

namespace aveffect {

/// How the times of pictures are given.
struct PictureTimes {
    AVRational base; ///< of pts and pkt_duration
    OutputClock::Rate rate;
};

/// Encodes and writes pictures, at the times that the container can say. Used by one thread at a time.
/// Everything throws Error.
class PictureStream {
public:
    /// Opens the encoder for pictures like the sample, which has its format, and adds the stream to the
    /// output, which outlives it. Throws Error (Usage, Output).
    PictureStream(const OutputPlan& plan, const AVFrame& sample, const PictureTimes& times,
                  Container& output);

    AVStream& Stream() noexcept { return *m_stream; }

    void Write(mediabridge::AVFramePtr picture);
    /// Writes what the encoder still holds.
    void Complete();

private:
    void FillUntil(int64_t tick);
    void Encode(AVFrame* picture);

    OutputClock m_clock;
    PictureEncoder m_encoder;
    bool m_counts; ///< the container counts pictures instead of timing them
    Container& m_output;
    AVStream* m_stream;
    std::map<int64_t, int64_t> m_durations; ///< of pictures in the encoder, by time
    mediabridge::AVFramePtr m_shown;        ///< where pictures are counted: the last one that was encoded
    int64_t m_fillUntil = 0;                ///< its end, in the encoder's base
};

} // namespace aveffect
