#include "adapters/mlt/picture.h"

#include <cmath>
#include <cstdio>
#include <cstring>

extern "C" {
#include <libavutil/mathematics.h>
}

#include "aveffect/pixel_format.h"

namespace aveffect::mlt {

std::string_view ClipFact(mlt_frame frame, const char* kind, const char* fact) noexcept {
    const mlt_producer producer = mlt_frame_get_original_producer(frame);
    if (!producer) return {};
    const mlt_properties properties = MLT_PRODUCER_PROPERTIES(mlt_producer_cut_parent(producer));
    char name[64];
    std::snprintf(name, sizeof name, "%s_index", kind);
    const int stream = mlt_properties_get_int(properties, name);
    std::snprintf(name, sizeof name, "meta.media.%d.codec.%s", stream, fact);
    const char* const text = mlt_properties_get(properties, name);
    return text ? text : std::string_view();
}

namespace {

/// Whether the clip's pictures are of that size, uncut, with pixels of the film's shape.
bool AsStored(mlt_frame frame, int width, int height) noexcept {
    constexpr double kAlike = 1e-4;
    const mlt_properties properties = MLT_FRAME_PROPERTIES(frame);
    const mlt_producer producer = mlt_frame_get_original_producer(frame);
    const mlt_profile profile = producer ? mlt_service_profile(MLT_PRODUCER_SERVICE(producer)) : nullptr;
    for (const char* const edge : {"crop.left", "crop.right", "crop.top", "crop.bottom"})
        if (mlt_properties_get_int(properties, edge) != 0) return false;
    return profile && mlt_properties_get_int(properties, "meta.media.width") == width &&
           mlt_properties_get_int(properties, "meta.media.height") == height &&
           std::abs(mlt_frame_get_aspect_ratio(frame) - mlt_profile_sar(profile)) < kAlike;
}

} // namespace

mlt_image_format FormatFor(mlt_frame frame, int width, int height) noexcept {
    const std::string_view clip = ClipFact(frame, "video", "pix_fmt");
    const bool planar = clip == "yuv420p" || clip == "yuvj420p" || clip == "nv12";
    const bool even = width % 2 == 0 && height % 2 == 0;
    return planar && even && AsStored(frame, width, height) ? mlt_image_yuv420p : mlt_image_rgba;
}

int64_t Milliseconds(mlt_position position, mlt_service service) noexcept {
    constexpr int64_t kSecond = 1000;
    const mlt_profile profile = mlt_service_profile(service);
    return av_rescale(position, kSecond * profile->frame_rate_den, profile->frame_rate_num);
}

adapters::HostPicture PictureOf(uint8_t* image, mlt_image_format format, int width, int height) {
    const auto w = static_cast<unsigned>(width), h = static_cast<unsigned>(height);
    if (format == mlt_image_rgba) return {AVBased::BGRA, w, h, {{image, w * 4, w * 4, h}}};
    const unsigned chromaWidth = w / 2, chromaRows = h / 2;
    uint8_t* const u = image + size_t{w} * h;
    return {AVBased::YUV420P,
            w,
            h,
            {{image, w, w, h},
             {u, chromaWidth, chromaWidth, chromaRows},
             {u + size_t{chromaWidth} * chromaRows, chromaWidth, chromaWidth, chromaRows}}};
}

// Whole pixels at a time, which compilers make several at a time of.
void SwapRedAndBlue(uint8_t* image, int width, int height) noexcept {
    constexpr uint32_t kGreenAndAlpha = 0xFF00FF00, kLowest = 0xFF;
    const size_t pixels = size_t{static_cast<unsigned>(width)} * static_cast<unsigned>(height);
    for (size_t at = 0; at < pixels; ++at) {
        uint32_t pixel = 0;
        std::memcpy(&pixel, image + at * sizeof pixel, sizeof pixel);
        pixel = (pixel & kGreenAndAlpha) | (pixel >> 16 & kLowest) | (pixel & kLowest) << 16;
        std::memcpy(image + at * sizeof pixel, &pixel, sizeof pixel);
    }
}

} // namespace aveffect::mlt
