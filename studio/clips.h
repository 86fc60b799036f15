#pragma once
/// Clips that the page works on, each opened once.
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <nlohmann/json.hpp>

#include "host/jobs/render.h"
#include "host/media/shown_pictures.h"

namespace aveffect {

/// What is told of a clip, and its pictures. Safe from any thread.
class StudioClip {
public:
    /// Opens the file. Throws Error (Input, Interrupted). The flag outlives the clip.
    StudioClip(std::string id, std::string path, const std::atomic<bool>& cancel);

    const std::string& Id() const noexcept { return m_id; }
    const std::string& Path() const noexcept { return m_path; }
    bool HasPictures() const noexcept { return m_pictures; }
    /// Columns of a picture as it is seen.
    int Width() const noexcept { return m_width; }
    int Height() const noexcept { return m_height; }
    /// As the page is told.
    nlohmann::json Words() const;

    /// A picture, with the open file that it comes from. The last ones stay at hand.
    struct Shown {
        std::shared_ptr<Source> source;
        mediabridge::AVFramePtr picture;
        DamageReport damage;
        int64_t timeMs = 0; ///< of the picture itself
    };
    /// The picture shown at a moment; the last one for moments behind it. Throws Error.
    Shown At(int64_t atMs);

    /// Closes the file until it is asked for again.
    void Close();

private:
    struct Reading {
        std::shared_ptr<Source> source;
        ShownPictures pictures;
    };
    /// A picture that was decoded, for as long as it is shown.
    struct Kept {
        int64_t begin, end; ///< in the source's base
        Shown shown;
    };

    Shown Decode(int64_t atMs);
    void Keep(const Shown& shown);

    const std::string m_id, m_path;
    const std::atomic<bool>& m_cancel;
    bool m_pictures = false, m_sound = false, m_still = false;
    int m_width = 0, m_height = 0;
    double m_seconds = 0, m_rate = 0;
    int64_t m_frames = 0;
    std::mutex m_mutex; ///< of what follows
    std::unique_ptr<Reading> m_reading;
    std::deque<Kept> m_kept; ///< the newest in front
};

/// All clips that were opened. Safe from any thread.
class StudioClips {
public:
    explicit StudioClips(const std::atomic<bool>& cancel)
        : m_cancel(cancel) {}

    /// The file, at a place that may be read. Throws Error.
    std::shared_ptr<StudioClip> Open(const std::string& place);
    /// Throws Error (Usage) for an id that was not given out, or for a clip that was dropped for newer ones.
    std::shared_ptr<StudioClip> Of(const std::string& id);

private:
    const std::atomic<bool>& m_cancel;
    std::mutex m_mutex;
    int m_count = 0;
    std::deque<std::shared_ptr<StudioClip>> m_clips; ///< those used last in front
};

} // namespace aveffect
