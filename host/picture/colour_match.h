#pragma once
/// Pictures of other primaries, or another transfer, among those of an output.
#include <optional>

#include "host/picture/picture_filter.h"

namespace aveffect {

/// Brings pictures to primaries and a transfer. What a picture or the output does not say counts as the
/// other's; the transfers of usual screens count as one, since players show them alike. Used by one thread at
/// a time.
class ColourMatch {
public:
    explicit ColourMatch(AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED,
                         AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED)
        : m_primaries(primaries)
        , m_transfer(transfer) {}

    /// Whether the picture says other colours.
    bool Changes(const AVFrame& picture) const;

    /// A BGRA picture in these colours; itself where it says no others. Throws Error (Output).
    mediabridge::AVFramePtr Apply(mediabridge::AVFramePtr picture);

private:
    AVColorPrimaries m_primaries;
    AVColorTransferCharacteristic m_transfer;
    AVColorPrimaries m_from = AVCOL_PRI_UNSPECIFIED; ///< the filter's
    AVColorTransferCharacteristic m_fromTransfer = AVCOL_TRC_UNSPECIFIED;
    std::optional<PictureFilter> m_filter;
};

} // namespace aveffect
