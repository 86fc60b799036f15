#pragma once
/// Filters and what works in them.
#include <memory>

#include <framework/mlt.h>

#include "aveffect/effect_info.h"

namespace aveffect::mlt {

template <typename Worker>
Worker* WorkerIn(mlt_filter filter) {
    return static_cast<Worker*>(filter->child);
}

/// A filter that owns a worker; null without memory for the filter. Throws std::bad_alloc.
template <typename Worker>
mlt_filter MakeFilter(const AVBased::EffectInfo& effect, mlt_frame (*process)(mlt_filter, mlt_frame)) {
    std::unique_ptr<mlt_filter_s, decltype(&mlt_filter_close)> filter(mlt_filter_new(), mlt_filter_close);
    if (!filter) return nullptr;
    filter->child = std::make_unique<Worker>(effect, filter.get()).release();
    filter->process = process;
    filter->close = [](mlt_filter closed) {
        delete WorkerIn<Worker>(closed);
        closed->child = nullptr;
        closed->close = nullptr;
        closed->parent.close = nullptr;
        mlt_service_close(&closed->parent);
    };
    return filter.release();
}

} // namespace aveffect::mlt
