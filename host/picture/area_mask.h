#pragma once
/// Masks that are a shape: where in a picture an effect works.
#include <vector>

#include "host/support/av_owner.h"

namespace aveffect {

/// A shape in fractions of a picture, by the box around it. It may lie outside, in part or whole; without
/// width or height, and where numbers are not finite, there is none.
struct Area {
    enum class Shape { Rectangle, Ellipse };

    Shape shape = Shape::Rectangle;
    double x = 0, y = 0; ///< of the box's left top corner
    double width = 1, height = 1;

    bool operator==(const Area&) const = default;
};

/// Draws areas. Used by one thread at a time.
class AreaMask {
public:
    /// The area in grey of that size, 255 within it, or outside when it is inverted. Without feather a pixel
    /// at the border has the share of it that lies within; with feather values rise evenly over so many
    /// pixels, half of them on either side, but over no more than the area is wide or high, so that its
    /// middle remains. At a rectangle's corners both ramps multiply.
    ///
    /// Stays as it is till the next call, which draws only what differs. Throws Error (Output) when memory is
    /// short.
    const AVFrame& Draw(const Area& area, double featherPixels, bool inverted, int width, int height);

private:
    void DrawRectangle();
    void DrawEllipse();
    void DrawCoveredEllipse();
    template <class Ramp>
    void DrawRow(int row, double middle, double outer, double inner, const Ramp& ramp);

    mediabridge::AVFramePtr m_mask;
    Area m_area;
    double m_feather = 0;
    bool m_inverted = false;
    double m_x = 0, m_y = 0, m_halfWidth = 0, m_halfHeight = 0; ///< middle and half sides, in pixels
    double m_ramp = 0;                                          ///< pixels, feather less what is too much
    std::vector<float> m_columns;                               ///< a rectangle's share of each, times 255
};

} // namespace aveffect
