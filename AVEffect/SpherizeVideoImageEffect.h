#pragma once
/// Distortions within a circle: every pixel of it comes from a place that is computed once and stored.
#include <cmath>
#include <limits>
#include <vector>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/frame_planes.h"
#include "AVEffect/plane_map.h"

namespace AVBased {

/// What spherize and rotate share: the circle, and the map of where its pixels come from. The map is made on
/// the first frame and replayed on later ones, whatever their size and format, until a property says
/// otherwise.
class CCircleMapEffect : public CBasedVideoImageEffect {
protected:
    /// A place in the picture; it may lie outside.
    struct Source {
        int32_t x, y;
    };

    /// Packed pixels from outside the picture are white and opaque with fillsPacked, else they are left
    /// alone. With writesRimLater the frame that the map is made on leaves out what WrittenAtOnce says.
    CCircleMapEffect(const char* name, bool fillsPacked, bool writesRimLater);

    /// Where the pixel at that distance from the centre comes from.
    virtual Source SourceOf(int64_t dx, int64_t dy) const = 0;
    /// Told of the distance of a row from the centre, and of the farthest pixel in it from the centre's
    /// column, before its pixels' sources, above and below, are asked for.
    virtual void PrepareRow(int64_t dy, int64_t farthest) = 0;
    /// Whether the pixel is written already by the frame that the map is made on.
    virtual bool WrittenAtOnce(int64_t, int64_t) const { return true; }

    /// Makes the map for pictures of that size in pixels. False, and no map, where circle and picture don't
    /// meet as they must.
    bool BuildMap(size_t width, size_t height);

    void BuildPacked(Plane32 plane, Plane32 copy);
    void ReplayPacked(Plane32 plane, Plane32 copy);
    void BuildPlanar(const PlanarView& view, const PlanarView& copy);
    void ReplayPlanar(const PlanarView& view, const PlanarView& copy);

    /// To a 32-bit integer as the processor converts: what does not fit becomes the lowest one, far outside
    /// every picture.
    static int32_t Truncate(double x) {
        return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int32_t>(x)
                                                     : std::numeric_limits<int32_t>::min();
    }
    static int32_t Narrow(int64_t x) { return Truncate(static_cast<double>(x)); }

    int m_nRadius = 0;
    int m_nX = 0, m_nY = 0; // the centre
    double m_dScale = 0;
    int16_t m_nMapValid = 0;

private:
    struct Rectangle {
        size_t xBegin = 0, xEnd = 0, yBegin = 0, yEnd = 0;
    };
    /// What the replayed maps of planes hold for.
    struct Geometry {
        bool packed = false;
        size_t width = 0, height = 0, pitch = 0, chromaWidth = 0, chromaRows = 0, uPitch = 0, vPitch = 0;
        unsigned horizontalShift = 0, verticalShift = 0;
        bool operator==(const Geometry&) const = default;
    };

    const Source& At(size_t x, size_t y) const {
        return m_Sources[(y - m_Rectangle.yBegin) * (m_Rectangle.xEnd - m_Rectangle.xBegin) +
                         (x - m_Rectangle.xBegin)];
    }
    void MapPlane(PlaneMap& map, size_t width, size_t height, size_t pitch, bool fills) const;
    void MapChroma(PlaneMap& map, const PlanarView& view, const Plane8& copy, bool atOnce) const;
    void ApplyPlanar(const PlanarView& view, const PlanarView& copy, bool atOnce);

    bool m_bFillsPacked;
    bool m_bWritesRimLater;
    const kernels::RemapKernels& m_Kernels;
    Rectangle m_Rectangle;
    std::vector<Source> m_Sources;                   // of the rectangle's pixels, in row order
    Geometry m_Mapped;                               // no plane map holds while its width is 0
    PlaneMap m_Pixels{4}, m_Luma{1}, m_U{1}, m_V{1}; // one for both chroma planes where they are alike
};

/// Pulls the pixels of a circle in or out along their rays.
class CSpherizeVideoImageEffect : public CCircleMapEffect {
public:
    CSpherizeVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void SpherizeRgba32Effect(Plane32 plane, Plane32 copy) { BuildPacked(plane, copy); }
    void ConverSpherizeRgba32Effect(Plane32 plane, Plane32 copy) { ReplayPacked(plane, copy); }
    void SpherizeComponentEffect(const PlanarView& view, const PlanarView& copy) { BuildPlanar(view, copy); }
    void ConverSpherizeComponentEffect(const PlanarView& view, const PlanarView& copy) {
        ReplayPlanar(view, copy);
    }

    void PrepareRow(int64_t dy, int64_t farthest) override;
    Source SourceOf(int64_t dx, int64_t dy) const override;

    std::vector<int32_t> m_Factors; // of a row's pixels by their distance from the centre's column, 256ths
};

/// Twists a circle, the more the nearer to its centre; beyond seven tenths of the radius the other way.
class CRotateVideoImageEffect : public CCircleMapEffect {
public:
    CRotateVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void RotateRgba32Effect(Plane32 plane, Plane32 copy) { BuildPacked(plane, copy); }
    void ConverRotateRgba32Effect(Plane32 plane, Plane32 copy) { ReplayPacked(plane, copy); }
    void RotateComponentEffect(const PlanarView& view, const PlanarView& copy) { BuildPlanar(view, copy); }
    void ConverRotateComponentEffect(const PlanarView& view, const PlanarView& copy) {
        ReplayPlanar(view, copy);
    }

    void PrepareRow(int64_t dy, int64_t farthest) override;
    Source SourceOf(int64_t dx, int64_t dy) const override;
    bool WrittenAtOnce(int64_t dx, int64_t dy) const override { return Inside(dx, dy); }
    bool Inside(int64_t dx, int64_t dy) const {
        const auto squares = static_cast<float>(dx * dx + dy * dy);
        return static_cast<float>(m_nRadius) > std::sqrt(squares);
    }

    struct Turn {
        float sine, cosine;
    };
    std::vector<Turn> m_Turns; // of a row's pixels by their distance from the centre's column
};

} // namespace AVBased
