#include "cli/command_reach.h"

#include <cstdlib>
#include <filesystem>

#include "host/media/device.h"
#include "host/media/input.h"
#include "host/media/source_request.h"
#include "host/support/error.h"
#include "timeline/otio/named_media.h"

namespace aveffect {

namespace {

namespace fs = std::filesystem;

std::string FolderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path().string() : ".";
}

/// A protocol's URL.
void AddResource(Reach& reach, const std::string& url) {
    constexpr std::string_view kFile = "file:";
    const size_t file = url.find(kFile); // alone, or behind another protocol that reads from it
    if (file == std::string::npos)
        reach.network = true;
    else
        reach.reads.push_back(url.substr(file + kFile.size()));
}

void AddInput(Reach& reach, const std::string& url) {
    if (url.empty()) return;
    SourceRequest request;
    try {
        request = ParseSourceUrl(url);
    } catch (const Error&) {
        return;
    }
    const std::string& path = request.path;
    if (!IsLocalPath(path)) return AddResource(reach, path);
    if (IsNumbered(path)) return reach.reads.push_back(FolderOf(path.substr(0, path.find('%'))));
    reach.reads.push_back(path);
    // Lists name what lies beside them.
    if (!request.format.empty()) reach.reads.push_back(FolderOf(path));
}

void AddOutput(Reach& reach, const std::string& target) {
    if (target.empty()) return;
    if (IsStandardOutput(target)) return reach.writes.push_back("/dev/stdout");
    if (IsDevice(target)) return reach.writes.push_back(target);
    std::error_code failed;
    const bool links = fs::is_symlink(target, failed);
    const fs::path followed = links ? fs::weakly_canonical(target, failed) : fs::path(target);
    reach.writes.push_back(FolderOf(followed.empty() ? fs::path(target) : followed));
}

void AddEffects(Reach& reach, const std::vector<EffectSpec>& effects) {
    for (const EffectSpec& effect : effects)
        for (const std::string& name : FilesOf(effect)) AddInput(reach, name);
}

Reach OfPair(const std::string& first, const std::string& second, const std::string& output) {
    Reach reach;
    AddInput(reach, first);
    AddInput(reach, second);
    AddOutput(reach, output);
    return reach;
}

} // namespace

Reach ReachOf(const RenderOptions& options) {
    Reach reach = OfPair(options.input, options.stereo.right, options.output);
    AddEffects(reach, options.effects);
    AddEffects(reach, options.audioEffects);
    return reach;
}

Reach ReachOf(const FrameOptions& options) {
    Reach reach = OfPair(options.input, options.stereo.right, options.output);
    AddEffects(reach, options.effects);
    return reach;
}

Reach ReachOf(const TransitionOptions& options) {
    return OfPair(options.first, options.second, options.film.output);
}

Reach ReachOf(const JoinOptions& options) {
    Reach reach = OfPair(options.music ? options.music->url : "", "", options.film.output);
    for (const JoinClip& clip : options.clips) AddInput(reach, clip.url);
    return reach;
}

Reach ReachOf(const SheetOptions& options) { return OfPair(options.first, options.second, options.output); }

Reach ReachOf(const CompareOptions& options) {
    return OfPair(options.first, options.second, options.difference);
}

Reach ReachOf(const BatchOptions& options) {
    Reach reach = ReachOf(options.render);
    for (const std::string& input : options.inputs) AddInput(reach, input);
    reach.writes.push_back(options.directory);
    return reach;
}

Reach ReachOfPlayer(const RenderOptions& options) {
    Reach reach = ReachOf(options);
    reach.player = true;
    // Where the library behind the player puts sound when it is told to play to a file.
    if (const char* const file = std::getenv("SDL_DISKAUDIOFILE")) AddOutput(reach, file);
    return reach;
}

Reach ReachOfPage(const FilmSourceArguments& film, const std::string& page) {
    Reach reach = ReachOf(film, page);
    if (!page.empty()) reach.writes.push_back(FolderOf(page));
    return reach;
}

Reach ReachOf(const FilmSourceArguments& film, const std::string& output, const std::string& work) {
    Reach reach;
    reach.reads.push_back(film.film);
    const NamedMedia media = MediaNamedIn(film.film, MakeMediaTerms(film));
    for (const std::string& url : media.urls) AddInput(reach, url);
    for (const std::string& folder : media.folders) reach.reads.push_back(folder);
    AddOutput(reach, output);
    if (work.empty()) return reach;
    // Made here, where no wall is in the way yet; what is wrong with it is told by those who use it.
    std::error_code failed;
    fs::create_directories(work, failed);
    reach.writes.push_back(work);
    return reach;
}

} // namespace aveffect
