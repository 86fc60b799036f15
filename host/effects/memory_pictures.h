#pragma once
/// Pictures that are in memory already, for processors that read files.
#include <array>
#include <string>

#include "aveffect/media.h"
#include "mediabridge/av_ptr.h"

namespace aveffect {

/// Answers two URLs with the two pictures shown last: a reader gives its picture once and then ends. Used by
/// one thread at a time.
class MemoryPictures final : public AVBased::IAVManager {
public:
    static constexpr const char* kFirst = "memory://first";
    static constexpr const char* kSecond = "memory://second";

    /// What is read from now on; formats of the frame table.
    void Show(mediabridge::AVFramePtr first, mediabridge::AVFramePtr second);

    AVBased::IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                   unsigned* height, unsigned* duration) override;

private:
    std::array<mediabridge::AVFramePtr, 2> m_pictures;
};

} // namespace aveffect
