#pragma once
/// Distortions within a circle.
#include <cmath>
#include <limits>
#include <vector>

#include "AVEffect/StoredMapEffect.h"
#include "kernels/lens.h"

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

    /// The farthest pixels of a map from the centre.
    struct Reach {
        int64_t columns, rows;
    };

    /// Told of a map before its rows are asked for.
    virtual void Prepare(const Reach& reach) = 0;
    /// Where the pixels of the row at that distance from the centre come from, from the column at the
    /// distance dx on.
    virtual void FindRow(int64_t dx, int64_t dy, size_t count, uint32_t* columns, uint32_t* rows) = 0;

    bool BuildMap(size_t width, size_t height) override;
    /// The same row, as the kernels are told of it.
    kernels::RowAround RowOf(int64_t dx, int64_t dy, size_t count) const;

    /// To a 32-bit integer as the processor converts: what does not fit becomes the lowest one, far outside
    /// every picture.
    static int32_t Truncate(double x) {
        return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int32_t>(x)
                                                     : std::numeric_limits<int32_t>::min();
    }
    static int32_t Narrow(int64_t x) { return Truncate(static_cast<double>(x)); }

    struct Circle {
        int radius;
        int x, y; // the centre
        double scale;
    };
    Circle m_Set;      // by the properties
    Circle m_Map = {}; // what the map was made of: properties may change while it stays

private:
    void FindSources(size_t y, size_t count, const SamplePlaces& places) override;

    int64_t m_nFirstColumn = 0; // of the map
};

/// Pulls the pixels of a circle in or out along their rays.
class CSpherizeVideoImageEffect : public CCircleMapEffect {
public:
    CSpherizeVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;

private:
    void Prepare(const Reach& reach) override;
    void FindRow(int64_t dx, int64_t dy, size_t count, uint32_t* columns, uint32_t* rows) override;
    void FindFactors(int64_t dy);
    int32_t FactorOf(uint32_t squares) const;

    static constexpr int32_t kWhole = 256; // the rim's factor
    // Factors grow with the distance: the square from which on they reach 1 to kWhole. Empty where they
    // needn't grow.
    std::vector<uint32_t> m_Steps;
    std::vector<int32_t> m_Factors; // of a row's pixels by their distance from the centre's column, 256ths
    size_t m_nFactors = 0;          // without what pads them
};

/// Twists a circle, the more the nearer to its centre; beyond seven tenths of the radius the other way.
class CRotateVideoImageEffect : public CCircleMapEffect {
public:
    CRotateVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;

private:
    void Prepare(const Reach& reach) override;
    void FindRow(int64_t dx, int64_t dy, size_t count, uint32_t* columns, uint32_t* rows) override;
    Columns WrittenAtOnce(size_t y) const override;
    bool Inside(int64_t dx, int64_t dy) const {
        const auto squares = static_cast<float>(dx * dx + dy * dy);
        return static_cast<float>(m_Map.radius) > std::sqrt(squares);
    }

    float AngleOf(int64_t dx, int64_t dy) const;

    std::vector<float> m_Sines, m_Cosines; // of a quarter of the circle, m_nTurnsAcross to a row, and padding
    size_t m_nTurnsAcross = 0;
    std::vector<float> m_Angles; // of a row, while it is computed
};

} // namespace AVBased
