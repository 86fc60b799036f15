#pragma once
/// A chain of libavfilter's filters for sound.
#include <memory>
#include <string>

#include "host/media/clip_scan.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace aveffect {

/// Takes and gives a film's samples (kFilmSamples). Used by one thread at a time.
class SoundFilter {
public:
    /// The chain in libavfilter's words. Throws Error (Output), which says what can't be done to the sound
    /// ("limited").
    SoundFilter(const std::string& words, std::string done, const SoundShape& shape);

    /// Throw Error (Output).
    void Give(AVFrame& sound);
    /// What the chain has ready; null when it waits for more.
    mediabridge::AVFramePtr Take();

private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const noexcept { avfilter_graph_free(&graph); }
    };
    int Build(const std::string& words, const SoundShape& shape);
    void Require(int code) const;

    std::string m_done;
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    AVFilterContext *m_in = nullptr, *m_out = nullptr;
};

} // namespace aveffect
