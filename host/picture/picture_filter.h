#pragma once
/// One of libavfilter's filters for single pictures.
#include <memory>
#include <string>

#include "host/support/av_owner.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace aveffect {

/// Runs pictures through a filter that makes one of each. Used by one thread at a time.
class PictureFilter {
public:
    /// The filter in libavfilter's words, and what it does to pictures in people's ("turned upright").
    PictureFilter(std::string filter, std::string done)
        : m_filter(std::move(filter))
        , m_done(std::move(done)) {}

    /// A new picture with the same time and colour range. Throws Error (Output) when it can't be made.
    mediabridge::AVFramePtr Apply(mediabridge::AVFramePtr picture);

private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const noexcept { avfilter_graph_free(&graph); }
    };
    void Build(const AVFrame& picture);

    std::string m_filter;
    std::string m_done;
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    AVFilterContext* m_in = nullptr;
    AVFilterContext* m_out = nullptr;
    int m_width = 0, m_height = 0, m_format = -1;
};

} // namespace aveffect
