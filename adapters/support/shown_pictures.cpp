#include "adapters/support/shown_pictures.h"

#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "aveffect/pixel_format.h"
#include "host/effects/one_picture_reader.h"

namespace aveffect::adapters {
namespace {

/// Its clones show the same memory.
class LentPicture final : public AVBased::MemoryFrame {
public:
    LentPicture(const HostPicture& picture, bool copied)
        : MemoryFrame(picture.Frame())
        , m_copied(copied) {
        SetCanBeModified(false);
    }
    IRawVideoFrame* Clone() override { return m_copied ? MemoryFrame::Clone() : new LentPicture(*this); }
    void Free() override { delete this; }

private:
    bool m_copied; // clones are
};

} // namespace

HostPicture Bgra(uint32_t* pixels, unsigned width, unsigned height) {
    const unsigned rowBytes = width * 4;
    return {AVBased::BGRA,
            width,
            height,
            {{reinterpret_cast<unsigned char*>(pixels), rowBytes, rowBytes, height}}};
}

ShownPictures::ShownPictures(HostPicture first, HostPicture second, const void* drawn)
    : m_pictures{std::move(first), std::move(second)}
    , m_drawn(drawn) {}

AVBased::IAVReader* ShownPictures::OpenSource(const char* url, const char* /*options*/, unsigned* streams,
                                              unsigned* width, unsigned* height, unsigned* duration) {
    const HostPicture& picture = m_pictures[url == std::string_view(kSecond) ? 1 : 0];
    try {
        // Nobody writes into what can't be modified.
        auto frame = std::make_unique<LentPicture>(picture, picture.planes.front().data == m_drawn);
        DescribePicture(picture.width, picture.height, streams, width, height, duration);
        return new OnePictureReader<std::unique_ptr<LentPicture>>(std::move(frame));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace aveffect::adapters
