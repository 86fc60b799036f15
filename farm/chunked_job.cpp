#include "farm/chunked_job.h"

#include <algorithm>
#include <set>
#include <utility>

#include "farm/clip_cut.h"
#include "host/media/source_request.h"

namespace aveffect {

namespace {

class ChunkedRender : public ChunkedJob {
public:
    ChunkedRender(RenderOptions options, const JobTools& tools)
        : m_options(std::move(options))
        , m_tools(tools) {}

    OutputOptions& Output() override { return m_options; }

    std::vector<std::string> Media() const override {
        std::vector<std::string> names = {m_options.input};
        if (!m_options.stereo.right.empty()) names.push_back(m_options.stereo.right);
        for (const auto* effects : {&m_options.effects, &m_options.audioEffects})
            for (const EffectSpec& effect : *effects)
                std::ranges::move(FilesOf(effect), std::back_inserter(names));
        return names;
    }

    void Cut(FarmPlan& plan, const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) override {
        CutClip(plan, m_options, picturesAChunk, m_tools);
    }

    RenderResult Draw(const FarmPlan& plan, const PlannedChunk& chunk) override {
        RenderOptions options = m_options;
        options.share = {chunk.begin,     chunk.end,      chunk.fromMs,      chunk.toMs,
                         plan.wholeStart, plan.wholeToMs, plan.wholeLengthMs};
        return Render(m_tools.plugin, options, m_tools.observer, m_tools.cancel);
    }

    RenderResult DrawBeside() override {
        RenderOptions options = m_options;
        options.besidePictures = true;
        return Render(m_tools.plugin, options, m_tools.observer, m_tools.cancel);
    }

private:
    RenderOptions m_options;
    const JobTools& m_tools;
};

/// Chunks of a film whose pictures are counted at a constant rate.
void CutFilmOf(const FilmShape& shape, FarmPlan& plan,
               const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) {
    plan.rate = shape.rate;
    const int64_t most = picturesAChunk(shape.pictures, shape.rate);
    for (int64_t begin = 0; begin < shape.pictures; begin += most)
        plan.chunks.push_back({begin, std::min(begin + most, shape.pictures)});
}

class ChunkedJoin : public ChunkedJob {
public:
    ChunkedJoin(JoinOptions options, const JobTools& tools)
        : m_options(std::move(options))
        , m_tools(tools) {}

    OutputOptions& Output() override { return m_options.film; }

    std::vector<std::string> Media() const override {
        std::vector<std::string> names;
        for (const JoinClip& clip : m_options.clips) names.push_back(clip.url);
        if (m_options.music) names.push_back(m_options.music->url);
        return names;
    }

    void Cut(FarmPlan& plan, const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) override {
        const FilmShape shape = ShapeOfJoin(m_options, m_tools.observer, m_tools.cancel);
        CutFilmOf(shape, plan, picturesAChunk);
        plan.clipEnds = shape.ends;
    }

    RenderResult Draw(const FarmPlan& plan, const PlannedChunk& chunk) override {
        JoinOptions options = m_options;
        for (size_t index = 0; index < std::min(options.clips.size(), plan.clipEnds.size()); ++index)
            options.clips[index].end = plan.clipEnds[index];
        options.film.share = {chunk.begin, chunk.end};
        return RenderJoin(m_tools.plugin, options, m_tools.observer, m_tools.cancel);
    }

    RenderResult DrawBeside() override {
        JoinOptions options = m_options;
        options.film.besidePictures = true;
        return RenderJoin(m_tools.plugin, options, m_tools.observer, m_tools.cancel);
    }

private:
    JoinOptions m_options;
    const JobTools& m_tools;
};

class ChunkedFilm : public ChunkedJob {
public:
    ChunkedFilm(std::string file, Film film, FilmRenderOptions options, const JobTools& tools)
        : m_file(std::move(file))
        , m_film(std::move(film))
        , m_options(std::move(options))
        , m_tools(tools) {}

    OutputOptions& Output() override { return m_options; }

    std::vector<std::string> Media() const override {
        std::set<std::string> names = MediaOf(m_film.stack);
        names.insert(m_file);
        return {names.begin(), names.end()};
    }

    void Cut(FarmPlan& plan, const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) override {
        const FilmShape shape =
            ShapeOfFilm(m_tools.plugin, m_film, m_options, m_tools.observer, m_tools.cancel);
        CutFilmOf(shape, plan, picturesAChunk);
    }

    RenderResult Draw(const FarmPlan&, const PlannedChunk& chunk) override {
        FilmRenderOptions options = m_options;
        options.share = {chunk.begin, chunk.end};
        return RenderFilm(m_tools.plugin, m_film, options, m_tools.observer, m_tools.cancel);
    }

    RenderResult DrawBeside() override {
        FilmRenderOptions options = m_options;
        options.besidePictures = true;
        return RenderFilm(m_tools.plugin, m_film, options, m_tools.observer, m_tools.cancel);
    }

private:
    std::string m_file;
    Film m_film;
    FilmRenderOptions m_options;
    const JobTools& m_tools;
};

} // namespace

std::unique_ptr<ChunkedJob> MakeChunkedRender(RenderOptions options, const JobTools& tools) {
    return std::make_unique<ChunkedRender>(std::move(options), tools);
}

std::unique_ptr<ChunkedJob> MakeChunkedJoin(JoinOptions options, const JobTools& tools) {
    return std::make_unique<ChunkedJoin>(std::move(options), tools);
}

std::unique_ptr<ChunkedJob> MakeChunkedFilm(std::string file, Film film, FilmRenderOptions options,
                                            const JobTools& tools) {
    return std::make_unique<ChunkedFilm>(std::move(file), std::move(film), std::move(options), tools);
}

} // namespace aveffect
