#pragma once
/// Chains of processors, made from effects with their settings.
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "aveffect/effect_info.h"
#include "host/effects/plugin.h"
#include "host/effects/stereo.h"
#include "host/settings/effect_settings.h"
#include "host/support/turnstile.h"

namespace aveffect {

/// Sets one property of a processor. Throws Error (Usage) with the record's text when it is refused.
void SetProperty(AVBased::IAVProc& proc, const std::string& name, const std::string& value);

/// Sets "duration" of a processor, whose signed integer longer spans don't fit. Throws as SetProperty.
void SetDuration(AVBased::IAVProc& proc, uint32_t durationMs);

/// Throws Error (Effect) with the record's text when the processor has recorded an error since the record was
/// cleared.
void RequireNoRecord(AVBased::IAVProc& proc);

/// Video processors that a frame passes in order. Used by one thread at a time.
class EffectChain {
public:
    /// Makes the processors and sets their properties; "duration" of each is set first, to what the effect
    /// lasts of the clip, so that an explicit setting of it wins. A processor with a percentage among its
    /// settings is left at the duration until the first frame, for the order of settings can matter. Throws
    /// Error (Effect or Usage).
    EffectChain(const Plugin& plugin, AVBased::IAVManager* manager, const std::vector<EffectSpec>& effects,
                const TimeSpan& clip);
    /// A further chain of the same settings, for frames that another thread has. Those effects whose frames
    /// have to come in order are the first chain's, which outlives this one. Throws as above.
    explicit EffectChain(EffectChain* first);
    ~EffectChain();
    EffectChain(const EffectChain&) = delete;
    EffectChain& operator=(const EffectChain&) = delete;

    /// Changes the frame in place; timeMs is its time in the clip. All frames have the first one's
    /// size, which percentages refer to. Where there are further chains, frames have numbers from 0 on, the
    /// first chain has the one that comes first before any other chain has any, and each further one has a
    /// frame without a number before all others, which is to be thrown away: effects prepare themselves on
    /// it, those that need order don't see it. What a frame becomes follows from it and its time alone:
    /// random numbers begin anew for each, and effects that do something on their first frame only do it on
    /// that of time 0 only. Throws Error (Effect) with the record's text when a processor records an error,
    /// with the first frame Error (Usage) for settings that can't be made, and (Interrupted) when it was
    /// stopped.
    void Process(AVBased::IRawVideoFrame* frame, int timeMs, std::optional<int64_t> number = {});

    /// Ends the waiting of numbered frames for each other, on all chains. Of the first chain.
    void Stop();

    bool Empty() const noexcept { return m_effects.empty(); }

    /// As they were given.
    const std::vector<EffectSpec>& Effects() const noexcept { return m_effects; }

    /// Whether an effect of the chain works on transparency alone.
    bool ChangesAlpha() const noexcept { return (m_traits & AVBased::kChangesAlpha) != 0; }

    /// Whether an effect of the chain serves BGRA and YUV420P only.
    bool ServesFewFormats() const noexcept { return (m_traits & AVBased::kFewFormats) != 0; }

    /// Whether an effect of the chain brings YUV pictures to RGB and back: transitions and anaglyphs do, and
    /// know BT.601 of usual range alone. Anaglyphs of formats other than YUV420P besides by way of a
    /// converter that fits the process's first such clip alone.
    bool GoesThroughRgb() const { return m_transitions || (m_stereo && Stereo()->IsAnaglyph()); }

    /// What the last stereo effect shows; absent when there is none.
    std::optional<Presentation> Stereo() const;

    /// How pictures hold two views behind the chain: mode 0 when they don't, absent where what the input says
    /// about it still holds.
    std::optional<Presentation> Views() const {
        return m_mixesViews ? std::optional(Presentation{}) : Stereo();
    }

    /// Time that went into effects, and of it into preparing them for settings that had moved. Counted where
    /// settings move.
    struct Times {
        std::chrono::nanoseconds all{0}, preparing{0};
    };
    const Times& Spent() const noexcept { return m_spent; }

private:
    struct Stage;
    /// Effects that follow one another and are alike in whether their frames have to come in order.
    struct Segment {
        size_t end;                      ///< behind the last one
        std::unique_ptr<Turnstile> gate; ///< null where frames need no order
    };

    void Make(const EffectSpec& effect);
    void Renew(Stage& stage);
    bool SetProperties(Stage& stage, int timeMs);
    void Draw(Stage& stage, AVBased::IRawVideoFrame& frame, int timeMs);
    void Prepare(Stage& stage, AVBased::IRawVideoFrame& frame, int timeMs);
    void Work(Stage& stage, AVBased::IRawVideoFrame& frame, int timeMs);
    void Run(size_t begin, size_t end, AVBased::IRawVideoFrame& frame, int timeMs);

    const Plugin& m_plugin;
    AVBased::IAVManager* m_manager;
    TimeSpan m_clip;
    EffectChain& m_first;            ///< itself unless it is a further one
    std::vector<Segment> m_segments; ///< the first chain's
    Stage* m_stereo = nullptr;       ///< the last one
    bool m_mixesViews = false;       ///< an effect behind it does
    bool m_transitions = false;
    bool m_moves = false;
    unsigned m_traits = 0; ///< AVBased::EffectTraits of all effects together
    std::vector<EffectSpec> m_effects;
    std::vector<std::unique_ptr<Stage>> m_stages; ///< null where the first chain's serve
    Times m_spent;
};

} // namespace aveffect
