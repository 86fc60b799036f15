#pragma once
/// A media source that is one picture.
#include <utility>

#include "aveffect/media.h"
#include "aveffect/video_frame.h"

namespace aveffect {

/// Gives its picture once and then ends. The picture is a pointer of any kind, which the reader owns as it
/// does. On the heap; Release() frees it.
template <typename Picture>
class OnePictureReader final : public AVBased::IAVReader {
public:
    explicit OnePictureReader(Picture picture)
        : m_picture(std::move(picture)) {}

    bool ReadItem(AVBased::AVItem* item, unsigned /*flags*/, unsigned /*timeout*/) override {
        constexpr uint32_t kVideoItem = 1;
        if (!item || std::exchange(m_read, true)) return false;
        *item = {static_cast<AVBased::IRawVideoFrame*>(m_picture.get()), 0, 0, 0, kVideoItem};
        return true;
    }
    bool Seek(unsigned /*milliseconds*/) override {
        m_read = false;
        return true;
    }
    unsigned GetDuration() override { return 0; }
    void Release() override { delete this; }

private:
    ~OnePictureReader() = default;

    Picture m_picture;
    bool m_read = false;
};

/// What an opened picture says of itself; null addresses are not asked for.
inline void DescribePicture(unsigned width, unsigned height, unsigned* streams, unsigned* widthResult,
                            unsigned* heightResult, unsigned* duration) {
    if (streams) *streams = 1;
    if (widthResult) *widthResult = width;
    if (heightResult) *heightResult = height;
    if (duration) *duration = 0;
}

} // namespace aveffect
