#pragma once
/// The open ends of a graph of filters, which the words between them are tied to.
#include <string>

#include "host/support/error.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavutil/mem.h>
}

namespace aveffect {

struct FilterEnds {
    AVFilterInOut* first = nullptr; ///< owned; parsing takes those that it ties

    FilterEnds() = default;
    FilterEnds(const FilterEnds&) = delete;
    FilterEnds& operator=(const FilterEnds&) = delete;
    ~FilterEnds() { avfilter_inout_free(&first); }

    /// One more, in front of the others. Throws NoMemory.
    void Add(const std::string& name, AVFilterContext* filter) {
        AVFilterInOut* const end = avfilter_inout_alloc();
        if (!end) throw NoMemory("no memory for a filter");
        *end = {av_strdup(name.c_str()), filter, 0, first};
        first = end;
        if (!end->name) throw NoMemory("no memory for a filter");
    }
};

} // namespace aveffect
