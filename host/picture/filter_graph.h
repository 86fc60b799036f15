#pragma once
/// A graph of libavfilter's filters that makes one picture of one or more.
#include <memory>
#include <string>
#include <vector>

#include "host/support/av_owner.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace aveffect {

/// Used by one thread at a time.
class FilterGraph {
public:
    /// The graph in libavfilter's words. Its open inputs are "in0", "in1" and so on, one for each of the
    /// pictures, of whose shapes and formats those to come are; its open output is "out". Throws Error
    /// (Output), which says what can't be done to the pictures ("turned upright").
    FilterGraph(const std::string& words, std::string done, const std::vector<const AVFrame*>& pictures);

    /// What the graph makes of these pictures, which it takes; they have the same time. Throws Error
    /// (Output).
    mediabridge::AVFramePtr Apply(const std::vector<AVFrame*>& pictures);

private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const noexcept { avfilter_graph_free(&graph); }
    };
    int AddInput(const AVFrame& picture);
    int Connect(const std::string& words);

    std::string m_done;
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    std::vector<AVFilterContext*> m_in;
    AVFilterContext* m_out = nullptr;
};

} // namespace aveffect
