#pragma once
/// One of libavfilter's filters for single pictures.
#include <optional>
#include <string>
#include <utility>

#include "host/picture/filter_graph.h"

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
    std::string m_filter;
    std::string m_done;
    std::optional<FilterGraph> m_graph;
    int m_width = 0, m_height = 0, m_format = -1; ///< of the pictures that the graph is for
};

} // namespace aveffect
