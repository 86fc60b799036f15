#include "adapters/gstreamer/picture.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "adapters/support/bytes_alike.h"
#include "aveffect/pixel_format.h"

namespace aveffect::gst {

using AVBased::EffectInfo;
using AVBased::EffectKind;

namespace {

struct PictureFormat {
    GstVideoFormat name;
    unsigned id;
    unsigned fullRange; ///< the id where samples take all values
};

constexpr PictureFormat kPictureFormats[] = {
    {GST_VIDEO_FORMAT_BGRA, AVBased::BGRA, AVBased::BGRA},
    {GST_VIDEO_FORMAT_A420, AVBased::YUVA420P, AVBased::YUVA420P},
    {GST_VIDEO_FORMAT_BGRx, AVBased::BGRA, AVBased::BGRA},
    {GST_VIDEO_FORMAT_I420, AVBased::YUV420P, AVBased::YUVJ420P},
    {GST_VIDEO_FORMAT_YV12, AVBased::YUV420P, AVBased::YUVJ420P},
    {GST_VIDEO_FORMAT_Y42B, AVBased::YUV422P, AVBased::YUVJ422P},
    {GST_VIDEO_FORMAT_Y41B, AVBased::YUV411P, AVBased::YUV411P},
    {GST_VIDEO_FORMAT_YUV9, AVBased::YUV410P, AVBased::YUV410P},
    {GST_VIDEO_FORMAT_YVU9, AVBased::YUV410P, AVBased::YUV410P},
    // For effects that do the same to every byte.
    {GST_VIDEO_FORMAT_RGBA, AVBased::BGRA, AVBased::BGRA},
    {GST_VIDEO_FORMAT_ARGB, AVBased::BGRA, AVBased::BGRA},
    {GST_VIDEO_FORMAT_ABGR, AVBased::BGRA, AVBased::BGRA},
    {GST_VIDEO_FORMAT_RGBx, AVBased::BGRA, AVBased::BGRA},
    {GST_VIDEO_FORMAT_xRGB, AVBased::BGRA, AVBased::BGRA},
    {GST_VIDEO_FORMAT_xBGR, AVBased::BGRA, AVBased::BGRA},
};

bool IsPacked(const PictureFormat& format) { return format.id == AVBased::BGRA; }

bool HasOwnOrder(const PictureFormat& format) {
    return IsPacked(format) && format.name != GST_VIDEO_FORMAT_BGRA && format.name != GST_VIDEO_FORMAT_BGRx;
}

// Anaglyphs of other planar formats go by way of a converter that fits the process's first pictures alone.
bool ServesFew(const EffectInfo& effect) {
    return (effect.traits & AVBased::kFewFormats) || effect.kind == EffectKind::Stereo;
}

bool Serves(const EffectInfo& effect, const PictureFormat& format) {
    if ((effect.traits & AVBased::kChangesAlpha) && format.name != GST_VIDEO_FORMAT_BGRA &&
        format.name != GST_VIDEO_FORMAT_A420)
        return false;
    if (ServesFew(effect) && !IsPacked(format) && format.id != AVBased::YUV420P) return false;
    return !HasOwnOrder(format) ||
           (effect.kind != EffectKind::Transition && effect.kind != EffectKind::Stereo &&
            adapters::TreatsBytesAlike(effect.shortName));
}

} // namespace

GstCaps* PictureCapsFor(const EffectInfo& effect) {
    GValue names = G_VALUE_INIT;
    g_value_init(&names, GST_TYPE_LIST);
    for (const PictureFormat& format : kPictureFormats) {
        if (!Serves(effect, format)) continue;
        GValue name = G_VALUE_INIT;
        g_value_init(&name, G_TYPE_STRING);
        g_value_set_static_string(&name, gst_video_format_to_string(format.name));
        gst_value_list_append_and_take_value(&names, &name);
    }
    GstCaps* const caps =
        gst_caps_from_string("video/x-raw, width=" GST_VIDEO_SIZE_RANGE ", height=" GST_VIDEO_SIZE_RANGE
                             ", framerate=" GST_VIDEO_FPS_RANGE);
    gst_caps_set_value(caps, "format", &names);
    g_value_unset(&names);
    return caps;
}

adapters::HostPicture PictureOf(const EffectInfo& effect, const GstVideoFrame& frame) {
    const auto* const format =
        std::ranges::find(kPictureFormats, GST_VIDEO_FRAME_FORMAT(&frame), &PictureFormat::name);
    const auto count = [](int number) {
        if (number < 0) throw std::runtime_error("pictures with their last row first are not served");
        return static_cast<unsigned>(number);
    };
    const bool full = frame.info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
    adapters::HostPicture picture{full && !ServesFew(effect) ? format->fullRange : format->id,
                                  count(GST_VIDEO_FRAME_WIDTH(&frame)),
                                  count(GST_VIDEO_FRAME_HEIGHT(&frame)),
                                  {}};
    if (IsPacked(*format)) {
        picture.planes.push_back({static_cast<unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
                                  picture.width * 4, count(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0)),
                                  picture.height});
        return picture;
    }
    // Components come in the order Y, U, V, A whatever that of the planes is.
    for (guint component = 0; component < GST_VIDEO_FRAME_N_COMPONENTS(&frame); ++component)
        picture.planes.push_back({GST_VIDEO_FRAME_COMP_DATA(&frame, component),
                                  count(GST_VIDEO_FRAME_COMP_WIDTH(&frame, component)),
                                  count(GST_VIDEO_FRAME_COMP_STRIDE(&frame, component)),
                                  count(GST_VIDEO_FRAME_COMP_HEIGHT(&frame, component))});
    return picture;
}

int Milliseconds(GstClockTime time) {
    if (!GST_CLOCK_TIME_IS_VALID(time)) return 0;
    constexpr auto kMost = static_cast<guint64>(std::numeric_limits<int>::max());
    return static_cast<int>(std::min(kMost, gst_util_uint64_scale_round(time, 1, GST_MSECOND)));
}

} // namespace aveffect::gst
