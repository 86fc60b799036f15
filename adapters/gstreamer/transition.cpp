#include "adapters/gstreamer/transition.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <gst/video/gstvideoaggregator.h>

#include "adapters/gstreamer/complaints.h"
#include "adapters/gstreamer/element.h"
#include "adapters/gstreamer/picture.h"
#include "adapters/gstreamer/the_plugin.h"
#include "adapters/support/crossing.h"
#include "adapters/support/progress.h"
#include "aveffect/catalogue/transitions.h"

namespace aveffect::gst {

namespace {

using adapters::Moment;

constexpr std::array<std::string_view, 2> kPads = {"sink_0", "sink_1"};

/// The picture that is drawn, mapped.
class OutPicture {
public:
    OutPicture(GstVideoInfo* info, GstBuffer* buffer) {
        if (!gst_video_frame_map(&m_frame, info, buffer, GST_MAP_READWRITE))
            throw std::runtime_error("a picture can't be written");
    }
    ~OutPicture() { gst_video_frame_unmap(&m_frame); }
    OutPicture(const OutPicture&) = delete;
    OutPicture& operator=(const OutPicture&) = delete;

    const GstVideoFrame& Frame() const { return m_frame; }

private:
    GstVideoFrame m_frame{};
};

/// Every sample of a component.
void Fill(const GstVideoFrame& picture, guint component, guint8 value) {
    const int step = GST_VIDEO_FRAME_COMP_PSTRIDE(&picture, component);
    for (int row = 0; row < GST_VIDEO_FRAME_COMP_HEIGHT(&picture, component); ++row) {
        guint8* sample = GST_VIDEO_FRAME_COMP_DATA(&picture, component) +
                         ptrdiff_t{row} * GST_VIDEO_FRAME_COMP_STRIDE(&picture, component);
        for (int column = 0; column < GST_VIDEO_FRAME_COMP_WIDTH(&picture, component);
             ++column, sample += step)
            *sample = value;
    }
}

constexpr guint kAlpha = 3;

// Transitions leave alpha as it is. BGRx is BGRA of which nobody looks at the last byte.
void MakeOpaque(GstVideoFrame picture) {
    if (GST_VIDEO_FRAME_FORMAT(&picture) == GST_VIDEO_FORMAT_BGRx)
        picture.info.finfo = gst_video_format_get_info(GST_VIDEO_FORMAT_BGRA);
    if (GST_VIDEO_INFO_HAS_ALPHA(&picture.info)) Fill(picture, kAlpha, 0xFF);
}

void MakeBlack(const GstVideoFrame& picture) {
    constexpr guint8 kBlack = 16, kGrey = 128;
    const bool yuv = GST_VIDEO_INFO_IS_YUV(&picture.info);
    for (guint component = 0; component < kAlpha; ++component)
        Fill(picture, component, !yuv ? 0 : component ? kGrey : kBlack);
    MakeOpaque(picture);
}

class Transition {
public:
    using Parent = GstVideoAggregator;
    using ParentClass = GstVideoAggregatorClass;
    static GType ParentType() { return GST_TYPE_VIDEO_AGGREGATOR; }

    Transition(const PropertyTable& table, GstElement* element)
        : settings(table)
        , m_effect(table.effect)
        , m_aggregator(reinterpret_cast<GstVideoAggregator*>(element))
        , m_complaints(element) {}

