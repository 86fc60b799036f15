#pragma once
/// Poster, video wall, reflecting tiles and inversion in a circle.
#include <array>
#include <optional>
#include <vector>

#include "AVEffect/StoredMapEffect.h"
#include "AVEffect/support/colour_value.h"
#include "kernels/lens.h"
#include "kernels/wall.h"

namespace AVBased {

/// Two colours: what is brighter than a threshold becomes one, all else black.
class CPopStyleVideoImageEffect : public CBasedVideoImageEffect {
public:
    CPopStyleVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void PopStyleRgba32Effect(Plane32 plane) const;
    void PopStyleComponentEffect(const PlanarView& view) const;

    unsigned m_nThreshold;
    unsigned m_nColor;
    YuvColour m_Yuv;
};

/// The picture, made smaller, over and over.
class CWallVideoImageEffect : public CBasedVideoImageEffect {
public:
    CWallVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    /// The tiles along one axis: what is asked for, and the luma columns or rows of the first tile.
    struct Tiles {
        double count;
        size_t size = 0;
        uint64_t step = 0; // from sample to sample of the tile, 256ths

        /// For that many columns or rows; false where a tile would have none.
        bool FitInto(size_t lumaSize);
    };
    /// The same for one plane. Of samples whose luma lies in two tiles the second one counts, so that they
    /// are no part of the first tile in the end.
    struct PlaneTiles {
        std::vector<uint32_t> sources;   // of the first tile's samples
        size_t whole;                    // samples of the first tile alone
        std::vector<uint32_t> following; // up to where all repeats: earlier samples that the next ones copy
        size_t limit;                    // samples there are
        size_t last;                     // the earlier sample that the plane's last one copies

        void Find(const Tiles& tiles, size_t lumaSize, size_t planeSize, unsigned shift);
    };

    /// Throws CBaseException 10021008 where a tile would be without columns or rows.
    void FitInto(size_t width, size_t height);
    void WallRgba32Effect(Plane32 plane);
    void WallComponentEffect(const PlanarView& view);
    kernels::WallTile FirstTile(unsigned verticalShift) const;
    void Repeat(Plane8 plane, size_t sampleBytes) const;

    Tiles m_Horizontal, m_Vertical;
    PlaneTiles m_Columns, m_Rows;
};

/// What the effects with lenses share: a map of the whole picture, of which a row at a time is computed.
class CLensMapEffect : public CStoredMapEffect {
protected:
    explicit CLensMapEffect(const EffectInfo& effect)
        : CStoredMapEffect(effect, Outside::Kept, false) {}

    bool BuildMap(size_t width, size_t height) override;

    kernels::LensSize m_Size{}; // of the map
};

/// Tiles that each bend the picture like a lens.
class CTileReflectVideoImageEffect : public CLensMapEffect {
public:
    CTileReflectVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    /// A direction, 32768ths.
    struct Turn {
        int32_t sine, cosine;
        bool operator==(const Turn&) const = default;
        static Turn Of(int degrees);
    };

    bool BuildMap(size_t width, size_t height) override;
    void FindBends();
    void FindSources(size_t y, size_t count, const SamplePlaces& places) override;

    static std::optional<int32_t> ZoomOf(int size);

    Turn m_Turn = {11743, 25466};   // no angle's; only a set of the property counts
    std::optional<int32_t> m_nZoom; // 256ths of a degree each pixel; none for tiles without a size
    int32_t m_nCurvature;
    std::array<int32_t, kernels::TileLens::kBends> m_Bends{}; // of the map, by degrees from -90 on
};

/// Exchanges the inside of a circle with what is around it.
class CMirrorInvertVideoImageEffect : public CLensMapEffect {
public:
    CMirrorInvertVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    bool BuildMap(size_t width, size_t height) override;
    void FindSources(size_t y, size_t count, const SamplePlaces& places) override;

    int32_t m_nAmount; // percent of the circle's area
};

} // namespace AVBased
