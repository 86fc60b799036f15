#include "adapters/gstreamer/transition.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <gst/video/gstvideoaggregator.h>

#include "adapters/gstreamer/complaints.h"
#include "adapters/gstreamer/element.h"
#include "adapters/gstreamer/picture.h"
#include "adapters/gstreamer/the_plugin.h"
#include "host/effects/transition_frame.h"

namespace aveffect::gst {

namespace {

using adapters::ShownPictures;

/// The length that progress is counted in. Fades count 256 levels of it in 32 bits.
constexpr int kSpan = 1 << 20;
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

    GstVideoFrame& Frame() { return m_frame; }

private:
    GstVideoFrame m_frame{};
};

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
        GstCaps* const caps = CapsFor(effect);
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
            OutPicture picture(&m_aggregator->info, out);
            const auto [first, second] = Pictures();
            GstVideoFrame* const one = first ? first : second;
            if (!one) return GST_FLOW_OK;
            Pass(*one, picture.Frame());
            if (first && second) Draw(*first, *second, picture.Frame(), PlaceOf());
            return GST_FLOW_OK;
        } catch (const std::exception& failure) {
            m_complaints.Say(failure.what());
            return GST_FLOW_OK;
        }
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

    /// A picture as it is, fitted where it has another size.
    void Pass(GstVideoFrame& picture, GstVideoFrame& out) const {
        if (!gst_video_frame_copy(&out, &picture)) Draw(picture, picture, out, {0, kSpan});
    }

    void Draw(const GstVideoFrame& from, const GstVideoFrame& to, const GstVideoFrame& out,
              std::pair<int, int64_t> place) const {
        ShownPictures pictures(PictureOf(m_effect, from), PictureOf(m_effect, to), nullptr);
        const auto [time, length] = place;
        // A transition reads its pictures once in its life, so each moment has its own.
        const EffectSpec spec =
            TransitionSpec(m_effect.name, ShownPictures::kFirst, ShownPictures::kSecond, 0, length);
        EffectChain chain(ThePlugin(), &pictures, {spec}, {0, length});
        AVBased::MemoryFrame picture = PictureOf(m_effect, out).Frame();
        chain.Process(&picture, time);
    }

    /// How far it has come, of how much.
    std::pair<int, int64_t> PlaceOf() const {
        const std::optional<GstClockTime> duration = settings.Duration();
        if (!duration)
            return {static_cast<int>(std::lround(std::clamp(settings.Progress(), 0.0, 1.0) * kSpan)), kSpan};
        const int length = std::max(1, Milliseconds(*duration));
        if (!GST_CLOCK_TIME_IS_VALID(m_time) || m_time <= settings.Start()) return {0, length};
        return {std::min(Milliseconds(m_time - settings.Start()), length), length};
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
