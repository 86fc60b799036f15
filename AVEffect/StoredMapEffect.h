#pragma once
/// The base of distortions whose pixels come from places that are computed once and stored.
#include <vector>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/plane_map.h"

namespace AVBased {

/// The map is made on the first frame and replayed on later ones, whatever their size and format, until a
/// property says otherwise. Pixels beyond the map stay as they are.
class CStoredMapEffect : public CBasedVideoImageEffect {
protected:
    /// What becomes of pixels from outside the picture.
    enum class Outside { Kept, White, PlanarWhite };

    /// With writesRimLater the frame that the map is made on writes what WrittenAtOnce says.
    CStoredMapEffect(const EffectInfo& effect, Outside outside, bool writesRimLater);

    /// Makes the map for pictures of that size in pixels. False where there is none.
    virtual bool BuildMap(size_t width, size_t height) = 0;
    /// Columns begin up to end of a picture.
    struct Columns {
        size_t begin, end;
    };
    /// The pixels of row y that are written already by the frame that the map is made on.
    virtual Columns WrittenAtOnce(size_t) const { return {0, SIZE_MAX}; }

    /// Forgets the map. The next one is of that part of pictures, which is not empty.
    void BeginMap(const Rectangle& rectangle);
    /// Writes where the first pixels of a row of the rectangle come from; that may lie outside the picture.
    virtual void FindSources(size_t y, size_t count, const SamplePlaces& places) = 0;

    void BuildPacked(Plane32 plane, Plane32 copy);
    void ReplayPacked(Plane32 plane, Plane32 copy);
    void BuildPlanar(const PlanarView& view, const PlanarView& copy);
    void ReplayPlanar(const PlanarView& view, const PlanarView& copy);
    /// The one of these four that the frame asks for, on its clone. With a property's name, throws
    /// CBaseException 10021008, which names it, where a picture without pixels asks for a map.
    void MapFrame(IRawVideoFrame* pFrame, const char* property = nullptr);

    int16_t m_nMapValid = 0; ///< 1 from the first frame drawn with the map until a property changes

private:
    /// What the replayed maps of planes hold for.
    struct Geometry {
        bool packed = false;
        size_t width = 0, height = 0, pitch = 0;
        size_t uWidth = 0, uRows = 0, uPitch = 0, vWidth = 0, vRows = 0, vPitch = 0;
        unsigned horizontalShift = 0, verticalShift = 0;
        bool operator==(const Geometry&) const = default;
    };

    /// What of the rectangle lies in a picture of that size, and in its chroma.
    Rectangle Within(size_t width, size_t height) const;
    Rectangle ChromaPart(const PlanarView& view, const Plane8& copy) const;
    bool HasFills() const { return m_Outside != Outside::Kept; }
    void BeginChroma(PlaneMap& map, const Rectangle& part, const Plane8& copy);
    void AddChromaRow(PlaneMap& map, size_t y, const Rectangle& part, const PlanarView& view,
                      const Plane8& copy, bool atOnce);
    void MapPixels(Plane32 plane, Plane32 copy);
    void MapPlanes(const PlanarView& view, const PlanarView& copy, bool atOnce);
    void ApplyPixels(Plane32 plane, Plane32 copy);
    void ApplyPlanes(const PlanarView& view, const PlanarView& copy);
    void AddSources(PlaneMap& map, const Rectangle& part, size_t y);
    void FindChroma(size_t chromaRow, const Rectangle& part, const PlanarView& view, const Plane8& copy,
                    const SamplePlaces& chroma, bool atOnce);
    void ApplyPlanar(const PlanarView& view, const PlanarView& copy, bool atOnce);

    Outside m_Outside;
    bool m_bWritesRimLater;
    const kernels::RemapKernels& m_Kernels;
    Rectangle m_Rectangle;
    std::vector<char> m_ChromaFound;                 // of a row, those whose places are known
    Geometry m_Mapped;                               // no plane map holds while its width is 0
    PlaneMap m_Pixels{4}, m_Luma{1}, m_U{1}, m_V{1}; // one for both chroma planes where they are alike
};

} // namespace AVBased
