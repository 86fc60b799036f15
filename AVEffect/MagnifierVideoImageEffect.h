#pragma once
/// A magnifying glass.
#include <vector>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/pick.h"

namespace AVBased {

/// Enlarges what lies in a circle about its middle: from the nearest pixel up to twofold, beyond that blended
/// from four.
class CMagnifierVideoImageEffect : public CBasedVideoImageEffect {
public:
    CMagnifierVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    /// Where the columns or rows of the circle's square come from, along one axis.
    struct Axis {
        uint32_t begin;               // first one that is written
        uint32_t size;                // how many
        uint32_t limit;               // of the picture
        std::vector<uint64_t> places; // 16.16 fixed point; the fraction is 0 for nearest pixels
    };
    /// A circle as the kernels take it, for one plane; the tables live here.
    struct PlaneCircle {
        std::vector<uint32_t> columns, right;
        std::vector<uint8_t> fractions;
        std::vector<kernels::CircleRow> rows;
        kernels::Circle circle;
    };

    void Magnify(Plane32 plane, Plane32 copy);
    void Magnify(const PlanarView& view, const PlanarView& copy);
    void MagnifierNearestRGBA32Effect(Plane32 plane, Plane32 copy);
    void MagnifierDoubleRGBA32Effect(Plane32 plane, Plane32 copy);
    void MagnifierDoubleRGBA32EffectMMX(Plane32 plane, Plane32 copy);
    void MagnifierNearestComponentEffect(const PlanarView& view, const PlanarView& copy);
    void MagnifierDoubleComponentEffect(const PlanarView& view, const PlanarView& copy);

    using PlanarKernel = decltype(kernels::PickKernels::circleComponent);
    void MagnifyPlanes(PlanarKernel kernel, const PlanarView& view, const PlanarView& copy);
    bool FitsIn(size_t width, size_t height) const;
    bool Blends() const { return m_dScale > 2.0; }
    void FindPlaces(Axis& axis, int centre, size_t limit, bool skipsFirst) const;
    void FindPlaces(size_t width, size_t height, bool skipsFirst);
    /// Columns begin to end of the circle in that row, counted from the square's left; false when there are
    /// none.
    bool SpanOf(uint32_t row, uint32_t& begin, uint32_t& end) const;
    const kernels::Circle& CircleFor(size_t width, size_t rows, unsigned horizontalShift,
                                     unsigned verticalShift);

    int m_nRadius;
    int m_nX, m_nY; // the centre
    double m_dScale;
    unsigned m_nUseMMX;
    Axis m_Columns, m_Rows;
    PlaneCircle m_Circle;
    Scratch m_Scratch;
};

} // namespace AVBased
