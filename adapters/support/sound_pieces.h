#pragma once
/// A host's sound, as an effect wants to have it.
#include <cstdint>
#include <optional>
#include <string>

#include "host/effects/audio_stage.h"
#include "host/media/media_manager.h"

namespace aveffect::adapters {

/// Interleaved sound in the host's memory.
struct Sound {
    uint8_t* samples;
    AVSampleFormat format;
    int rate, channels, count;

    size_t SampleBytes() const {
        return static_cast<size_t>(av_get_bytes_per_sample(format)) * static_cast<size_t>(channels);
    }
    /// A part of it, as its own memory. Throws std::bad_alloc.
    mediabridge::AVFramePtr Part(int begin, int end) const;
};

/// One effect on sound that comes in whatever pieces the host has. Used by one thread at a time.
class SoundPieces {
public:
    /// Changes sound in place: the effect as people write it, what the whole lasts if that is known, and the
    /// number of the first sample in it. Effects that depend on what was before hear silence in place of what
    /// was left out. Throws Error, std::bad_alloc.
    void Work(const Plugin& plugin, const std::string& effect, std::optional<int64_t> lengthMs,
              const Sound& sound, int64_t first);

private:
    /// What a stage was made for.
    struct Terms {
        std::string effect;
        std::optional<int64_t> lengthMs;
        AVSampleFormat format;
        int rate, channels;

        bool operator==(const Terms&) const = default;
    };

    void Hear(const Sound& sound, int64_t first);
    void Skip(int64_t samples, const Sound& like);

    MediaManager m_media;
    Terms m_terms{};
    std::optional<AudioStage> m_stage;
    int64_t m_next = 0; ///< sample behind those that the stage has had
};

} // namespace aveffect::adapters
