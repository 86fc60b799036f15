// GStreamer's elements beside the plain effect, in place at 1080p.
// pushed through it.
#include <array>
#include <cstdlib>

#include <gst/check/gstharness.h>

#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "bench/copy_time.h"
#include "tests/support/plugin.h"

namespace bench {
namespace {

constexpr unsigned kWidth = 1920, kHeight = 1080;

struct Kind {
    const char* name;
    unsigned format;
    size_t bytes;
};
constexpr std::array kKinds = {Kind{"BGRA", AVBased::BGRA, size_t{kWidth} * kHeight * 4},
                               Kind{"I420", AVBased::YUV420P, size_t{kWidth} * kHeight * 3 / 2}};

// GStreamer lays planes out without padding at this size.
AVBased::MemoryFrame FrameOf(const Kind& kind, unsigned char* data) {
    if (kind.format == AVBased::BGRA)
        return {kind.format, kWidth, kHeight, {{data, kWidth * 4, kWidth * 4, kHeight}}};
    unsigned char* const chroma = data + size_t{kWidth} * kHeight;
    constexpr unsigned kHalfWidth = kWidth / 2, kHalfHeight = kHeight / 2;
    return {kind.format,
            kWidth,
            kHeight,
            {{data, kWidth, kWidth, kHeight},
             {chroma, kHalfWidth, kHalfWidth, kHalfHeight},
             {chroma + size_t{kHalfWidth} * kHalfHeight, kHalfWidth, kHalfWidth, kHalfHeight}}};
}

struct ElementPair {
    const char *element, *effect;
    test::Settings settings; ///< of both
};

/// An element between pads of ours.
class Harness {
public:
    Harness(const ElementPair& pair, const Kind& kind, unsigned char* memory)
        : m_harness(gst_harness_new(pair.element)) {
        for (const auto& [property, value] : pair.settings)
            gst_util_set_object_arg(G_OBJECT(m_harness->element), property, value);
        gst_harness_set_src_caps_str(
            m_harness,
            ("video/x-raw,width=1920,height=1080,framerate=25/1,format=" + std::string(kind.name)).c_str());
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

// In turn, so that what else the machine does befalls both.
void RunBoth(benchmark::State& state, const ElementPair& pair, const Kind& kind) {
    const Memory pushed = MakeMemory(kind.bytes), memory = MakeMemory(kind.bytes);
    Harness harness(pair, kind, pushed.get());
    AVBased::MemoryFrame frame = FrameOf(kind, memory.get());
    const test::VideoProc proc = test::MakeVideo(pair.effect, pair.settings);
    harness.Push();
    test::Run(*proc, frame, 50);
    std::vector<double> withElement, plainly;
    TimeAgainstCopy(
        state, kind.bytes, [&] { withElement.push_back(Seconds([&] { harness.Push(); })); },
        [&] { plainly.push_back(Seconds([&] { test::Run(*proc, frame, 50); })); });
    state.counters[kToPlain] = Median(withElement) / Median(plainly);
}

} // namespace

void RegisterGStreamerBenchmarks() {
    setenv("GST_REGISTRY_DISABLE", "yes", 1);
    gst_init(nullptr, nullptr);
    if (!gst_plugin_load_file(AVEFFECT_GSTREAMER_PLUGIN, nullptr)) return;
    static const ElementPair kPairs[] = {
        {"aveffect-gray", "gray", {}},
        {"aveffect-edge-light", "edgelight", {{"edgelight_level", "51"}}},
        {"aveffect-brightness-contrast",
         "brightness_contrast",
         {{"brightness", "20"}, {"contrast", "10"}, {"saturation", "-60"}}},
        {"aveffect-spherize",
         "spherize",
         {{"spherize_r", "486"}, {"spherize_x", "960"}, {"spherize_y", "540"}, {"spherize_scale", "1"}}},
    };
    for (const ElementPair& pair : kPairs)
        for (const Kind& kind : kKinds)
            benchmark::RegisterBenchmark(
                (std::string(pair.element) + ", " + kind.name + ", GStreamer").c_str(),
                [&pair, &kind](benchmark::State& state) { RunBoth(state, pair, kind); })
                ->UseManualTime();
}

} // namespace bench
