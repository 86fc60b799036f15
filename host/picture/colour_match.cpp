#include "host/picture/colour_match.h"

#include <string>
#include <utility>

namespace aveffect {
namespace {

enum class Kind { Unsaid, Usual, Pq, Hlg, Linear };

Kind KindOf(AVColorTransferCharacteristic transfer) {
    switch (transfer) {
    case AVCOL_TRC_UNSPECIFIED:
    case AVCOL_TRC_RESERVED0:
    case AVCOL_TRC_RESERVED:
        return Kind::Unsaid;
    case AVCOL_TRC_SMPTE2084:
        return Kind::Pq;
    case AVCOL_TRC_ARIB_STD_B67:
        return Kind::Hlg;
    case AVCOL_TRC_LINEAR:
        return Kind::Linear;
    default:
        return Kind::Usual;
    }
}

bool IsSaid(AVColorPrimaries primaries) {
    return primaries != AVCOL_PRI_UNSPECIFIED && primaries != AVCOL_PRI_RESERVED0 &&
           primaries != AVCOL_PRI_RESERVED;
}

bool DiffersFrom(AVColorTransferCharacteristic one, AVColorTransferCharacteristic other) {
    const Kind a = KindOf(one), b = KindOf(other);
    return a != b && a != Kind::Unsaid && b != Kind::Unsaid;
}

} // namespace

bool ColourMatch::Changes(const AVFrame& picture) const {
    const bool primaries =
        IsSaid(picture.color_primaries) && IsSaid(m_primaries) && picture.color_primaries != m_primaries;
    return primaries || DiffersFrom(picture.color_trc, m_transfer);
}

mediabridge::AVFramePtr ColourMatch::Apply(mediabridge::AVFramePtr picture) {
    if (!Changes(*picture)) return picture;
    if (!m_filter || m_from != picture->color_primaries || m_fromTransfer != picture->color_trc) {
        m_from = picture->color_primaries;
        m_fromTransfer = picture->color_trc;
        const auto saidOr = [](AVColorTransferCharacteristic own, AVColorTransferCharacteristic other) {
            if (KindOf(own) != Kind::Unsaid) return own;
            return KindOf(other) != Kind::Unsaid ? other : AVCOL_TRC_BT709;
        };
        const AVColorTransferCharacteristic to = saidOr(m_transfer, m_fromTransfer);
        const AVColorTransferCharacteristic from = DiffersFrom(m_fromTransfer, to) ? m_fromTransfer : to;
        const AVColorPrimaries own = IsSaid(m_from) ? m_from : m_primaries;
        const AVColorPrimaries wanted = IsSaid(m_primaries) ? m_primaries : own;
        const int fallback = AVCOL_PRI_BT709;
        // White of usual screens lies at 203 cd/m2 of those with more.
        m_filter.emplace("zscale=matrixin=gbr:matrix=gbr:rangein=full:range=full:npl=203:primariesin=" +
                             std::to_string(IsSaid(own) ? own : fallback) +
                             ":primaries=" + std::to_string(IsSaid(wanted) ? wanted : fallback) +
                             ":transferin=" + std::to_string(from) + ":transfer=" + std::to_string(to) +
                             ",format=bgra",
                         "brought to the output's colours");
    }
    const AVColorSpace matrix = picture->colorspace;
    picture = m_filter->Apply(std::move(picture));
    picture->colorspace = matrix; // the one that it came from
    picture->color_primaries = m_primaries;
    picture->color_trc = m_transfer;
    return picture;
}

} // namespace aveffect
