#pragma once
/// Distortions within a circle.
#include <cmath>
#include <limits>
#include <vector>

#include "AVEffect/StoredMapEffect.h"

namespace AVBased {

/// What spherize and rotate share: the circle.
class CCircleMapEffect : public CStoredMapEffect {
public:
    void InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) override { MapFrame(pFrame); }

protected:
    /// The effect's properties are the radius, the centre's column and row, and the scale.
    CCircleMapEffect(const EffectInfo& effect, Outside outside, bool writesRimLater);

    /// A place in the picture; it may lie outside.
    struct Source {
        int32_t x, y;
    };

    /// Where the pixel at that distance from the centre comes from.
    virtual Source SourceOf(int64_t dx, int64_t dy) const = 0;
    /// Told of the distance of a row from the centre, and of the farthest pixel in it from the centre's
    /// column, before its pixels' sources, above and below, are asked for.
    virtual void PrepareRow(int64_t dy, int64_t farthest) = 0;

    bool BuildMap(size_t width, size_t height) override;

    /// To a 32-bit integer as the processor converts: what does not fit becomes the lowest one, far outside
    /// every picture.
    static int32_t Truncate(double x) {
        return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int32_t>(x)
                                                     : std::numeric_limits<int32_t>::min();
    }
    static int32_t Narrow(int64_t x) { return Truncate(static_cast<double>(x)); }

    int m_nRadius;
    int m_nX, m_nY; // the centre
    double m_dScale;

private:
    SamplePlaces SourcesOf(size_t y) override;

    size_t m_nFirstRow = 0, m_nColumns = 0;  // of the map
    std::vector<uint32_t> m_Columns, m_Rows; // that its pixels come from, in row order
};

/// Pulls the pixels of a circle in or out along their rays.
class CSpherizeVideoImageEffect : public CCircleMapEffect {
public:
    CSpherizeVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;

private:
    void PrepareRow(int64_t dy, int64_t farthest) override;
    Source SourceOf(int64_t dx, int64_t dy) const override;

    std::vector<int32_t> m_Factors; // of a row's pixels by their distance from the centre's column, 256ths
};

/// Twists a circle, the more the nearer to its centre; beyond seven tenths of the radius the other way.
class CRotateVideoImageEffect : public CCircleMapEffect {
public:
    CRotateVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;

private:
    void PrepareRow(int64_t dy, int64_t farthest) override;
    Source SourceOf(int64_t dx, int64_t dy) const override;
    bool WrittenAtOnce(size_t x, size_t y) const override {
        return Inside(static_cast<int64_t>(x) - m_nX, static_cast<int64_t>(y) - m_nY);
    }
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
