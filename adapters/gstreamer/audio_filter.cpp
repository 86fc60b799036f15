#include "adapters/gstreamer/audio_filter.h"

#include <algorithm>
#include <stdexcept>

#include <gst/audio/audio.h>
#include <gst/audio/gstaudiofilter.h>

#include "adapters/gstreamer/complaints.h"
#include "adapters/gstreamer/element.h"
#include "adapters/gstreamer/the_plugin.h"
#include "adapters/support/sound_pieces.h"
#include "host/effects/audio_effect_chain.h"

namespace aveffect::gst {

namespace {

struct SoundFormat {
    GstAudioFormat name;
    AVSampleFormat id;
};

constexpr SoundFormat kSoundFormats[] = {
    {GST_AUDIO_FORMAT_S16, AV_SAMPLE_FMT_S16},
    {GST_AUDIO_FORMAT_S32, AV_SAMPLE_FMT_S32},
    {GST_AUDIO_FORMAT_F32, AV_SAMPLE_FMT_FLT},
    {GST_AUDIO_FORMAT_F64, AV_SAMPLE_FMT_DBL},
};

GstCaps* SoundCapsFor(const AVBased::EffectInfo& effect) {
    GValue names = G_VALUE_INIT;
    g_value_init(&names, GST_TYPE_LIST);
    for (const SoundFormat& format : kSoundFormats) {
        if (SoundFormatFor({{effect.name, {}}}, format.id) != format.id) continue;
        GValue name = G_VALUE_INIT;
        g_value_init(&name, G_TYPE_STRING);
        g_value_set_static_string(&name, gst_audio_format_to_string(format.name));
        gst_value_list_append_and_take_value(&names, &name);
    }
    GstCaps* const caps = gst_caps_from_string("audio/x-raw, rate=" GST_AUDIO_RATE_RANGE
                                               ", channels=" GST_AUDIO_CHANNELS_RANGE ", layout=interleaved");
    gst_caps_set_value(caps, "format", &names);
    g_value_unset(&names);
    return caps;
}

/// A buffer's memory.
class MappedSound {
public:
    explicit MappedSound(GstBuffer* buffer)
        : m_buffer(buffer) {
        if (!gst_buffer_map(buffer, &m_map, GST_MAP_READWRITE))
            throw std::runtime_error("sound can't be written");
    }
    ~MappedSound() { gst_buffer_unmap(m_buffer, &m_map); }
    MappedSound(const MappedSound&) = delete;
    MappedSound& operator=(const MappedSound&) = delete;

    uint8_t* Samples() const { return m_map.data; }
    size_t Bytes() const { return m_map.size; }

private:
    GstBuffer* m_buffer;
    GstMapInfo m_map{};
};

class AudioFilter {
public:
    using Parent = GstAudioFilter;
    using ParentClass = GstAudioFilterClass;
    static GType ParentType() { return GST_TYPE_AUDIO_FILTER; }

    AudioFilter(const PropertyTable& table, GstElement* element)
        : settings(table)
        , m_filter(reinterpret_cast<GstAudioFilter*>(element))
        , m_complaints(element) {}

    static void SetUp(GstAudioFilterClass* of, const AVBased::EffectInfo& effect) {
        Describe(reinterpret_cast<GstElementClass*>(of), effect, "Filter/Effect/Audio");
        GstCaps* const caps = SoundCapsFor(effect);
        gst_audio_filter_class_add_pad_templates(of, caps);
        gst_caps_unref(caps);
        auto* const base = reinterpret_cast<GstBaseTransformClass*>(of);
        base->before_transform = [](GstBaseTransform* filter, GstBuffer* buffer) {
            Element<AudioFilter>::WorkerOf(filter).Begin(buffer);
        };
        base->transform_ip = [](GstBaseTransform* filter, GstBuffer* buffer) {
            Element<AudioFilter>::WorkerOf(filter).Hear(buffer);
            return GST_FLOW_OK;
        };
    }

    Settings settings;

private:
    /// Settings that are controlled are brought to the buffer's time.
    void Begin(GstBuffer* buffer) noexcept {
        const GstSegment& segment = reinterpret_cast<GstBaseTransform*>(m_filter)->segment;
        m_time = gst_segment_to_stream_time(&segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
        if (GST_CLOCK_TIME_IS_VALID(m_time)) gst_object_sync_values(GST_OBJECT_CAST(m_filter), m_time);
    }

    void Hear(GstBuffer* buffer) noexcept {
        try {
            const MappedSound mapped(buffer);
            const GstAudioInfo& info = m_filter->info;
            const auto* const format =
                std::ranges::find(kSoundFormats, GST_AUDIO_INFO_FORMAT(&info), &SoundFormat::name);
            const adapters::Sound sound{mapped.Samples(), format->id, GST_AUDIO_INFO_RATE(&info),
                                        GST_AUDIO_INFO_CHANNELS(&info),
                                        static_cast<int>(mapped.Bytes() / static_cast<size_t>(info.bpf))};
            const int64_t first = PlaceOf(*buffer, sound.rate);
            m_next = first + sound.count;
            const bool timed = GST_CLOCK_TIME_IS_VALID(m_time); // else nothing moves
            const auto ms = [&](int64_t sample) { return timed ? av_rescale(sample, 1000, sound.rate) : 0; };
            const GstClockTime lasts = gst_util_uint64_scale_int(static_cast<guint64>(sound.count),
                                                                 static_cast<int>(GST_SECOND), sound.rate);
            m_pieces.Work(
                ThePlugin(),
                settings.SoundText(GST_OBJECT_CAST(m_filter), m_time + lasts, ms(first), ms(m_next)), {},
                sound, first);
        } catch (const std::exception& failure) {
            m_complaints.Say(failure.what());
        }
    }

    /// The number of a buffer's first sample. Times are rounded: as long as nothing is left out, numbers go
    /// on.
    int64_t PlaceOf(const GstBuffer& buffer, int rate) const {
        if (!GST_CLOCK_TIME_IS_VALID(m_time)) return m_next;
        const auto rates = static_cast<guint64>(rate);
        const auto told = static_cast<int64_t>(gst_util_uint64_scale_round(m_time, rates, GST_SECOND));
        const bool near = std::abs(told - m_next) <= rate / 1000;
        return near && !GST_BUFFER_IS_DISCONT(&buffer) ? m_next : told;
    }

    GstAudioFilter* m_filter;
    Complaints m_complaints;
    GstClockTime m_time = 0; ///< of the buffer, in the stream
    int64_t m_next = 0;      ///< the sample behind the last one
    adapters::SoundPieces m_pieces;
};

} // namespace

void RegisterAudioFilter(GstPlugin* plugin, const AVBased::EffectInfo& effect) {
    Element<AudioFilter>::Register(plugin, effect);
}

} // namespace aveffect::gst
