// Writes the manual: aveffect_manual SOURCE FOLDER CMARK
//
// SOURCE is the project's folder, CMARK the program that turns Markdown into HTML. FOLDER is replaced when
// all of the manual is there.
#include <atomic>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "cli/catalogue_text.h"
#include "manual/darkroom.h"
#include "manual/pages.h"
#include "manual/program.h"

namespace {

using namespace aveffect::manual;
namespace fs = std::filesystem;
using Jobs = std::vector<std::function<void()>>;

void Write(const fs::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary);
    if (!(stream << text).flush()) throw std::runtime_error("can't write '" + file.string() + "'");
}

std::string Read(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream) throw std::runtime_error("can't read '" + file.string() + "'");
    return text.str();
}

/// Does the jobs on every processor. What one of them throws stops the others and is thrown.
void DoAll(const Jobs& jobs) {
    std::atomic<size_t> next = 0;
    std::exception_ptr failure;
    std::mutex mutex;
    const auto work = [&] {
        for (size_t i; (i = next++) < jobs.size();) try {
                jobs[i]();
            } catch (...) {
                const std::scoped_lock lock(mutex);
                failure = std::current_exception();
                next = jobs.size();
            }
    };
    {
        std::vector<std::jthread> workers;
        for (unsigned i = 1; i < std::thread::hardware_concurrency(); ++i) workers.emplace_back(work);
        work();
    }
    if (failure) std::rethrow_exception(failure);
}

/// Animations come first: they take longest.
Jobs JobsFor(const Darkroom& darkroom, std::vector<EffectPage>& pages) {
    Jobs moving, still;
    for (EffectPage& page : pages) {
        const auto add = [&](Shot& shot) {
            (shot.moves ? moving : still).push_back([&] { darkroom.Make(page.Effect(), shot); });
        };
        EffectShots& shots = page.shots;
        if (shots.moving) add(*shots.moving);
        if (shots.main) add(*shots.main);
        for (Shot& shot : shots.presets) add(shot);
        for (PropertyShots& property : shots.properties)
            for (Shot& shot : property.shots) add(shot);
    }
    moving.insert(moving.end(), still.begin(), still.end());
    return moving;
}

/// What an effect is shown by first has to be there.
void RequireFaces(const std::vector<EffectPage>& pages) {
    for (const EffectPage& page : pages)
        for (const std::optional<Shot>* shot : {&page.shots.main, &page.shots.moving})
            if (*shot && !(*shot)->failure.empty())
                throw std::runtime_error((*shot)->setting + ": " + (*shot)->failure);
}

std::vector<EffectPage> MakePictures(const fs::path& pictures, const fs::path& work) {
    const Darkroom darkroom(pictures, work);
    std::vector<EffectPage> pages;
    for (EffectShots& shots : PlanShots()) pages.push_back({std::move(shots)});
    DoAll(JobsFor(darkroom, pages));
    RequireFaces(pages);
    for (EffectPage& page : pages)
        if (page.Effect().kind == AVBased::EffectKind::Audio)
            page.waves = darkroom.MakeWaves(aveffect::ExampleSetting(page.Effect()));
    return pages;
}

void WriteTexts(const fs::path& source, const fs::path& html, const fs::path& work,
                const std::string& cmark) {
    for (const TextPage& page : kTextPages) {
        const fs::path text = source / "docs" / (std::string(page.name) + ".md");
        RunProgram({cmark, "-e", "table", text.string()}, work / "body.html");
        Write(html / (std::string(page.name) + ".html"), PageOfText(page, Read(work / "body.html")));
    }
    for (const auto& file : fs::directory_iterator(source / "docs" / "pictures"))
        fs::copy(file.path(), html / "pictures");
    for (const char* file : {"style.css", "script.js", "icon.svg"}) fs::copy(source / "manual" / file, html);
}

void WriteManual(const fs::path& source, const fs::path& folder, const std::string& cmark) {
    const fs::path html = folder.string() + ".new", work = folder.string() + ".work";
    for (const fs::path& old : {html, work}) fs::remove_all(old);
    for (const fs::path& made : {html / "pictures", html / "effects", work}) fs::create_directories(made);
    const std::vector<EffectPage> pages = MakePictures(html / "pictures", work);
    Write(html / "index.html", IndexPage(pages));
    for (size_t i = 0; i < pages.size(); ++i) Write(html / pages[i].File(), PageOf(pages, i));
    WriteTexts(source, html, work, cmark);
    fs::remove_all(work);
    fs::remove_all(folder);
    fs::rename(html, folder);
}

} // namespace

int main(int count, char** arguments) try {
    constexpr int kArguments = 3;
    if (count != kArguments + 1) throw std::runtime_error("usage: aveffect_manual SOURCE FOLDER CMARK");
    WriteManual(arguments[1], arguments[2], arguments[3]);
    return 0;
} catch (const std::exception& failure) {
    std::cerr << "aveffect_manual: " << failure.what() << "\n";
    return 1;
}
