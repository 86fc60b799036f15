#pragma once
/// Scatters samples to the right and downwards.
#include <vector>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scatter_map.h"

namespace AVBased {

/// Every sample comes from one at a random distance behind it. The distances are drawn on the first frame
/// after a property has changed and stay for later ones.
class CAtomizeVideoImageEffect : public CBasedVideoImageEffect {
public:
    CAtomizeVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    /// A place in the picture; the column may be one past the row's last.
    struct Source {
        size_t x, y;
    };
    /// What the plane maps hold for.
    struct Geometry {
        bool packed = false;
        Plane8 planes[3] = {};
        bool operator==(const Geometry& other) const;
    };

    bool Horizontal() const { return m_nIsHorizontal == 1; }
    bool Vertical() const { return m_nIsVertical == 1; }
    void ScatterFrame(IRawVideoFrame* pFrame, bool first);
    void DrawAndScatter(Plane32 plane);
    void DrawAndScatter(const PlanarView& view);
    void Scatter(Plane32 plane);
    void Scatter(const PlanarView& view);
    void Forget();
    void Draw(size_t width, size_t rows);
    bool IsMapped(const Geometry& geometry);
    /// Where sample (x, y) of a picture of that size comes from; false where nothing was drawn for it or the
    /// source lies outside.
    bool SourceOf(size_t x, size_t y, size_t width, size_t rows, Source& source) const;
    void MapPlane(ScatterMap& map, size_t width, size_t rows, size_t pitch) const;
    void MapChroma(ScatterMap& map, const PlanarView& view, const Plane8& plane) const;

    unsigned m_nIsVertical;
    unsigned m_nIsHorizontal;
    unsigned m_nLevel; // distances lie below it
    const kernels::RemapKernels& m_Kernels;
    std::vector<uint32_t> m_Distances; // of a picture's samples, in row order
    size_t m_nWidth = 0, m_nRows = 0;  // of that picture
    unsigned m_nTableReady = 0;
    Geometry m_Mapped;
    ScatterMap m_Pixels{4}, m_Luma{1}, m_U{1}, m_V{1}; // one for both chroma planes where they are alike
};

} // namespace AVBased
