#pragma once
/// Stretches a band of the picture and squeezes the rest.
#include <vector>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"

namespace AVBased {

class CTensileVideoImageEffect : public CBasedVideoImageEffect {
public:
    CTensileVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    /// A band of rows or columns; the property values are unsigned.
    struct Band {
        int enabled;
        unsigned begin, end;
        double scale;

        bool FitsIn(size_t size) const { return end <= size && end > begin && scale >= 1.0; }
        /// Rows or columns that it is stretched to.
        bool IsOn() const { return enabled == 1; }
        unsigned Stretched() const;
    };

    void Stretch(Plane32 plane, Plane32 copy);
    void Stretch(const PlanarView& view, const PlanarView& copy);
    void VerticalTensileRgba32Effect(Plane32 plane, Plane32 copy);
    void VerticalTensileComponentEffect(const PlanarView& view, const PlanarView& copy);
    void HorizontalTensileRgba32Effect(Plane32 plane, Plane32 copy);
    void HorizontalTensileComponentEffect(const PlanarView& view, const PlanarView& copy);
    void TensileRgba32Effect(Plane32 plane, Plane32 copy);
    void TensileComponentEffect(const PlanarView& view, const PlanarView& copy);

    void FindRows(size_t height);
    void FindColumns(size_t width);
    void UseAllRows(size_t height);
    void CopyRows(Plane8 plane, Plane8 copy, unsigned verticalShift);
    void PickPlanes(const PlanarView& view, const PlanarView& copy);

    Band m_Vertical, m_Horizontal;
    std::vector<uint32_t> m_Rows;    // where the rows come from, from the first one on
    std::vector<uint32_t> m_Columns; // where the columns come from
    std::vector<uint32_t> m_ChromaRows, m_ChromaColumns;
    Scratch m_Scratch;
};

} // namespace AVBased
