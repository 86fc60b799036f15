#pragma once
/// YUV planes to pixels and back, between pictures of one size. Chroma of half the columns or rows is
/// filtered on the way, with samples beyond an edge repeating the nearest. All is in whole numbers: every
/// level gives the same bytes, which are those of exact arithmetic, rounded to the nearest, but where that
/// lies within a 20th of a half.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Luma as large as the picture; chroma as large as that, or rounded up to half where it is halved. Alpha may
/// be empty.
struct YuvaPlanes {
    Plane8 y, u, v, alpha;
    bool halvedColumns, halvedRows; ///< chroma's
};

/// Where a row or column of luma takes chroma from: four taps from the chroma sample of half its number plus
/// first on, in 16384ths, which add up to 1. One tap of 1 is always the second.
struct ChromaPhase {
    int first;
    int16_t taps[4];
};

/// How planes become pixels. A chroma sample less 128 adds (whole + part / 32768) times itself, part between
/// -16384 and 16384; luma counts scale / 16384 after offset.
struct PixelRule {
    uint16_t lumaScale;
    int16_t lumaOffset; ///< of the scaled luma, in 64ths
    int16_t redWhole, redPart;
    int16_t blueWhole, bluePart;
    int16_t greenFromU, greenFromV;  ///< in 32768ths
    ChromaPhase columns[2], rows[2]; ///< even and odd ones, where chroma is halved
};

/// What a sample of halved chroma is made of, across or down: of pairs of columns or rows behind twice its
/// own number, -3 to 4, which weigh the same, in 65536ths. The weights add up to a half. The last pair may
/// weigh nothing.
struct ChromaPairs {
    static constexpr size_t kPairs = 4;

    int first[kPairs], second[kPairs];
    int16_t weights[kPairs];
};

/// How pixels become planes, in 32768ths: of blue, green and red, and what is added, a multiple of 256.
struct PlaneRule {
    struct Weights {
        int16_t blue, green, red;
    };
    Weights y, u, v;
    int32_t lumaOffset;
    ChromaPairs columns, rows; ///< where chroma is halved
};

/// Bytes of scratch, aligned to 64, for pictures of that width.
constexpr size_t ConversionScratchBytes(size_t width) noexcept {
    constexpr size_t kRows = 2 + (2 * 2 + 2 * 8) / 2, // one of pixels, two planes' of half the columns
        kPadding = 512;
    return kRows * (width + kPadding) * sizeof(int16_t);
}

/// How pixels lie in memory: B, G, R, A; R, G, B, A when swapped; either without A when short.
struct PixelOrder {
    bool swapped, isShort;
};

/// One level's kernels.
struct ConversionKernels {
    /// Opaque where the planes have no alpha.
    void (*toPixels)(Plane32 pixels, const YuvaPlanes& planes, const PixelRule& rule, PixelOrder order,
                     uint8_t* scratch) noexcept;
    void (*toPlanes)(const YuvaPlanes& planes, Plane32 pixels, const PlaneRule& rule, PixelOrder order,
                     uint8_t* scratch) noexcept;
    /// Pixels of four bytes from short ones, opaque; the first and the third byte exchanged or as they are.
    void (*addAlpha)(Plane32 pixels, Plane32 from, bool exchanged) noexcept;
};

template <>
const ConversionKernels& SelectKernels<ConversionKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
