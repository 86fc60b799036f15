#pragma once
/// The effects of an item of a film.
#include <memory>
#include <vector>

#include "host/effects/effect_chain.h"
#include "host/effects/picture_stage.h"
#include "host/media/media_manager.h"
#include "timeline/playout/playout_setup.h"

namespace aveffect {

/// Effects on the pictures of an item, by several threads, each of which has a way of its own. Without
/// effects pictures still get the first one's size and format.
class EffectLine {
public:
    /// Those on pictures among the item's. Throws Error (Effect, Usage).
    static std::shared_ptr<EffectLine> Make(const FilmItem& item, const PlayoutSetup& setup);

    EffectLine(const FilmItem& item, const PlayoutSetup& setup);

    bool Empty() const noexcept { return m_effects.empty(); }
    bool ChangesAlpha() const noexcept { return m_changesAlpha; }

    /// Time in milliseconds from the item's beginning. Numbers count from 0 in the order in which pictures
    /// are begun; that with 0 is made before any other, and by the thread that begins them. Throws Error.
    mediabridge::AVFramePtr Make(unsigned worker, mediabridge::AVFramePtr picture, int timeMs,
                                 int64_t number);

    /// As EffectChain has it.
    void Stop();

    DamageReport Damage() const { return m_media.Damage(); }

private:
    struct Way {
        Way(EffectLine& line, Way* first);

        EffectChain chain;
        PictureStage stage;
    };

    const PlayoutSetup& m_setup;
    std::vector<EffectSpec> m_effects;
    TimeSpan m_span;
    MediaManager m_media;
    bool m_changesAlpha = false;
    std::vector<std::unique_ptr<Way>> m_ways; ///< by workers; the last one is the first that is used
    mediabridge::AVFramePtr m_sample;         ///< the first picture, from which further ways learn
    int m_sampleMs = 0;
};

} // namespace aveffect
