#include "AVEffect/StyleVideoImageEffect.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numbers>
#include <numeric>

#include "AVEffect/support/elementary.h"
#include "AVEffect/support/places.h"
#include "BaseTools/guarded.h"
#include "aveffect/base_media.h"
#include "aveffect/catalogue/distortions.h"
#include "aveffect/catalogue/looks.h"
#include "kernels/pop.h"

namespace AVBased {

using BaseTool::Raise;

// Poster

CPopStyleVideoImageEffect::CPopStyleVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kPopStyle) {
    Bind("popstyle_threshold", &m_nThreshold);
    Bind("popstyle_color", &m_nColor);
    m_Yuv = YuvColour::FromRgb(m_nColor);
}

void CPopStyleVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name == "popstyle_color") m_Yuv = YuvColour::FromRgb(m_nColor);
}

namespace {

// No sample lies above 255.
uint8_t ByteThreshold(unsigned threshold) { return static_cast<uint8_t>(std::min(threshold, 255u)); }

} // namespace

void CPopStyleVideoImageEffect::PopStyleRgba32Effect(Plane32 plane) const {
    Kernels<kernels::PopKernels>().popRgba32(plane, ByteThreshold(m_nThreshold), m_nColor);
}

void CPopStyleVideoImageEffect::PopStyleComponentEffect(const PlanarView& view) const {
    Kernels<kernels::PopKernels>().popComponent(
        view.y, view.u, view.v,
        {ByteThreshold(m_nThreshold), m_Yuv.y, m_Yuv.u, m_Yuv.v, view.horizontalShift, view.verticalShift});
}

void CPopStyleVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForPicture(
        pFrame, [this](Plane32 plane) { PopStyleRgba32Effect(plane); },
        [this](const PlanarView& view) { PopStyleComponentEffect(view); });
}

// Video wall

CWallVideoImageEffect::CWallVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kVideoWall) {
    Bind("videowall_horiTiles", &m_Horizontal.count);
    Bind("videowall_verTiles", &m_Vertical.count);
}

bool CWallVideoImageEffect::Tiles::FitInto(size_t lumaSize) {
    if (!std::isfinite(count) || count < 1) return false;
    size = static_cast<size_t>(static_cast<double>(lumaSize) * 256 / count) >> 8;
    if (size == 0) return false;
    step = static_cast<uint64_t>(count * 256); // no more than 256 times the picture's size
    return true;
}

void CWallVideoImageEffect::FitInto(size_t width, size_t height) {
    if (!m_Horizontal.FitInto(width))
        Raise(kUnknownException, "videowall_horiTiles must be at least 1 and at most the picture's columns; "
                                 "the frame is left as it is");
    if (!m_Vertical.FitInto(height))
        Raise(kUnknownException, "videowall_verTiles must be at least 1 and at most the picture's rows; the "
                                 "frame is left as it is");
}

// Chroma is copied along with every luma sample, so the last one of those it belongs to decides.
void CWallVideoImageEffect::PlaneTiles::Find(const Tiles& tiles, size_t lumaSize, size_t planeSize,
                                             unsigned shift) {
    const auto lastLuma = [=](size_t i, size_t size) { return std::min((i + 1) << shift, size) - 1; };
    limit = std::min(planeSize, ((lumaSize - 1) >> shift) + 1);
    sources.resize(std::min(limit, ((tiles.size - 1) >> shift) + 1));
    for (size_t i = 0; i < sources.size(); ++i) {
        const size_t source = (lastLuma(i, tiles.size) * tiles.step >> 8) >> shift;
        sources[i] = static_cast<uint32_t>(std::min(source, limit - 1));
    }
    following.clear();
    whole = limit;
    last = limit - 1;
    if (tiles.size == lumaSize) return;
    whole = std::min(limit, std::max<size_t>(tiles.size >> shift, 1));
    const auto place = [&](size_t i) { return (lastLuma(i, lumaSize) % tiles.size) >> shift; };
    const size_t period = tiles.size / std::gcd(tiles.size, size_t{1} << shift);
    for (size_t i = whole; i < std::min(period, limit); ++i)
        following.push_back(static_cast<uint32_t>(place(i)));
    last = place(limit - 1);
}

