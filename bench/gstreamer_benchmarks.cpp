// GStreamer's elements beside the plain effect.
#include <cstdlib>
#include <memory>

#include <gst/check/gstharness.h>

#include "aveffect/pixel_format.h"
#include "bench/door_benchmarks.h"

namespace bench {
namespace {

/// An element between pads of ours.
class Harness {
public:
    Harness(const DoorPair& pair, const DoorKind& kind, unsigned char* memory)
        : m_harness(gst_harness_new(("aveffect-" + std::string(pair.shortName)).c_str())) {
        for (const auto& [property, value] : pair.settings)
            gst_util_set_object_arg(G_OBJECT(m_harness->element), property, value);
        const std::string format = kind.format == AVBased::BGRA ? "BGRA" : "I420";
        gst_harness_set_src_caps_str(
            m_harness, ("video/x-raw,width=1920,height=1080,framerate=25/1,format=" + format).c_str());
        m_buffer = gst_buffer_new_wrapped_full(GstMemoryFlags{}, memory, kind.bytes, 0, kind.bytes, nullptr,
                                               nullptr);
        GST_BUFFER_PTS(m_buffer) = 50 * GST_MSECOND;
    }
    ~Harness() {
        gst_buffer_unref(m_buffer);
        gst_harness_teardown(m_harness);
    }
    Harness(const Harness&) = delete;
    Harness& operator=(const Harness&) = delete;

    void Push() { m_buffer = gst_harness_push_and_pull(m_harness, m_buffer); }

private:
    GstHarness* m_harness;
    GstBuffer* m_buffer;
};

Push MakeHarness(const DoorPair& pair, const DoorKind& kind, unsigned char* picture) {
    return [harness = std::make_shared<Harness>(pair, kind, picture)] { harness->Push(); };
}

} // namespace

void RegisterGStreamerBenchmarks() {
    setenv("GST_REGISTRY_DISABLE", "yes", 1);
    gst_init(nullptr, nullptr);
    if (gst_plugin_load_file(AVEFFECT_GSTREAMER_PLUGIN, nullptr))
        RegisterDoorBenchmarks("GStreamer", MakeHarness);
}

} // namespace bench
