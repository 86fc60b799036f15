#include "adapters/frei0r/shown_pictures.h"

#include <functional>
#include <memory>
#include <new>
#include <string_view>

#include "aveffect/pixel_format.h"
#include "host/effects/one_picture_reader.h"

namespace aveffect::frei0r {
namespace {

/// Its clones show the same memory.
class LentPicture final : public AVBased::MemoryFrame {
public:
    LentPicture(uint32_t* pixels, unsigned width, unsigned height, bool copied)
        : MemoryFrame(AVBased::BGRA, width, height, PlanesOf(pixels, width, height))
        , m_copied(copied) {
        SetCanBeModified(false);
    }
    IRawVideoFrame* Clone() override { return m_copied ? MemoryFrame::Clone() : new LentPicture(*this); }
    void Free() override { delete this; }

private:
    bool m_copied; // clones are
};

} // namespace

std::vector<AVBased::MemoryFrame::Plane> PlanesOf(uint32_t* pixels, unsigned width, unsigned height) {
    const unsigned rowBytes = width * 4;
    return {{reinterpret_cast<unsigned char*>(pixels), rowBytes, rowBytes, height}};
}

ShownPictures::ShownPictures(const uint32_t* first, const uint32_t* second, const uint32_t* drawn,
                             unsigned width, unsigned height)
    : m_pictures{first, second}
    , m_drawn(drawn)
    , m_width(width)
    , m_height(height) {}

AVBased::IAVReader* ShownPictures::OpenSource(const char* url, const char* /*options*/, unsigned* streams,
                                              unsigned* width, unsigned* height, unsigned* duration) {
    const uint32_t* const picture = m_pictures[url == std::string_view(kSecond) ? 1 : 0];
    try {
        // Nobody writes into what can't be modified.
        auto frame = std::make_unique<LentPicture>(const_cast<uint32_t*>(picture), m_width, m_height,
                                                   picture == m_drawn);
        DescribePicture(m_width, m_height, streams, width, height, duration);
        return new OnePictureReader<std::unique_ptr<LentPicture>>(std::move(frame));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace aveffect::frei0r
