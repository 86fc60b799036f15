#pragma once
/// What the page asks for, made: pictures, sounds, films and renders. Knows nothing of how it is asked.
#include <atomic>
#include <string>

#include <nlohmann/json.hpp>

#include "studio/chain_film.h"
#include "studio/clips.h"
#include "studio/job_queue.h"
#include "studio/lanes.h"
#include "studio/roots.h"
#include "studio/studio.h"

namespace aveffect {

/// Something that was made, as a browser takes it.
struct MadeMedia {
    std::string bytes, type;
    int64_t timeMs = 0; ///< of a picture in its clip
};

/// Safe from any thread. Everything throws Error.
class Workshop {
public:
    /// All outlive the workshop.
    Workshop(const StudioOptions& options, const Roots& roots, const Plugin& plugin,
             const std::atomic<bool>& cancel);

    nlohmann::json Start();
    nlohmann::json OpenClip(const std::string& path);
    /// Absent when a newer wish of its lane came before its turn.
    std::optional<MadeMedia> Frame(const FrameWish& wish);
    MadeMedia Thumbnail(const std::string& clip, int64_t atMs, int height);
    MadeMedia Sound(const SoundWish& wish);
    nlohmann::json Waveform(const SoundWish& wish);
    /// The commands and the film that do the same.
    nlohmann::json Commands(const OutputWish& wish);
    nlohmann::json OpenFilm(const std::string& path);
    void SaveFilm(const OutputWish& wish);
    std::string Render(const OutputWish& wish);

    JobQueue& Jobs() noexcept { return m_jobs; }

private:
    void RequireReadable(const StudioChain& chain) const;
    std::string ScratchName(const char* extension);
    MadeMedia Make(const FrameOptions& options, StudioClip::Shown shown, const char* type);
    nlohmann::json FilmWords(const std::string& place);

    const StudioOptions& m_options;
    const Roots& m_roots;
    const Plugin& m_plugin;
    const std::atomic<bool>& m_cancel;
    StudioClips m_clips;
    Lanes m_lanes;
    std::atomic<uint64_t> m_made = 0;
    JobQueue m_jobs; ///< last: ends first
};

} // namespace aveffect
