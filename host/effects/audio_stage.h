#pragma once
/// One effect on sound: its processor, its settings at each time, and how much of it is heard.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/effects/plugin.h"
#include "host/settings/settings_at_time.h"
#include "mediabridge/audio_frame.h"

namespace aveffect {

/// Works on sound piece by piece. Used by one thread at a time.
class AudioStage {
public:
    /// Makes the processor, sets "duration" to what the effect lasts of the clip, and then its own properties
    /// as they are at its begin. Files that they name have been checked (RequireSounds). Throws Error (Effect
    /// or Usage).
    AudioStage(const Plugin& plugin, AVBased::IAVManager* manager, const EffectSpec& effect,
               const TimeSpan& clip, int rate);

    /// Where the effect's own time begins, and what it lasts: samples in the clip. Without a begin or an end
    /// of its own it lasts before or behind the clip, too.
    int64_t Origin() const noexcept { return m_origin; }
    int64_t Begin() const noexcept { return m_begin; }
    int64_t End() const noexcept { return m_end; }

    /// Sound comes in pieces that are this part of a second, counted from the origin.
    int PiecesASecond() const noexcept;

    /// Whether a piece can depend on those before it.
    bool NeedsAll() const noexcept;

    /// Changes a piece in place: interleaved samples of the chain's format, the first one's number in the
    /// effect's time, before whose begin it works as it does there. Throws Error (Effect) with the record's
    /// text when a processor records an error.
    void Process(AVFrame& piece, int64_t first);

private:
    using FramePtr = mediabridge::AudioFrame::Ptr;

    /// A processor and what it was set to.
    struct Voice {
        AudioProcPtr proc;
        std::vector<std::string> texts;
    };

    Voice Make(const Plugin& plugin, AVBased::IAVManager* manager) const;
    double ClipMs(int64_t sample) const;
    std::vector<std::string> TextsAt(double ms) const;
    void Set(Voice& voice, std::vector<std::string> texts) const;
    FramePtr Hear(Voice& voice, const AVFrame& piece, int64_t first) const;
    FramePtr HearAt(Voice& voice, int64_t sample, const AVFrame& piece, int64_t first) const;
    FramePtr HearSteps(const AVFrame& piece, int64_t first);
    FramePtr HearBetween(const AVFrame& piece, int64_t first);

    const AVBased::EffectInfo& m_info;
    SettingsAtTime m_settings;
    int m_rate;
    int64_t m_origin, m_begin, m_end;
    Voice m_voice;
    std::optional<size_t> m_step;  ///< the property that moves, a whole number, where pieces are all alike
    std::optional<Voice> m_later;  ///< set to what other numbers that move are at a piece's end
    std::vector<double> m_weights; ///< of a piece's samples
};

} // namespace aveffect
