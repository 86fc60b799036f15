#include "adapters/gstreamer/image_filter.h"

#include <algorithm>
#include <utility>

#include <gst/video/gstvideofilter.h>

#include "adapters/gstreamer/complaints.h"
#include "adapters/gstreamer/element.h"
#include "adapters/gstreamer/picture.h"
#include "adapters/gstreamer/the_plugin.h"
#include "adapters/support/picture_chains.h"

namespace aveffect::gst {

namespace {

class ImageFilter {
public:
    using Parent = GstVideoFilter;
    using ParentClass = GstVideoFilterClass;
    static GType ParentType() { return GST_TYPE_VIDEO_FILTER; }

    ImageFilter(const PropertyTable& table, GstElement* element)
        : settings(table)
        , m_effect(table.effect)
        , m_base(reinterpret_cast<GstBaseTransform*>(element))
        , m_complaints(element)
        , m_chains(table.effect) {}

    static void SetUp(GstVideoFilterClass* of, const AVBased::EffectInfo& effect) {
        auto* const element = reinterpret_cast<GstElementClass*>(of);
        Describe(element, effect, "Filter/Effect/Video");
        GstCaps* const caps = PictureCapsFor(effect);
        AddPad(element, "sink", GST_PAD_SINK, caps);
        AddPad(element, "src", GST_PAD_SRC, caps);
        gst_caps_unref(caps);
        reinterpret_cast<GstBaseTransformClass*>(of)->before_transform = [](GstBaseTransform* base,
                                                                            GstBuffer* buffer) {
            Element<ImageFilter>::WorkerOf(base).Begin(buffer);
        };
        of->transform_frame_ip = [](GstVideoFilter* filter, GstVideoFrame* frame) {
            Element<ImageFilter>::WorkerOf(filter).Draw(*frame);
            return GST_FLOW_OK;
        };
    }

    Settings settings;

private:
    /// Settings that are controlled are brought to the picture's time.
    void Begin(GstBuffer* buffer) noexcept {
        m_time = gst_segment_to_stream_time(&m_base->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
        if (GST_CLOCK_TIME_IS_VALID(m_time)) gst_object_sync_values(GST_OBJECT_CAST(m_base), m_time);
        if (GST_BUFFER_IS_DISCONT(buffer)) m_length.reset();
    }

    void Draw(const GstVideoFrame& frame) noexcept {
        try {
            Draw(PictureOf(m_effect, frame));
        } catch (const std::exception& failure) {
            m_complaints.Say(failure.what());
        }
    }

    void Draw(const adapters::HostPicture& shown) {
        const auto [time, lengthMs] = PlaceOf();
        m_chains.Draw(ThePlugin(), settings.EffectText(), lengthMs, shown, time);
    }

    /// The picture's time and what the whole lasts, in milliseconds.
    std::pair<int, std::optional<int64_t>> PlaceOf() {
        if (!(m_effect.traits & AVBased::kFollowsTime)) return {Milliseconds(m_time), {}};
        const GstClockTime start = settings.Start();
        std::optional<GstClockTime> length = settings.Duration();
        if (!length && !m_length) m_length = PlayedLength();
        if (!length && m_length && *m_length > start) length = *m_length - start;
        if (!length) throw std::runtime_error("what plays does not tell its length: set duration");
        const GstClockTime time = GST_CLOCK_TIME_IS_VALID(m_time) ? m_time - std::min(start, m_time) : 0;
        return {Milliseconds(std::min(time, *length)), Milliseconds(*length)};
    }

    std::optional<GstClockTime> PlayedLength() const {
        gint64 length = 0;
        if (!gst_pad_peer_query_duration(GST_BASE_TRANSFORM_SINK_PAD(m_base), GST_FORMAT_TIME, &length) ||
            length <= 0)
            return std::nullopt;
        return static_cast<GstClockTime>(length);
    }

    const AVBased::EffectInfo& m_effect;
    GstBaseTransform* m_base;
    Complaints m_complaints;
    GstClockTime m_time = 0; ///< of the picture, in the stream
    std::optional<GstClockTime> m_length;
    adapters::PictureChains m_chains;
};

} // namespace

void RegisterImageFilter(GstPlugin* plugin, const AVBased::EffectInfo& effect) {
    Element<ImageFilter>::Register(plugin, effect);
}

} // namespace aveffect::gst
