#pragma once
/// Conversions between YUV planes and RGB pixels that are done here and not by libswscale.
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "kernels/conversion.h"
#include "kernels/widen.h"
#include "mediabridge/av_ptr.h"

namespace mediabridge {

enum class ScaleQuality { Fastest, Bilinear, Bicubic, Lanczos };

/// What a conversion is made for. J formats count as their plain twins.
struct PictureSide {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    int width = 0;
    int height = 0;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;        ///< one name for each matrix
    AVChromaLocation chroma = AVCHROMA_LOC_UNSPECIFIED; ///< of formats with fewer chroma samples
    bool bottomUp = false;                              ///< how rows are stored
    bool operator==(const PictureSide&) const = default;
};

/// One conversion, in the kernels' whole numbers: results are the nearest to those of exact arithmetic, the
/// same on every processor. Chroma is interpolated, and filtered on the way to fewer samples, by a cubic
/// (bicubic quality) or by straight lines (below), from where it lies. Used by one thread at a time.
class PixelConversion {
public:
    /// Nothing where libswscale has to serve: see the tables in the source.
    static std::optional<PixelConversion> Between(const PictureSide& source, const PictureSide& target,
                                                  ScaleQuality quality);

    /// From the source's whole picture, of which it reads pixels alone, into the target's memory.
    void Run(const AVFrame& source, AVFrame& target);

private:
    PixelConversion() = default;
    bool SetUp(const PictureSide& source, const PictureSide& target, ScaleQuality quality);
    void SetRules(const PictureSide& yuv, ScaleQuality quality);
    AVBased::kernels::YuvaPlanes PlanesOf(const AVFrame& picture) const;
    void SetColumns(int width, int wide, ScaleQuality quality);

    enum class Kind { ToPixels, ToPlanes, WidenPixels, WidenPlanes, AddAlpha };
    Kind m_kind = Kind::ToPixels;
    AVBased::kernels::PixelOrder m_order{};
    bool m_exchanged = false;  ///< red and blue, of what gets alpha
    bool m_keepsAlpha = false; ///< else it becomes opaque
    bool m_halvedColumns = false, m_halvedRows = false;
    AVBased::kernels::PixelRule m_pixelRule{};
    AVBased::kernels::PlaneRule m_planeRule{};
    std::vector<std::int32_t> m_first; ///< of widening
    std::array<std::vector<std::int16_t>, 4> m_taps;
    struct alignas(64) Line {
        std::uint8_t bytes[64];
    };
    std::vector<Line> m_scratch;
};

} // namespace mediabridge
