#pragma once
/// The host's two pictures of a moment, for transitions, which read files.
#include <array>

#include "aveffect/media.h"
#include "aveffect/memory_frame.h"

namespace aveffect::adapters {

/// A picture in the host's memory.
struct HostPicture {
    unsigned format; ///< see pixel_format.h
    unsigned width, height;
    std::vector<AVBased::MemoryFrame::Plane> planes;

    AVBased::MemoryFrame Frame() const { return {format, width, height, planes}; }
};

/// Pixels of four bytes without padding.
HostPicture Bgra(uint32_t* pixels, unsigned width, unsigned height);

/// Answers two names with the two pictures. They are lent, not copied: who opened them must be gone when the
/// host has its pictures back. Used by one thread at a time.
class ShownPictures final : public AVBased::IAVManager {
public:
    static constexpr const char* kFirst = "memory://first";
    static constexpr const char* kSecond = "memory://second";

    /// Drawn: the memory that is drawn into, which may be that of one that is read.
    ShownPictures(HostPicture first, HostPicture second, const void* drawn);

    AVBased::IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                   unsigned* height, unsigned* duration) override;

private:
    std::array<HostPicture, 2> m_pictures;
    const void* m_drawn;
};

} // namespace aveffect::adapters
