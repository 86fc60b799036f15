#pragma once
/// The pixel format and colour range in which pictures are encoded.
#include "host/output/output_plan.h"
#include "host/picture/working_format.h"

namespace aveffect {

/// What the pictures look like when they reach the encoder.
struct EncoderFormat {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED; ///< unspecified: as the pictures are

    /// Whether a picture has to be converted; otherwise its bytes are taken as they are.
    bool Converts(const AVFrame& picture) const;
};

/// Whether the encoder takes pictures of that format in memory.
bool TakesFormat(const AVCodec& codec, AVPixelFormat format);

/// The names of the formats that an encoder lists, for messages; empty when it takes any.
std::string FormatsOf(const AVCodec& codec);

/// The encoder's format for pictures like this one, which should look like the wanted format. The plan's own
/// where it names one. Codecs that people play get what all players show: 4:2:0 of 8 bits in limited range,
/// with transparency where there is some and the file can hold it, with 10 bits for PQ and HLG where the
/// wanted format has them. Other codecs get the format nearest to the wanted one, the colour range staying
/// where codec or container say it to players, limited where they can't; GIF gets palettes. Throws Error
/// (Usage).
EncoderFormat ChooseEncoderFormat(const OutputPlan& plan, AVPixelFormat wanted, const ClipKind& clip,
                                  const AVFrame& picture);

} // namespace aveffect
