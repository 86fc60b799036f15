#pragma once
/// Subtitles in words, on their way from one way of writing them to another.
#include <string>

#include "host/output/container.h"

namespace aveffect {

/// Whether files of that kind are known to hold subtitles of that codec.
bool HoldsSubtitles(const OutputPlan& plan, AVCodecID codec);

/// The codec in which files of that kind hold the words of subtitles that they can't hold as they are; none
/// for subtitles that are pictures, and where there is no such codec.
AVCodecID TextCodecFor(const OutputPlan& plan, AVCodecID input);

/// Rewrites one stream of subtitles. Used by one thread at a time.
class TextSubtitles {
public:
    /// Opens decoder and encoder and adds the stream to the output, with the input's tags. Throws Error.
    TextSubtitles(const AVStream& input, AVCodecID codec, Container& output);

    /// Writes the packet, whose times are in the input's base. False when it can't be decoded; it is left
    /// out then. What shows nothing is left out too.
    bool Write(const AVPacket& packet);

private:
    AVRational m_base;
    mediabridge::AVCodecContextPtr m_decoder, m_encoder;
    mediabridge::AVPacketPtr m_packet;
    Container& m_output;
    AVStream* m_stream;
};

} // namespace aveffect