kernels::WallTile CWallVideoImageEffect::FirstTile(unsigned verticalShift) const {
    const size_t block = size_t{1} << verticalShift;
    const size_t rest = m_Vertical.size - ((m_Rows.sources.size() - 1) << verticalShift);
    return {PlacesOf(m_Columns.sources), PlacesOf(m_Rows.sources), static_cast<unsigned>(block),
            static_cast<unsigned>(std::min(rest, block))};
}

// Rows are copied as soon as they are filled, what lies behind their last sample included.
void CWallVideoImageEffect::Repeat(Plane8 plane, size_t sampleBytes) const {
    const size_t width = m_Columns.limit * sampleBytes;
    const size_t period = m_Rows.whole + m_Rows.following.size();
    for (size_t y = 0; y < std::min(period, m_Rows.limit); ++y) {
        uint8_t* const row = plane.Row(y);
        if (y < m_Rows.whole) {
            Kernels<kernels::WallKernels>().repeatRow(row, m_Columns.whole * sampleBytes,
                                                      PlacesOf(m_Columns.following), width);
            std::memmove(row + width - sampleBytes, row + m_Columns.last * sampleBytes, sampleBytes);
        } else {
            AVBasedMemCopy(row, plane.Row(m_Rows.following[y - m_Rows.whole]), plane.pitch);
        }
        for (size_t copy = y + period; copy < m_Rows.limit; copy += period)
            AVBasedMemCopy(plane.Row(copy), row, plane.pitch);
    }
    if (m_Rows.last + 1 != m_Rows.limit)
        AVBasedMemCopy(plane.Row(m_Rows.limit - 1), plane.Row(m_Rows.last), plane.pitch);
}

void CWallVideoImageEffect::WallRgba32Effect(Plane32 plane) {
    FitInto(plane.width, plane.rows);
    m_Columns.Find(m_Horizontal, plane.width, plane.width, 0);
    m_Rows.Find(m_Vertical, plane.rows, plane.rows, 0);
    Kernels<kernels::WallKernels>().shrinkRgba32(plane, FirstTile(0));
    Repeat(plane.Bytes(), 4);
}

void CWallVideoImageEffect::WallComponentEffect(const PlanarView& view) {
    FitInto(view.y.width, view.y.rows);
    const auto wall = [&](Plane8 plane, unsigned horizontalShift, unsigned verticalShift) {
        if (plane.Empty()) return;
        m_Columns.Find(m_Horizontal, view.y.width, plane.width, horizontalShift);
        m_Rows.Find(m_Vertical, view.y.rows, plane.rows, verticalShift);
        Kernels<kernels::WallKernels>().shrinkComponent(plane, FirstTile(verticalShift));
        Repeat(plane, 1);
    };
    wall(view.y, 0, 0);
    wall(view.u, view.horizontalShift, view.verticalShift);
    wall(view.v, view.horizontalShift, view.verticalShift);
}

void CWallVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForPicture(
        pFrame, [this](Plane32 plane) { WallRgba32Effect(plane); },
        [this](const PlanarView& view) { WallComponentEffect(view); });
}

// Lenses

