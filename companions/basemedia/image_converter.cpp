/// Conversion of pixel format and size.
#include <climits>
#include <memory>
#include <string>

#include "aveffect/base_media.h"
#include "companions/basemedia/failure.h"
#include "companions/basemedia/source_picture.h"
#include "mediabridge/pixel_formats.h"
#include "mediabridge/scaler.h"

namespace basemedia {
namespace {

using mediabridge::ScaleQuality;

/// 0 fastest, 1 bilinear, 4 bicubic; numbers between and above take the next lower one.
ScaleQuality QualityOf(unsigned quality) {
    if (quality == 0) return ScaleQuality::Fastest;
    return quality < 4 ? ScaleQuality::Bilinear : ScaleQuality::Bicubic;
}

/// Palettes are not part of a frame, so a format counts as served only when it works both ways.
bool IsServed(AVPixelFormat format) {
    return format != AV_PIX_FMT_NONE && sws_isSupportedInput(format) && sws_isSupportedOutput(format);
}

AVPixelFormat ServedFormat(unsigned format) {
    const AVPixelFormat libraryFormat = mediabridge::LibraryFormat(format);
    if (!IsServed(libraryFormat))
        throw Failure(AVBased::kUnknownException, "Pixel format " + std::to_string(format) + " (" +
                                                      mediabridge::FrameFormatName(format) +
                                                      ") can't be converted");
    return libraryFormat;
}

/// Frames carry no colour description but their format id: J formats and grey are full range, the matrix is
/// BT.601.
class ImageConverter final : public AVBased::IImageConverter {
public:
    ImageConverter(AVPixelFormat format, unsigned width, unsigned height, ScaleQuality quality)
        : m_scaler(format, static_cast<int>(width), static_cast<int>(height), quality,
                   mediabridge::UsualRange(format)) {}

    AVBased::IRawVideoFrame* Convert(AVBased::IRawVideoFrame* source) override {
        return Guarded([&]() -> AVBased::IRawVideoFrame* {
            RequirePointer(source);
            ServedFormat(source->GetPixelFormat());
            mediabridge::AVFramePtr picture = ViewPicture(source);
            if (!picture || !m_scaler.ReadsPixelsAlone(picture.get())) picture = ReadPicture(source);
            const mediabridge::AVFramePtr converted = m_scaler.Convert(picture.get());
            if (!converted) throw Failure(AVBased::kUnknownException, m_scaler.Error());
            return MakeFrame(converted.get(), source).release();
        });
    }

    void Release() override { delete this; }

private:
    ~ImageConverter() = default;

    mediabridge::Scaler m_scaler;
};

} // namespace
} // namespace basemedia

AVBased::IImageConverter* CreateImageConverter(unsigned format, unsigned width, unsigned height) {
    return CreateImageConverterEx(format, width, height, 0);
}

AVBased::IImageConverter* CreateImageConverterEx(unsigned format, unsigned width, unsigned height,
                                                 unsigned quality) {
    return basemedia::Guarded([=]() -> AVBased::IImageConverter* {
        const AVPixelFormat libraryFormat = basemedia::ServedFormat(format);
        if (width > INT_MAX || height > INT_MAX)
            throw basemedia::Failure(AVBased::kUnknownException, "A size of " + std::to_string(width) + "x" +
                                                                     std::to_string(height) +
                                                                     " pixels is out of range");
        return new basemedia::ImageConverter(libraryFormat, width, height, basemedia::QualityOf(quality));
    });
}
