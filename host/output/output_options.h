#pragma once
/// Where a result goes and how it is written, as every job that writes clips is told.
#include <optional>
#include <string>

#include "host/output/encoder_settings.h"
#include "host/picture/framing.h"

namespace aveffect {

inline constexpr size_t kUsualMemory = size_t{1} << 30;

struct OutputOptions {
    std::string output;     ///< "-" for standard output
    std::string format;     ///< of the output, by a container's name or an extension; empty: as its name says
    std::string videoCodec; ///< encoder or codec name; empty: the container's usual one
    std::string audioCodec; ///< likewise; empty: the input's where it serves, AAC, or the container's
    std::optional<double> crf;  ///< constant-quality factor; absent: the encoder's own
    std::optional<int> quality; ///< 1 to 100, of encoders that have such a scale; instead of crf
    std::optional<int64_t> bitRate, audioBitRate;          ///< bits a second; absent: the encoder's own
    EncoderSettings encoderSettings, audioEncoderSettings; ///< made last
    std::string preset;                                    ///< encoder preset; empty: the encoder's own
    std::string outputFormat; ///< pixel format of the output; empty: what suits codec and clip
    unsigned threads = 0;     ///< that work at a time, codecs' own not counted; 0: what the processors give
    size_t memory = kUsualMemory;   ///< bytes that pictures between decoder and encoder may take, but for one
    Framing framing = {};           ///< of the pictures
    std::optional<AVRational> rate; ///< pictures a second; absent: those that there are
    bool sdr = false;               ///< PQ and HLG are brought to BT.709 of standard range
    bool overwrite = false;
    bool besidePictures = false; ///< all but the pictures: what lies beside those that others render
};

} // namespace aveffect
