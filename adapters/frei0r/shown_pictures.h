#pragma once
/// The host's two pictures of a moment, for transitions, which read files.
#include <array>

#include "aveffect/media.h"
#include "aveffect/memory_frame.h"

namespace aveffect::frei0r {

/// The one plane of a BGRA picture in the host's memory.
std::vector<AVBased::MemoryFrame::Plane> PlanesOf(uint32_t* pixels, unsigned width, unsigned height);

/// Answers two names with the two pictures. They are lent, not copied: who opened them must be gone when the
/// host has its pictures back. Used by one thread at a time.
class ShownPictures final : public AVBased::IAVManager {
public:
    static constexpr const char* kFirst = "memory://first";
    static constexpr const char* kSecond = "memory://second";

    /// The picture that is drawn may take the place of one that is read.
    ShownPictures(const uint32_t* first, const uint32_t* second, const uint32_t* drawn, unsigned width,
                  unsigned height);

    AVBased::IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                   unsigned* height, unsigned* duration) override;

private:
    std::array<const uint32_t*, 2> m_pictures;
    const uint32_t* m_drawn;
    unsigned m_width, m_height;
};

} // namespace aveffect::frei0r
