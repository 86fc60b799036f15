#pragma once
/// Music under a film.
#include <memory>
#include <string>

#include "host/media/sound_reader.h"

namespace aveffect {

/// A file's sound, as it was found.
struct MusicFile {
    SourceRequest source;
    SoundShape shape;
    Moment start; ///< of the sound, in the file's times
};

/// Opens what a source URL names. Throws Error (Input) when it has no sound or can't be opened again, and
/// Error (Interrupted).
MusicFile FindMusic(const std::string& url, const std::atomic<bool>& cancel);

/// Music, and what becomes of it.
struct Music {
    MusicFile file;
    int64_t fadeInMs = 0, fadeOutMs = 0; ///< at the film's beginning and end; no longer than it
    double volume = 1;                   ///< a factor
};

/// A file's sound over and over. Used by one thread at a time.
class EndlessSound {
public:
    EndlessSound(MusicFile file, SoundShape shape, const std::atomic<bool>& cancel)
        : m_file(std::move(file))
        , m_shape(std::move(shape))
        , m_cancel(cancel) {}

    /// The next samples; pts counts them. Never null. Throws Error (Input, Interrupted).
    mediabridge::AVFramePtr Next();

    /// What was found to be wrong so far.
    DamageReport Damage() const;

private:
    MusicFile m_file;
    SoundShape m_shape;
    const std::atomic<bool>& m_cancel;
    std::unique_ptr<SoundReader> m_reader;
    DamageReport m_damage; ///< of the rounds before
    int64_t m_next = 0;    ///< samples given out
    bool m_heard = false;  ///< in this round
};

} // namespace aveffect
