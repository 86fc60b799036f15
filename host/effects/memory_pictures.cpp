#include "host/effects/memory_pictures.h"

#include <string_view>
#include <utility>

#include "host/effects/one_picture_reader.h"
#include "host/support/error_record.h"
#include "mediabridge/video_frame.h"

namespace aveffect {
namespace {

using PictureReader = OnePictureReader<mediabridge::VideoFrame::Ptr>;

PictureReader* MakeReader(const AVFrame& picture) {
    auto frame = mediabridge::VideoFrame::Wrap(&picture, 0, 0);
    if (!frame) throw std::bad_alloc();
    frame->SetCanBeModified(false);
    return new PictureReader(std::move(frame));
}

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
        auto* reader = MakeReader(*picture);
        DescribePicture(static_cast<unsigned>(picture->width), static_cast<unsigned>(picture->height),
                        streams, width, height, duration);
        return reader;
    });
}

} // namespace aveffect
