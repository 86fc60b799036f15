// A module for tests: the filter "tap" asks for pictures in the format that it is told and writes each, as it
// is, to LABEL.POSITION.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <framework/mlt.h>

namespace {

int GetImage(mlt_frame frame, uint8_t** image, mlt_image_format* format, int* width, int* height,
             int writable) {
    const auto filter = static_cast<mlt_filter>(mlt_frame_pop_service(frame));
    const mlt_properties properties = MLT_FILTER_PROPERTIES(filter);
    *format = mlt_image_format_id(mlt_properties_get(properties, "format"));
    if (mlt_frame_get_image(frame, image, format, width, height, writable) != 0) return 1;
    const std::string name = std::string(mlt_properties_get(properties, "label")) + "." +
                             std::to_string(mlt_filter_get_position(filter, frame));
    const int bytes = mlt_image_format_size(*format, *width, *height, nullptr);
    FILE* const file = std::fopen(name.c_str(), "wb");
    // The library's own count has bytes behind the picture.
    const size_t pixels = static_cast<size_t>(*width) * static_cast<size_t>(*height);
    const size_t count = *format == mlt_image_rgba ? pixels * 4 : pixels * 3 / 2;
    if (!file || bytes < static_cast<int>(count) || std::fwrite(*image, 1, count, file) != count)
        std::abort();
    std::fclose(file);
    return 0;
}

mlt_frame Process(mlt_filter filter, mlt_frame frame) {
    mlt_frame_push_service(frame, filter);
    mlt_frame_push_get_image(frame, GetImage);
    return frame;
}

void* Make(mlt_profile, mlt_service_type, const char*, const void*) {
    const mlt_filter filter = mlt_filter_new();
    if (filter) filter->process = Process;
    return filter;
}

} // namespace

extern "C" MLT_REPOSITORY { MLT_REGISTER(mlt_service_filter_type, "tap", Make); }
