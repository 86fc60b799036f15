#include "manual/darkroom.h"

#include "host/jobs/render.h"
#include "host/jobs/transition.h"
#include "manual/program.h"
#include "manual/scene.h"

namespace aveffect::manual {

namespace {

constexpr int64_t kMovingMs = 2000;
constexpr AVRational kMovingRate = {12, 1};
constexpr int kQuality = 80; // of WebP, 1 to 100
constexpr char kMovingQuality[] = "60";
constexpr char kMovingSize[] = "scale=324:-2:flags=area";

/// Lossless, with alpha, for a film on its way.
void OnItsWay(OutputOptions& options, const std::filesystem::path& file) {
    options.output = file.string();
    options.videoCodec = "ffv1";
    options.threads = 1;
    options.rate = kMovingRate;
    options.overwrite = true;
}

} // namespace

Darkroom::Darkroom(std::filesystem::path pictures, std::filesystem::path work)
    : m_pictures(std::move(pictures))
    , m_work(std::move(work)) {
    constexpr double kParallax = 14; // pixels
    WritePicture(Work("day.ppm"), DrawDay());
    WritePicture(Work("right.ppm"), DrawDay(-kParallax));
    WritePicture(Work("night.ppm"), DrawNight());
    for (const std::string name : {kDay, kNight}) MakeStill(Work(name + ".ppm"), {}, name, 0, false);
    TransitionOptions clip;
    OnItsWay(clip.film, Work("day.mkv"));
    clip.film.outputFormat = "bgra";
    clip.transition = "clock";
    clip.first = clip.second = Work("day.ppm").string();
    clip.durationMs = kMovingMs;
    RenderTransition(m_plugin, clip, {}, m_cancel);
    WriteWords(Work("words.wav"));
    WriteSwell(Work("swell.wav"));
}

std::filesystem::path Darkroom::Picture(const std::string& name) const {
    return m_pictures / (name + ".webp");
}

std::filesystem::path Darkroom::Work(const std::string& name) const { return m_work / name; }

void Darkroom::MakeStill(const std::filesystem::path& from, const Shot& shot, const std::string& file,
                         int64_t atMs, bool withEffect) const {
    FrameOptions options;
    options.input = from.string();
    options.output = Picture(file).string();
    options.quality = kQuality;
    options.threads = 1;
    options.overwrite = true;
    options.atMs = atMs;
    if (withEffect) options.effects = {ParseEffect(shot.setting, false)};
    if (shot.twoViews) options.stereo.right = Work("right.ppm").string();
    RenderFrame(m_plugin, options, {}, m_cancel);
}

void Darkroom::MakeMoving(const AVBased::EffectInfo& effect, const Shot& shot) const {
    const std::filesystem::path film = Work(shot.file + ".mkv");
    if (effect.kind == AVBased::EffectKind::Transition) {
        TransitionOptions options;
        OnItsWay(options.film, film);
        options.transition = shot.setting;
        options.first = Work("day.ppm").string();
        options.second = Work("night.ppm").string();
        options.durationMs = kMovingMs;
        RenderTransition(m_plugin, options, {}, m_cancel);
    } else {
        RenderOptions options;
        OnItsWay(options, film);
        options.input = Work("day.mkv").string();
        options.effects = {ParseEffect(shot.setting, false)};
        Render(m_plugin, options, {}, m_cancel);
    }
    RunProgram({"ffmpeg", "-v", "error", "-y", "-threads", "1", "-i", film.string(), "-vf", kMovingSize,
                "-c:v", "libwebp_anim", "-quality", kMovingQuality, "-loop", "0",
                Picture(shot.file).string()});
    MakeStill(film, shot, shot.file + "-still", kMovingMs / 2, false);
}

void Darkroom::Make(const AVBased::EffectInfo& effect, Shot& shot) const {
    try {
        if (shot.moves)
            MakeMoving(effect, shot);
        else
            MakeStill(Work(shot.twoViews ? "day.ppm" : "day.mkv"), shot, shot.file,
                      shot.twoViews ? 0 : kMovingMs / 2, true);
    } catch (const Error& error) {
        // What an effect refuses at an end of a range belongs to what there is to tell.
        if (error.Kind() != ErrorKind::Effect && error.Kind() != ErrorKind::Usage) throw;
        shot.failure = error.what();
    }
}

void Darkroom::MakeSound(const std::string& from, const std::string& to, const std::string& setting) const {
    RenderOptions options;
    options.input = Work(from).string();
    options.output = Work(to).string();
    options.threads = 1;
    options.overwrite = true;
    options.audioEffects = {ParseEffect(setting, false, Medium::Audio)};
    Render(m_plugin, options, {}, m_cancel);
}

Waves Darkroom::MakeWaves(const std::string& setting) const {
    std::string ours = setting;
    constexpr std::string_view kOther = "music.flac"; // in the commands that people copy
    if (const size_t at = ours.find(kOther); at != std::string::npos)
        ours.replace(at, kOther.size(), Work("swell.wav").string());
    std::string name = "changed.wav";
    MakeSound("words.wav", name, ours);
    return {LoudnessOf(Work("words.wav")), LoudnessOf(Work(name))};
}

} // namespace aveffect::manual
