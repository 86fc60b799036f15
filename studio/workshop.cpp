#include "studio/workshop.h"

#include <algorithm>
#include <filesystem>
#include <thread>

#include "host/jobs/shown_frame.h"
#include "host/settings/effect_settings.h"
#include "host/support/error.h"
#include "host/support/whole_file.h"
#include "studio/scaled_effects.h"
#include "studio/sounds.h"
#include "studio/words.h"
#include "timeline/jobs/text_file.h"

namespace aveffect {

using nlohmann::json;

namespace {

constexpr char kJpeg[] = "image/jpeg", kPng[] = "image/png";

const RenderObserver kNobody;

/// A file that is read and gone.
std::string TakeFile(const std::string& name) {
    std::optional<std::string> bytes = WholeFile(name);
    std::error_code failed;
    std::filesystem::remove(name, failed);
    if (!bytes) throw Error(ErrorKind::Output, "what was made is gone");
    return std::move(*bytes);
}

json ChainWords(const StudioChain& chain) {
    const auto list = [](const std::vector<StudioEffect>& effects) {
        json words = json::array();
        for (const StudioEffect& effect : effects)
            words.push_back({{"text", effect.text}, {"on", effect.on}});
        return words;
    };
    return {{"e", list(chain.effects)}, {"a", list(chain.audioEffects)}};
}

std::string Seconds(int64_t ms) {
    constexpr int64_t kSecond = 1000;
    const std::string rest = std::to_string(ms % kSecond);
    return std::to_string(ms / kSecond) + "." + std::string(3 - rest.size(), '0') + rest;
}

/// The film's usual place: beside the clip.
std::string FilmPlace(const std::string& clip) {
    return std::filesystem::path(clip).replace_extension(".otio").string();
}

} // namespace

Workshop::Workshop(const StudioOptions& options, const Roots& roots, const Plugin& plugin,
                   const std::atomic<bool>& cancel)
    : m_options(options)
    , m_roots(roots)
    , m_plugin(plugin)
    , m_cancel(cancel)
    , m_clips(cancel)
    , m_lanes(std::max(2u, std::thread::hardware_concurrency())) {}

json Workshop::Start() {
    json clips = json::array(), notes = json::array(), film;
    for (const std::string& file : m_options.files) {
        try {
            if (file.ends_with(".otio"))
                film = FilmWords(m_roots.File(file));
            else
                clips.push_back(m_clips.Open(m_roots.File(file))->Words());
        } catch (const Error& error) {
            notes.push_back(error.what());
        }
    }
    return {{"clips", clips},
            {"film", film},
            {"notes", notes},
            {"roots", m_roots.Folders()},
            {"version", m_options.version}};
}

json Workshop::OpenClip(const std::string& path) { return m_clips.Open(m_roots.File(path))->Words(); }

// Effects read masks, pictures and sound; the same holds for these as for clips.
void Workshop::RequireReadable(const StudioChain& chain) const {
    const auto look = [this](const std::vector<StudioEffect>& effects, Medium medium) {
        for (const StudioEffect& effect : effects)
            if (effect.on)
                for (const std::string& file : FilesOf(ParseEffect(effect.text, false, medium)))
                    if (!file.empty()) m_roots.File(ParseSourceUrl(file).path);
    };
    look(chain.effects, Medium::Video);
    look(chain.audioEffects, Medium::Audio);
}

std::string Workshop::ScratchName(const char* extension) {
    return m_options.scratch + "/" + std::to_string(++m_made) + extension;
}

MadeMedia Workshop::Make(const FrameOptions& options, StudioClip::Shown shown, const char* type) {
    RenderFrame(m_plugin, options, {*shown.source, std::move(shown.picture), std::move(shown.damage)},
                kNobody, m_cancel);
    return {TakeFile(options.output), type, shown.timeMs};
}

std::optional<MadeMedia> Workshop::Frame(const FrameWish& wish) {
    const std::shared_ptr<StudioClip> clip = m_clips.Of(wish.clip);
    RequireReadable(wish.chain);
    const Lanes::Turn turn(m_lanes, wish.lane);
    if (turn.Stale()) return {};
    const bool scaled = wish.width > 0, smaller = scaled && wish.width < clip->Width();
    std::vector<std::string> words =
        FrameWords(clip->Path(), ScratchName(scaled ? ".jpg" : ".png"), wish.atMs, wish.chain);
    if (smaller) words.push_back("--size=" + std::to_string(wish.width) + ":");
    if (scaled) words.emplace_back("--quality=90");
    FrameOptions options = m_options.commands.frame(words);
    if (smaller)
        options.effects =
            ScaleEffects(std::move(options.effects), static_cast<double>(wish.width) / clip->Width());
    return Make(options, clip->At(wish.atMs), scaled ? kJpeg : kPng);
}

MadeMedia Workshop::Thumbnail(const std::string& id, int64_t atMs, int height) {
    const std::shared_ptr<StudioClip> clip = m_clips.Of(id);
    const Lanes::Turn turn(m_lanes, {});
    std::vector<std::string> words = FrameWords(clip->Path(), ScratchName(".jpg"), atMs, {});
    if (height < clip->Height()) words.push_back("--size=:" + std::to_string(height));
    return Make(m_options.commands.frame(words), clip->At(atMs), kJpeg);
}

MadeMedia Workshop::Sound(const SoundWish& wish) {
    const std::shared_ptr<StudioClip> clip = m_clips.Of(wish.clip);
    RequireReadable(wish.chain);
    const Lanes::Turn turn(m_lanes, "sound");
    if (turn.Stale()) throw Error(ErrorKind::Interrupted, "something newer was asked for");
    const std::string file = ScratchName(".wav");
    const RenderWords span = {{"from", Seconds(wish.fromMs)}, {"to", Seconds(wish.fromMs + wish.lengthMs)}};
    const std::vector<std::string> words =
        RenderWordsOf(clip->Path(), file, {{}, wish.chain.audioEffects}, span);
    aveffect::Render(m_plugin, m_options.commands.render(words), kNobody, m_cancel);
    return {TakeFile(file), "audio/wav"};
}

json Workshop::Waveform(const SoundWish& wish) {
    const std::shared_ptr<StudioClip> clip = m_clips.Of(wish.clip);
    RequireReadable(wish.chain);
    const Lanes::Turn turn(m_lanes, {});
    const std::vector<std::string> words =
        RenderWordsOf(clip->Path(), "sound.wav", {{}, wish.chain.audioEffects}, {});
    json peaks = json::array();
    for (const auto& [low, high] :
         FindPeaks(m_plugin, m_options.commands.render(words), wish.columns, m_cancel))
        peaks.push_back({low, high});
    return {{"peaks", peaks}};
}

json Workshop::Commands(const OutputWish& wish) {
    const std::shared_ptr<StudioClip> clip = m_clips.Of(wish.clip);
    const std::filesystem::path path(clip->Path());
    const std::string output =
        !wish.output.empty() ? wish.output : path.stem().string() + "-out" + path.extension().string();
    const std::vector<std::string> render = RenderWordsOf(clip->Path(), output, wish.chain, wish.options);
    json words = {{"render", ShellText("render", render)},
                  {"frame", nullptr},
                  {"otio", nullptr},
                  {"notes", json::array()}};
    const auto tryTo = [&](const char* member, const auto& make) {
        try {
            words[member] = make();
        } catch (const Error& error) {
            words["notes"].push_back(std::string(member) + ": " + error.what());
        }
    };
    if (clip->HasPictures())
        tryTo("frame", [&] {
            return ShellText("frame",
                             FrameWords(clip->Path(), path.stem().string() + ".png", wish.atMs, wish.chain));
        });
    tryTo("otio", [&] {
        return ChainFilmText({clip->Path(), wish.chain, {}}, FilmPlace(clip->Path()), m_cancel);
    });
    return words;
}

json Workshop::FilmWords(const std::string& place) {
    const ChainFilm film = ReadChainFilm(place, m_roots);
    RequireReadable(film.chain);
    return {{"clip", m_clips.Open(film.clip)->Words()},
            {"chain", ChainWords(film.chain)},
            {"notes", film.notes},
            {"path", place}};
}

json Workshop::OpenFilm(const std::string& path) { return FilmWords(m_roots.File(path)); }

void Workshop::SaveFilm(const OutputWish& wish) {
    const std::string place = m_roots.Output(wish.output);
    if (!place.ends_with(".otio")) throw Error(ErrorKind::Usage, wish.output + " should end with .otio");
    const std::string clip = m_clips.Of(wish.clip)->Path();
    WriteTextFile(place, ChainFilmText({clip, wish.chain, {}}, place, m_cancel), wish.overwrite, m_cancel);
}

std::string Workshop::Render(const OutputWish& wish) {
    const std::string clip = m_clips.Of(wish.clip)->Path(), place = m_roots.Output(wish.output);
    if (place.find('%') != std::string::npos)
        throw Error(ErrorKind::Usage,
                    wish.output + " has a %, which stands for numbered files; choose another name");
    RequireReadable(wish.chain);
    RenderOptions options = m_options.commands.render(RenderWordsOf(clip, place, wish.chain, wish.options));
    options.overwrite = wish.overwrite;
    std::error_code failed;
    if (!options.overwrite && std::filesystem::exists(place, failed))
        throw Error(ErrorKind::Output, place + " exists already");
    return m_jobs.Add(place,
                      [this, options](const RenderObserver& observer, const std::atomic<bool>& cancel) {
                          return aveffect::Render(m_plugin, options, observer, cancel);
                      });
}

} // namespace aveffect