    static void SetUp(GstVideoAggregatorClass* of, const AVBased::EffectInfo& effect) {
        auto* const element = reinterpret_cast<GstElementClass*>(of);
        Describe(element, effect, "Filter/Editor/Video");
        GstCaps* const caps = PictureCapsFor(effect);
        const auto add = [&](const char* name, GstPadDirection direction, GstPadPresence presence,
                             GType type) {
            gst_element_class_add_pad_template(
                element, gst_pad_template_new_with_gtype(name, direction, presence, caps, type));
        };
        // The pads convert formats; sizes are the transition's own business.
        add("sink_%u", GST_PAD_SINK, GST_PAD_REQUEST, GST_TYPE_VIDEO_AGGREGATOR_CONVERT_PAD);
        add("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_TYPE_AGGREGATOR_PAD);
        gst_caps_unref(caps);
        element->request_new_pad = RequestPad;
        of->aggregate_frames = [](GstVideoAggregator* aggregator, GstBuffer* out) {
            return Element<Transition>::WorkerOf(aggregator).Draw(out);
        };
    }

    Settings settings;

private:
    static GstPad* RequestPad(GstElement* element, GstPadTemplate* from, const gchar* name,
                              const GstCaps* caps) {
        const bool known = !name || std::ranges::find(kPads, name) != kPads.end();
        if (!known || element->numsinkpads >= kPads.size()) return nullptr;
        auto* const parent = static_cast<GstElementClass*>(g_type_class_peek(ParentType()));
        return parent->request_new_pad(element, from, name, caps);
    }

    GstFlowReturn Draw(GstBuffer* out) noexcept {
        try {
            Sync(out);
            const OutPicture picture(&m_aggregator->info, out);
            const auto [first, second] = Pictures();
            if (first && second)
                Cross(*first, *second, picture.Frame());
            else if (first || second)
                Pass(first ? *first : *second, picture.Frame());
            else
                MakeBlack(picture.Frame());
        } catch (const std::exception& failure) {
            m_complaints.Say(failure.what());
        }
        return GST_FLOW_OK;
    }

    /// Settings that are controlled are brought to the picture's time.
    void Sync(GstBuffer* out) {
        const GstSegment& segment = GST_AGGREGATOR_PAD(GST_AGGREGATOR_SRC_PAD(m_aggregator))->segment;
        m_time = gst_segment_to_stream_time(&segment, GST_FORMAT_TIME, GST_BUFFER_PTS(out));
        if (GST_CLOCK_TIME_IS_VALID(m_time)) gst_object_sync_values(GST_OBJECT_CAST(m_aggregator), m_time);
    }

    /// The pads' pictures of the moment; null where there is none. They stay while the moment is drawn.
    std::pair<GstVideoFrame*, GstVideoFrame*> Pictures() const {
        std::array<GstVideoFrame*, kPads.size()> found{};
        GST_OBJECT_LOCK(m_aggregator);
        for (const GList* item = GST_ELEMENT_CAST(m_aggregator)->sinkpads; item; item = item->next) {
            const auto place = std::ranges::find(kPads, std::string_view(GST_OBJECT_NAME(item->data)));
            auto* const pad = static_cast<GstVideoAggregatorPad*>(item->data);
            if (place != kPads.end())
                found.at(static_cast<size_t>(place - kPads.begin())) =
                    gst_video_aggregator_pad_get_prepared_frame(pad);
        }
        GST_OBJECT_UNLOCK(m_aggregator);
        return {found[0], found[1]};
    }

    /// Before it begins and once it is over there is one picture alone, whatever the effect draws then.
    void Cross(const GstVideoFrame& first, const GstVideoFrame& second, const GstVideoFrame& out) {
        const Moment moment = MomentOf();
        if (moment.time < 0 || moment.Over()) return Pass(moment.time < 0 ? first : second, out);
        try {
            Draw(m_effect.name, first, second, out, moment);
        } catch (const std::exception& failure) {
            m_complaints.Say(failure.what());
            Pass(first, out);
        }
    }

    /// A picture as it is, fitted where it has another size.
    void Pass(const GstVideoFrame& picture, const GstVideoFrame& out) const {
        const bool fits = GST_VIDEO_FRAME_WIDTH(&picture) == GST_VIDEO_FRAME_WIDTH(&out) &&
                          GST_VIDEO_FRAME_HEIGHT(&picture) == GST_VIDEO_FRAME_HEIGHT(&out);
        GstVideoFrame to = out;
        if (!fits || !gst_video_frame_copy(&to, &picture))
            Draw(AVBased::effectNameMkFade, picture, picture, out, {0, adapters::kWhole});
    }

    void Draw(const char* effect, const GstVideoFrame& first, const GstVideoFrame& second,
              const GstVideoFrame& out, const Moment& moment) const {
        DrawMoment(ThePlugin(), effect, PictureOf(m_effect, first), PictureOf(m_effect, second),
                   PictureOf(m_effect, out), moment);
        MakeOpaque(out);
    }

    /// Its time is below 0 before it begins.
    Moment MomentOf() const {
        const std::optional<GstClockTime> duration = settings.Duration();
        if (!duration) return {adapters::PartOfWhole(settings.Progress()), adapters::kWhole};
        const GstClockTime start = settings.Start();
        const int length = std::max(1, Milliseconds(*duration));
        if (!GST_CLOCK_TIME_IS_VALID(m_time) || m_time < start) return {-1, length};
        return {Milliseconds(m_time - start), length};
    }

    const AVBased::EffectInfo& m_effect;
    GstVideoAggregator* m_aggregator;
    Complaints m_complaints;
    GstClockTime m_time = 0; ///< of the picture, in the stream
};

} // namespace

void RegisterTransition(GstPlugin* plugin, const AVBased::EffectInfo& effect) {
    Element<Transition>::Register(plugin, effect);
}

} // namespace aveffect::gst
