#pragma once
/// A clip or a piece of sound through effects for whoever shows it at once.
#include <memory>

#include "host/jobs/render.h"
#include "host/support/av_owner.h"
#include "host/support/reporter.h"

namespace aveffect {

/// What is shown at a moment.
struct PlayedPicture {
    mediabridge::AVFramePtr picture; ///< BGRA, upright
    double pixelAspect = 1;          ///< width of a pixel to its height
    int64_t timeMs = 0;              ///< from the start of what is played
    int64_t endMs = 0;               ///< when the next one follows
};

/// Plays from one moment on: pictures are made ahead on a thread of their own, sound on the caller's.
class Playback {
public:
    /// Of the options, input, effects, span, pixel format, framing, rate, SDR, threads and views count, as
    /// for Render(). Effects see the times that they see in a render, wherever playing begins; those that
    /// build on the pictures before begin anew. Plug-in, reporter and flag outlive it. Throws Error.
    Playback(const Plugin& plugin, const RenderOptions& options, int64_t atMs, Reporter& reporter,
             const std::atomic<bool>& cancel);
    ~Playback();
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    /// False for sound alone.
    bool HasPictures() const;
    /// The next picture if it is made; waits for it at most that long. Throws what making it threw.
    std::optional<PlayedPicture> Next(int waitMs);
    /// No picture follows.
    bool Ended() const;
    /// Pictures that end before this moment need not be made any more.
    void SkipTo(int64_t timeMs);

    bool HasSound() const;
    /// The next sound, signed 16-bit stereo at kSoundRate; null once it reaches that moment, and at its end.
    /// Used by one thread at a time.
    mediabridge::AVFramePtr NextSound(int64_t untilMs);
    static constexpr int kSoundRate = 48000;

    /// Of what is played; absent when the clip does not tell.
    std::optional<int64_t> LengthMs() const;
    /// Whether there was one picture alone, which lasts for ever. Known once Ended().
    bool IsStill() const;

private:
    class Work;
    std::unique_ptr<Work> m_work;
};

} // namespace aveffect