bool CLensMapEffect::BuildMap(size_t width, size_t height) {
    BeginMap({0, width, 0, height});
    m_Size = {static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
    return true;
}

// Reflecting tiles

namespace {

constexpr int kRightAngle = 90;

int32_t SineQ15(int degrees) {
    return static_cast<int32_t>(std::lround(Sine(degrees * std::numbers::pi / 180) * 32768));
}

// 0 where the tangent runs away.
int32_t TangentQ15(int degrees) {
    if (std::abs(degrees) >= 89) return 0;
    return static_cast<int32_t>(std::lround(Tangent(degrees * std::numbers::pi / 180) * 32768));
}

} // namespace

// From 1 to 90 degrees the cosine has the other sign.
CTileReflectVideoImageEffect::Turn CTileReflectVideoImageEffect::Turn::Of(int degrees) {
    degrees %= 360;
    if (degrees > 180) degrees -= 360;
    if (degrees < -180) degrees += 360;
    if (degrees > kRightAngle) return {SineQ15(180 - degrees), -SineQ15(degrees - kRightAngle)};
    if (degrees > 0) return {SineQ15(degrees), -SineQ15(kRightAngle - degrees)};
    if (degrees >= -kRightAngle) return {-SineQ15(-degrees), SineQ15(kRightAngle + degrees)};
    return {-SineQ15(180 + degrees), -SineQ15(-kRightAngle - degrees)};
}

CTileReflectVideoImageEffect::CTileReflectVideoImageEffect()
    : CLensMapEffect(catalogue::kTileReflect) {
    int size = 0;
    StartFrom("tilereflect_size", &size);
    m_nZoom = ZoomOf(size);
    StartFrom("tilereflect_curvature", &m_nCurvature);
}

std::optional<int32_t> CTileReflectVideoImageEffect::ZoomOf(int size) {
    if (size == 0) return std::nullopt;
    return 46080 / size; // 180 * 256
}

void CTileReflectVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    const auto store = [this](auto& member, const auto& value) {
        if (member != value) m_nMapValid = 0;
        member = value;
    };
    const int value = node.value.int32;
    if (name == "tilereflect_angle") store(m_Turn, Turn::Of(value));
    if (name == "tilereflect_size") store(m_nZoom, ZoomOf(value));
    if (name == "tilereflect_curvature") store(m_nCurvature, value);
}

// A lens is half a turn wide, from -90 to 90 degrees.
void CTileReflectVideoImageEffect::FindBends() {
    const auto curvature = static_cast<uint32_t>(m_nCurvature);
    int degrees = -kRightAngle;
    for (int32_t& bend : m_Bends) {
        bend = static_cast<int32_t>(static_cast<uint32_t>(TangentQ15(degrees)) * curvature * curvature);
        ++degrees;
    }
}

bool CTileReflectVideoImageEffect::BuildMap(size_t width, size_t height) {
    if (!m_nZoom) Raise(kUnknownException, "tilereflect_size must not be 0; the frame is left as it is");
    FindBends();
    return CLensMapEffect::BuildMap(width, height);
}

void CTileReflectVideoImageEffect::FindSources(size_t y, size_t count, const SamplePlaces& places) {
    Kernels<kernels::LensKernels>().tileRow({m_Size, m_Turn.sine, m_Turn.cosine, *m_nZoom, m_Bends.data()},
                                            static_cast<uint32_t>(y), count, places.columns, places.rows);
}

void CTileReflectVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    MapFrame(pFrame, "tilereflect_size");
}

// Inversion

CMirrorInvertVideoImageEffect::CMirrorInvertVideoImageEffect()
    : CLensMapEffect(catalogue::kMirrorInvert) {
    StartFrom("mirrorinvert_amount", &m_nAmount);
}

void CMirrorInvertVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name != "mirrorinvert_amount") return;
    if (m_nAmount != node.value.int32) m_nMapValid = 0;
    m_nAmount = node.value.int32;
}

bool CMirrorInvertVideoImageEffect::BuildMap(size_t width, size_t height) {
    // Squares of distances are 32-bit numbers: from here on those of other pixels than the middle can be 0.
    constexpr size_t kTooFar = 65536;
    if (width / 2 >= kTooFar || height / 2 >= kTooFar)
        Raise(kUnknownException, "mirrorinvert_amount can't be worked out for a picture of 131072 columns or "
                                 "rows; the frame is left as it is");
    return CLensMapEffect::BuildMap(width, height);
}

void CMirrorInvertVideoImageEffect::FindSources(size_t y, size_t count, const SamplePlaces& places) {
    const uint32_t radius = std::min(m_Size.width / 2, m_Size.height / 2);
    const uint32_t power = static_cast<uint32_t>(m_nAmount) * (radius * radius / 100 << 8);
    Kernels<kernels::LensKernels>().inversionRow(
        m_Size, static_cast<int32_t>(power), static_cast<uint32_t>(y), count, places.columns, places.rows);
}

void CMirrorInvertVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    MapFrame(pFrame, "mirrorinvert_amount");
}

} // namespace AVBased
