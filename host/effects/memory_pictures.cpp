#include "host/effects/memory_pictures.h"

#include <string_view>
#include <utility>

#include "host/support/error_record.h"
#include "mediabridge/video_frame.h"

namespace aveffect {
namespace {

/// Gives one picture. On the heap; Release() frees it.
class PictureReader final : public AVBased::IAVReader {
public:
    explicit PictureReader(const AVFrame& picture)
        : m_picture(mediabridge::VideoFrame::Wrap(&picture, 0, 0)) {
        if (!m_picture) throw std::bad_alloc();
        m_picture->SetCanBeModified(false);
    }

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
    ~PictureReader() = default;

    mediabridge::VideoFrame::Ptr m_picture;
    bool m_read = false;
};

} // namespace

void MemoryPictures::Show(mediabridge::AVFramePtr first, mediabridge::AVFramePtr second) {
    m_pictures = {std::move(first), std::move(second)};
}

AVBased::IAVReader* MemoryPictures::OpenSource(const char* url, const char* /*options*/, unsigned* streams,
                                               unsigned* width, unsigned* height, unsigned* duration) {
    return Recorded([&]() -> AVBased::IAVReader* {
        const std::string_view wanted = url ? url : "";
        if (wanted != kFirst && wanted != kSecond)
            throw Error(ErrorKind::Input, "no picture is called '" + std::string(wanted) + "'");
        const AVFrame* picture = m_pictures[wanted == kSecond ? 1 : 0].get();
        if (!picture) throw Error(ErrorKind::Input, std::string(wanted) + ": no picture is shown");
        auto* reader = new PictureReader(*picture);
        if (streams) *streams = 1;
        if (width) *width = static_cast<unsigned>(picture->width);
        if (height) *height = static_cast<unsigned>(picture->height);
        if (duration) *duration = 0;
        return reader;
    });
}

} // namespace aveffect
