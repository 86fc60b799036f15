#pragma once
/// Pairs of views, from pictures that hold both or from two pictures.
#include <optional>
#include <utility>
#include <vector>

#include "host/effects/effect_chain.h"
#include "host/picture/colour_match.h"
#include "host/picture/working_format.h"
#include "mediabridge/scaler.h"
#include "mediabridge/video_frame.h"

namespace aveffect {

/// Makes second views as stereo effects want them: laid out in memory like the first, with the effects that
/// stand before the stereo effect applied. Used by one thread at a time.
class ViewPairs {
public:
    /// Throws Error (Usage) when there is no stereo effect or the options contradict each other.
    ViewPairs(const Plugin& plugin, AVBased::IAVManager* manager, const std::vector<EffectSpec>& effects,
              const TimeSpan& clip, StereoOptions options);
    /// Further ones, for another thread, as EffectChain has them.
    explicit ViewPairs(ViewPairs* first)
        : m_options(first->m_options)
        , m_before(&first->m_before) {}

    /// The two views of a picture that holds both, in memory of their own, both laid out alike. Whole chroma
    /// samples; what does not fit lies between them. Throws Error (Usage) when a side is too short.
    std::pair<mediabridge::AVFramePtr, mediabridge::AVFramePtr> Split(const AVFrame& picture);

    /// A second view in the left one's format, size and colours. Where the two are not laid out alike, the
    /// left one is replaced by a copy.
    mediabridge::AVFramePtr Fit(const AVFrame& second, mediabridge::AVFramePtr& left,
                                const WorkingFormat& working);

    /// The frame to be attached to the left view's. Numbers are as EffectChain has them.
    mediabridge::VideoFrame::Ptr Prepare(const AVFrame& right, int timeMs, unsigned durationMs,
                                         std::optional<int64_t> number);

    /// As EffectChain's.
    void Stop() { m_before.Stop(); }

private:
    StereoOptions m_options;
    EffectChain m_before; ///< the stereo effect, for the right view
    std::optional<mediabridge::Scaler> m_fit;
    std::optional<mediabridge::Scaler> m_toBytes; ///< of bits or a palette, or in other colours
    std::optional<ColourMatch> m_colours;         ///< the left view's
};

} // namespace aveffect
