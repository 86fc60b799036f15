#pragma once
/// Turning pictures upright as a clip's display matrix says.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/av_owner.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace aveffect {

/// The display matrix of a stream, null when it has none or the pictures are upright as they are stored.
const int32_t* DisplayMatrix(const AVStream& stream);

/// libavfilter's words for what a display matrix asks for; absent when it is no multiple of a quarter turn.
std::optional<std::string> TurnFilter(const int32_t matrix[9]);

/// Turns pictures. Used by one thread at a time.
class Turner {
public:
    explicit Turner(std::string filter)
        : m_filter(std::move(filter)) {}

    /// A turned picture with the same properties. Throws Error (Output) when the picture can't be turned.
    mediabridge::AVFramePtr Turn(mediabridge::AVFramePtr picture);

private:
    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const noexcept { avfilter_graph_free(&graph); }
    };
    void Build(const AVFrame& picture);

    std::string m_filter;
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    AVFilterContext* m_in = nullptr;
    AVFilterContext* m_out = nullptr;
    int m_width = 0, m_height = 0, m_format = -1;
};

} // namespace aveffect
