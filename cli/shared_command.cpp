#include "cli/shared_command.h"

#include <filesystem>
#include <system_error>

#include "cli/arguments.h"
#include "cli/command_reach.h"
#include "cli/film_report.h"

namespace aveffect {

namespace {

namespace files = std::filesystem;

/// Takes the commands that can be shared out.
struct Taker {
    SharedCommand operator()(const RenderCommand& command) const {
        ApplySeed(command.media.run);
        return MakeRenderOptions(command);
    }
    SharedCommand operator()(const JoinCommand& command) const { return MakeJoinOptions(command); }
    SharedCommand operator()(const TimelineCommand& command) const {
        const auto* const render = std::get_if<FilmRenderCommand>(&command);
        if (!render) Refuse();
        ApplySeed(render->film.run);
        return *render;
    }
    template <typename Other>
    SharedCommand operator()(const Other&) const {
        return Refuse();
    }

private:
    [[noreturn]] static SharedCommand Refuse() {
        throw Error(ErrorKind::Usage, "render, join and timeline render can be shared out, no other command");
    }
};

struct ReachFinder {
    Reach operator()(const std::monostate&) const { return {}; }
    Reach operator()(const FilmRenderCommand& command) const {
        return ReachOf(command.source, command.output);
    }
    template <typename Options>
    Reach operator()(const Options& options) const {
        return ReachOf(options);
    }
};

struct JobMaker {
    const JobTools& tools;

    std::unique_ptr<ChunkedJob> operator()(const std::monostate&) const {
        throw Error(ErrorKind::Usage, "there is no command to share out");
    }
    std::unique_ptr<ChunkedJob> operator()(const RenderOptions& options) const {
        return MakeChunkedRender(options, tools);
    }
    std::unique_ptr<ChunkedJob> operator()(const JoinOptions& options) const {
        return MakeChunkedJoin(options, tools);
    }
    std::unique_ptr<ChunkedJob> operator()(const FilmRenderCommand& command) const {
        return MakeChunkedFilm(command.source.film,
                               FaultlessFilm(command.source, tools.observer, tools.cancel),
                               MakeFilmRenderOptions(command), tools);
    }
};

} // namespace

SharedCommand ParseShared(const std::vector<std::string>& words) {
    std::vector<const char*> arguments = {"aveffect"};
    for (const std::string& word : words) arguments.push_back(word.c_str());
    return std::visit(Taker(), ParseCommandLine(static_cast<int>(arguments.size()), arguments.data()));
}

Reach ReachOfJoin(const SharedCommand& command, const std::string& folder) {
    Reach reach = std::visit(ReachFinder(), command);
    reach.writes.push_back(folder);
    return reach;
}

Reach ReachOfPart(const SharedCommand& command, const std::string& folder) {
    Reach reach = ReachOfJoin(command, folder);
    reach.writes = {folder};
    return reach;
}

std::unique_ptr<ChunkedJob> MakeJob(const SharedCommand& command, const JobTools& tools) {
    return std::visit(JobMaker{tools}, command);
}

void RequireRelative(const ChunkedJob& job) {
    for (const std::string& name : job.Media())
        if (name.starts_with('/'))
            throw Error(ErrorKind::Usage,
                        name + " lies outside of --media-root, where other machines don't find it");
}

void EnterRoot(const std::string& root) {
    if (root.empty()) return;
    std::error_code wrong;
    files::current_path(root, wrong);
    if (wrong)
        throw Error(ErrorKind::Usage, "--media-root takes a directory that exists, not '" + root + "'");
}

std::vector<std::string> WithoutRoot(std::vector<std::string> words) {
    const std::string root = files::current_path().string() + "/";
    for (std::string& word : words)
        for (size_t at = 0; (at = word.find(root, at)) != std::string::npos;) word.erase(at, root.size());
    return words;
}

std::string MakeFolder(const std::string& name) {
    std::error_code wrong;
    files::create_directories(name, wrong);
    if (wrong) throw Error(ErrorKind::Output, "the directory " + name + " can't be made: " + wrong.message());
    return files::absolute(name).string();
}

} // namespace aveffect
