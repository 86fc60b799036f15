#pragma once
/// Makes the pictures.
#include <atomic>
#include <filesystem>

#include "host/effects/plugin.h"
#include "manual/shots.h"
#include "manual/waves.h"

namespace aveffect::manual {

/// Draws the gallery's own pictures, and makes shots of them through the host library. Several threads may
/// use it at a time. What fails but for an effect's own refusal is thrown as Error or std::runtime_error.
class Darkroom {
public:
    /// Pictures go to one folder, what is only needed on the way to another; both exist and outlive this.
    Darkroom(std::filesystem::path pictures, std::filesystem::path work);

    /// Makes the shot's files, FILE.webp and for an animation FILE-still.webp; or notes why there is none.
    void Make(const AVBased::EffectInfo& effect, Shot& shot) const;

    /// How loud the sound is before and after an effect with that setting.
    Waves MakeWaves(const std::string& setting) const;

    /// The pictures that effects begin with, in the folder of pictures.
    static constexpr char kDay[] = "day", kNight[] = "night";

private:
    std::filesystem::path Picture(const std::string& name) const;
    std::filesystem::path Work(const std::string& name) const;
    void MakeStill(const std::filesystem::path& from, const Shot& shot, const std::string& file, int64_t atMs,
                   bool withEffect) const;
    void MakeMoving(const AVBased::EffectInfo& effect, const Shot& shot) const;
    void MakeSound(const std::string& from, const std::string& to, const std::string& setting) const;

    std::filesystem::path m_pictures, m_work;
    Plugin m_plugin;
    std::atomic<bool> m_cancel = false; ///< never set
};

} // namespace aveffect::manual
