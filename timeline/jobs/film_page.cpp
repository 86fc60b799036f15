#include "timeline/jobs/film_page.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include <unistd.h>

extern "C" {
#include <libavutil/base64.h>
}

#include "host/jobs/render.h"
#include "host/output/output_file.h"
#include "host/settings/catalogue_lookup.h"
#include "host/support/html_text.h"
#include "timeline/jobs/film_words.h"
#include "timeline/jobs/text_file.h"
#include "timeline/otio/document.h"

namespace aveffect {

namespace {

using Kind = FilmItem::Kind;

constexpr char kStyle[] = R"(:root{color-scheme:light dark}
body{font:14px/1.45 system-ui,sans-serif;margin:2rem auto;max-width:76rem;padding:0 1rem}
h1{font-size:1.5rem}h2{font-size:1.1rem;margin:1.6rem 0 .4rem}
.strip{display:flex;height:2rem;border-radius:4px;overflow:hidden;background:#8883}
.strip a{min-width:1px;box-sizing:border-box;border-right:1px solid Canvas;color:inherit;font-size:.75rem;
overflow:hidden;white-space:nowrap;padding:.4rem .3rem;text-decoration:none}
.clip{background:#4a90d9aa}.sound{background:#58a55caa}.stack,.track{background:#b07cc6aa}.off{opacity:.4}
ol{display:flex;flex-wrap:wrap;gap:.8rem;list-style:none;padding:0}
li{width:14rem;border:1px solid #8886;border-radius:6px;padding:.6rem;overflow-wrap:anywhere}
li.wide{width:100%}li.cut{width:8rem;border-style:dashed}
img{display:block;width:100%;border-radius:3px;margin-bottom:.4rem;background:#000}
.time{font-variant-numeric:tabular-nums}small,.place{opacity:.75}.effect{display:block}
)";

/// A place as the name of an anchor.
std::string Anchor(const std::string& place) { return HtmlEscaped(place.substr(0, place.find(' '))); }

std::string NameOf(const FilmItem& item) {
    if (!item.name.empty()) return item.name;
    switch (item.kind) {
    case Kind::Clip:
        return "clip";
    case Kind::Gap:
        return "nothing";
    case Kind::Track:
        return "track";
    case Kind::Stack:
        return "stack";
    }
    return "";
}

std::string Base64(const std::string& bytes) {
    std::vector<char> text(AV_BASE64_SIZE(bytes.size()));
    if (bytes.empty() ||
        !av_base64_encode(text.data(), static_cast<int>(text.size()),
                          reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<int>(bytes.size())))
        return "";
    return text.data();
}

class PageWriter {
public:
    explicit PageWriter(const Thumbnailer& thumbnail)
        : m_thumbnail(thumbnail) {}

    std::string Write(const Film& film) {
        const std::string title = HtmlEscaped(film.name.empty() ? "Film" : film.name);
        m_page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                 "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
                 title + "</title>\n<style>\n" + kStyle + "</style>\n</head>\n<body>\n<h1>" + title +
                 "</h1>\n<p>" + HtmlEscaped(SummaryText(film)) + "</p>\n";
        WriteEffects(film.stack);
        // The topmost layer comes first, as editors show it.
        for (size_t index = film.stack.children.size(); index-- > 0;)
            WriteTrack(film.stack.children[index], film.stack.duration);
        return m_page + "</body>\n</html>\n";
    }

private:
    static std::string ClassOf(const FilmItem& item, bool sound) {
        std::string name = item.kind == Kind::Gap     ? "gap"
                           : item.kind == Kind::Track ? "track"
                           : item.kind == Kind::Stack ? "stack"
                           : sound                    ? "sound"
                                                      : "clip";
        return item.enabled ? name : name + " off";
    }

    void WriteStrip(const FilmItem& track, const FilmTime& whole) {
        const double seconds = whole.Seconds();
        if (seconds <= 0) return;
        const bool sound = track.carries == FilmItem::Carries::Sound;
        m_page += "<div class=\"strip\">";
        for (const FilmItem& item : track.children) {
            std::array<char, 32> width{};
            std::snprintf(width.data(), width.size(), "%.4f", 100 * item.duration.Seconds() / seconds);
            m_page += "<a class=\"" + ClassOf(item, sound) + "\" href=\"#" + Anchor(item.place) +
                      "\" title=\"" + HtmlEscaped(NameOf(item)) + "\" style=\"width:" + width.data() +
                      "%\">" + (item.kind == Kind::Gap ? "" : HtmlEscaped(NameOf(item))) + "</a>";
        }
        m_page += "</div>\n";
    }

    void WriteTrack(const FilmItem& track, const FilmTime& whole) {
        m_page += "<section>\n<h2 id=\"" + Anchor(track.place) + "\">" + HtmlEscaped(NameOf(track)) +
                  " <small class=\"place\">" + Anchor(track.place) +
                  (track.carries == FilmItem::Carries::Sound ? ", sound" : "") +
                  (track.enabled ? "" : ", switched off") + "</small></h2>\n";
        WriteEffects(track);
        if (track.kind != Kind::Track) {
            m_page += "<ol>\n";
            WriteItem(track, {}, whole);
            m_page += "</ol>\n</section>\n";
            return;
        }
        WriteStrip(track, whole);
        WriteItems(track, whole);
        m_page += "</section>\n";
    }

    void WriteItems(const FilmItem& parent, const FilmTime& whole) {
        m_page += "<ol>\n";
        FilmTime moment;
        size_t next = 0;
        for (size_t index = 0; index <= parent.children.size(); ++index) {
            for (; next < parent.transitions.size() && parent.transitions[next].cut == index; ++next)
                m_page += "<li class=\"cut\">" + HtmlEscaped(TransitionText(parent.transitions[next])) +
                          " <small class=\"place\">" + HtmlEscaped(LastStep(parent.transitions[next].place)) +
                          "</small></li>\n";
            if (index == parent.children.size()) break;
            WriteItem(parent.children[index], moment, whole);
            if (parent.kind == Kind::Track) moment = moment + parent.children[index].duration;
        }
        m_page += "</ol>\n";
    }

    void WriteItem(const FilmItem& item, const FilmTime& begin, const FilmTime& whole) {
        const bool holds = !item.children.empty();
        m_page += std::string("<li id=\"") + Anchor(item.place) + "\"" +
                  (holds          ? " class=\"wide\""
                   : item.enabled ? ""
                                  : " class=\"off\"") +
                  ">";
        if (item.kind == Kind::Clip) {
            const std::string picture = Base64(m_thumbnail(item));
            if (!picture.empty()) m_page += "<img alt=\"\" src=\"data:image/jpeg;base64," + picture + "\">";
        }
        m_page += "<b>" + HtmlEscaped(NameOf(item)) + "</b> <small class=\"place\">" +
                  HtmlEscaped(LastStep(item.place)) + "</small><br><span class=\"time\">" + ClockText(begin) +
                  " + " + ClockText(item.duration) + "</span>";
        if (item.kind == Kind::Clip)
            m_page += "<br><small>" + HtmlEscaped(MediaText(item.media)) + "</small>";
        WriteEffects(item);
        if (item.kind == Kind::Track) WriteStrip(item, item.duration);
        if (holds) WriteItems(item, whole);
        m_page += "</li>\n";
    }

    void WriteEffects(const FilmItem& item) {
        for (const FilmEffect& effect : item.effects)
            m_page += "<span class=\"effect\">" + HtmlEscaped(EffectText(effect.spec)) +
                      " <small class=\"place\">" + HtmlEscaped(LastStep(effect.place)) + "</small></span>\n";
    }

    const Thumbnailer& m_thumbnail;
    std::string m_page;
};

/// Whether it looks the same at any time.
bool StandsStill(const EffectSpec& effect) {
    const auto moves = [](const PropertySetting& setting) {
        return setting.keyframes || setting.name == "@from" || setting.name == "@to" ||
               setting.name == "@fade-in" || setting.name == "@fade-out";
    };
    for (const auto* list : {&effect.properties, &effect.reach})
        for (const PropertySetting& setting : *list)
            if (moves(setting)) return false;
    return (FindNamed(effect.name)->traits & (AVBased::kFollowsTime | AVBased::kKeepsState)) == 0;
}

} // namespace

std::string FilmPage(const Film& film, const Thumbnailer& thumbnail) {
    return PageWriter(thumbnail).Write(film);
}

void WriteFilmPage(const Plugin& plugin, const Film& film, const FilmPageOptions& options,
                   const RenderObserver& observer, const std::atomic<bool>& cancel) {
    constexpr size_t kMostPictures = 1000; // what browsers show without trouble
    OutputFile::Check(options.output, options.input, options.overwrite);
    FilmThumbnails thumbnails(plugin, options.output, kMostPictures, observer, cancel);
    const std::string page = FilmPage(film, [&](const FilmItem& clip) { return thumbnails.Of(clip); });
    WriteTextFile(options.output, page, options.overwrite, cancel);
}

FilmThumbnails::FilmThumbnails(const Plugin& plugin, const std::string& page, size_t most,
                               const RenderObserver& observer, const std::atomic<bool>& cancel)
    : m_plugin(plugin)
    , m_most(most)
    , m_reporter(observer)
    , m_cancel(cancel)
    , m_directory((std::filesystem::path(page).parent_path() / ".aveffect.XXXXXX").string())
    , m_picture(m_directory + "/picture.jpg") {
    if (!mkdtemp(m_directory.data()))
        throw Error(ErrorKind::Output, "can't make a directory beside " + page + ": " + std::strerror(errno));
    m_picture.replace(0, m_directory.size(), m_directory);
}

// Even without memory.
FilmThumbnails::~FilmThumbnails() {
    unlink(m_picture.c_str());
    rmdir(m_directory.c_str());
}

std::string FilmThumbnails::Of(const FilmItem& clip) {
    if (m_most == 0 || clip.media.kind == FilmMedia::Kind::None || !clip.enabled) return "";
    const int64_t milliseconds = std::max<int64_t>(0, clip.start.Milliseconds());
    const bool file = clip.media.kind == FilmMedia::Kind::File;
    const NumberedMedia& numbered = clip.media.numbered;
    const std::string url =
        file
            ? clip.media.url
            : numbered.File(numbered.first + clip.start.Floor(numbered.rate) / numbered.step * numbered.step);
    // Stills have no later time than their first.
    for (const int64_t moment : {file ? milliseconds : 0, int64_t{0}}) {
        try {
            std::string bytes = Draw(clip, url, moment);
            --m_most;
            return bytes;
        } catch (const Error& wrong) {
            // A still picture ends before the moment that a film shows of it.
            if (wrong.Kind() == ErrorKind::Usage && moment > 0) continue;
            if (wrong.Kind() != ErrorKind::Input && wrong.Kind() != ErrorKind::Usage) throw;
            m_reporter.Warn("no picture of " + clip.place + ": " + wrong.what());
            break;
        }
    }
    return "";
}

std::string FilmThumbnails::Draw(const FilmItem& clip, const std::string& url, int64_t milliseconds) {
    constexpr double kWidth = 240;
    FrameOptions options;
    options.input = url;
    options.output = m_picture;
    options.overwrite = true;
    options.strip = true;
    options.atMs = milliseconds;
    options.framing.width = Extent{kWidth};
    for (const FilmEffect& effect : clip.effects)
        if (effect.medium == Medium::Video && StandsStill(effect.spec))
            options.effects.push_back(effect.spec);
    const RenderResult result = RenderFrame(m_plugin, options, {}, m_cancel);
    if (result.inputDamage)
        m_reporter.Warn("the picture of " + clip.place +
                        " shows what could be decoded: " + *result.inputDamage);
    return DocumentBytes(options.output);
}

} // namespace aveffect
