#pragma once
/// Where a result goes and how it is written, as every job that writes clips is told.
#include <optional>
#include <string>

namespace aveffect {

struct OutputOptions {
    std::string output;
    std::string videoCodec;    ///< encoder or codec name; empty: the container's usual one
    std::string audioCodec;    ///< likewise; empty: the input's where it serves, AAC, or the container's
    std::optional<double> crf; ///< constant-quality factor; absent: the encoder's own
    std::string preset;        ///< encoder preset; empty: the encoder's own
    std::string outputFormat;  ///< pixel format of the output; empty: what suits codec and clip
    unsigned threads = 0;      ///< of each decoder and of the encoder; 0: as many as there are processors
    bool sdr = false;          ///< PQ and HLG are brought to BT.709 of standard range
    bool overwrite = false;
};

} // namespace aveffect
