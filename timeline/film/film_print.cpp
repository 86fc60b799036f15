#include "timeline/film/film_print.h"

#include <sys/stat.h>

#include <algorithm>
#include <set>

namespace aveffect {

namespace {

/// Items as text, each part ended so that none runs into the next one.
class Printer {
public:
    void Item(const FilmItem& item, const FilmRange& part) {
        if (!item.enabled || item.kind == FilmItem::Kind::Gap || IsSound(item)) return;
        const bool effects = std::ranges::any_of(
            item.effects, [](const FilmEffect& effect) { return effect.medium == Medium::Video; });
        Add("item", static_cast<int>(item.kind));
        Add("speed", std::to_string(item.speed.num) + "/" + std::to_string(item.speed.den));
        if (effects || item.kind == FilmItem::Kind::Clip) Add("from", part.start.Text());
        if (effects || item.duration < part.End()) Add("lasts", (item.duration - part.start).Text());
        if (item.kind == FilmItem::Kind::Clip) Add("start", item.start.Text());
        for (const FilmEffect& effect : item.effects)
            if (effect.medium == Medium::Video) Effect(effect.spec);
        if (item.kind == FilmItem::Kind::Clip) Media(item.media);
        if (item.kind == FilmItem::Kind::Stack)
            for (const FilmItem& child : item.children) Child(item, child, part, {});
        if (item.kind == FilmItem::Kind::Track) Track(item, part);
        Add("end", "");
    }

    std::string Take() { return std::move(m_text); }

private:
    static bool IsSound(const FilmItem& item) {
        return item.kind == FilmItem::Kind::Track && item.carries == FilmItem::Carries::Sound;
    }

    /// What passes of an item's own time in a part of it.
    static FilmRange Own(const FilmItem& item, const FilmRange& part) {
        FilmTime from = item.OwnTime(part.start), to = item.OwnTime(part.End());
        if (to < from) std::swap(from, to);
        return {from, to - from};
    }

    // A child is played at its parent's speed, which its parent says; its own part is as its parent counts.
    void Child(const FilmItem& parent, const FilmItem& child, const FilmRange& part, const FilmTime& begin) {
        const FilmRange own = Own(parent, part);
        Item(child, {own.start - begin, own.duration});
    }

    void Track(const FilmItem& track, const FilmRange& part) {
        const FilmRange own = Own(track, part);
        std::vector<FilmTime> begins = {{}};
        for (const FilmItem& child : track.children) begins.push_back(begins.back() + child.duration);
        const bool backwards = track.speed.num < 0; // which shows the end of its part, and not the beginning
        const auto meets = [&](const FilmTime& from, const FilmTime& to) {
            return backwards ? from <= own.End() && own.start <= to : from < own.End() && own.start < to;
        };
        std::set<size_t> seen;
        for (size_t index = 0; index < track.children.size(); ++index)
            if (meets(begins[index], begins[index + 1])) seen.insert(index);
        for (const FilmItem::Transition& transition : track.transitions) {
            const FilmTime cut = begins[transition.cut];
            if (!meets(cut - transition.before, cut + transition.after)) continue;
            Add("across", (cut - own.start).Text());
            Add("before", transition.before.Text());
            Add("after", transition.after.Text());
            Effect(transition.effect);
            if (transition.cut > 0) seen.insert(transition.cut - 1);
            if (transition.cut < track.children.size()) seen.insert(transition.cut);
        }
        for (const size_t index : seen) Child(track, track.children[index], part, begins[index]);
    }

    void Effect(const EffectSpec& effect) {
        Add("effect", effect.name);
        for (const auto* settings : {&effect.properties, &effect.reach})
            for (const PropertySetting& setting : *settings) {
                Add("setting", setting.name);
                if (setting.keyframes)
                    Add("moves", setting.keyframes->text);
                else if (setting.percentage)
                    Add("percent", std::to_string(*setting.percentage));
                else
                    File(setting.value);
            }
    }

    void Media(const FilmMedia& media) {
        if (media.kind == FilmMedia::Kind::File) File(media.url);
        if (media.kind != FilmMedia::Kind::Numbered) return;
        const NumberedMedia& numbered = media.numbered;
        Add("numbered", numbered.before + "*" + numbered.after);
        for (const int64_t number :
             {numbered.first, numbered.step, int64_t{numbered.digits}, int64_t{numbered.rate.num},
              int64_t{numbered.rate.den}, static_cast<int64_t>(numbered.missing)})
            Add("number", std::to_string(number));
        if (media.available) Add("available", media.available->duration.Text());
        for (int64_t place = 0; place < CountOf(media); ++place)
            File(numbered.File(numbered.first + place * numbered.step));
    }

    static int64_t CountOf(const FilmMedia& media) {
        constexpr int64_t kMost = 100'000;
        if (!media.available) return 1;
        return std::min(kMost, media.available->duration.Ceil(media.numbered.rate) / media.numbered.step + 1);
    }

    // A value that names no file is one that names itself.
    void File(const std::string& url) {
        Add("value", url);
        const std::string path = url.substr(0, url.find('?'));
        struct stat is = {};
        if (stat(path.c_str(), &is) != 0 || !S_ISREG(is.st_mode)) return;
        Add("size", std::to_string(is.st_size));
        Add("changed", std::to_string(is.st_mtim.tv_sec) + "." + std::to_string(is.st_mtim.tv_nsec));
    }

    void Add(const char* word, const std::string& value) {
        m_text += word + (" " + std::to_string(value.size())) + " " + value + "\n";
    }
    void Add(const char* word, int value) { Add(word, std::to_string(value)); }

    std::string m_text;
};

/// Where something begins or ends in a film, as far as its tracks run at the film's own speed.
std::set<int64_t> EdgesOf(const Film& film, AVRational rate) {
    std::set<int64_t> edges;
    const auto runs = [](const FilmItem& item) { return av_cmp_q(item.speed, {1, 1}) == 0; };
    for (const FilmItem& track : film.stack.children) {
        if (!track.enabled || track.kind != FilmItem::Kind::Track || !runs(track) || !runs(film.stack) ||
            track.carries == FilmItem::Carries::Sound)
            continue;
        const auto add = [&](const FilmTime& own) {
            edges.insert((own - track.start - film.stack.start).Ceil(rate));
        };
        FilmTime begin;
        std::vector<FilmTime> begins = {begin};
        for (const FilmItem& child : track.children) begins.push_back(begin = begin + child.duration);
        std::set<size_t> crossed;
        for (const FilmItem::Transition& transition : track.transitions) {
            crossed.insert(transition.cut);
            add(begins[transition.cut] - transition.before);
            add(begins[transition.cut] + transition.after);
        }
        for (size_t index = 0; index < begins.size(); ++index)
            if (!crossed.contains(index)) add(begins[index]);
    }
    return edges;
}

} // namespace

std::string PrintPictures(const Film& film, const FilmRange& part) {
    Printer printer;
    printer.Item(film.stack, part);
    return printer.Take();
}

std::vector<PictureSpan> CutFilm(const Film& film, AVRational rate, int64_t most) {
    const int64_t pictures = PicturesOf(film, rate);
    std::set<int64_t> edges = EdgesOf(film, rate);
    edges.insert(pictures);
    std::vector<PictureSpan> spans;
    int64_t begin = 0;
    for (const int64_t edge : edges)
        while (begin < std::min(edge, pictures)) {
            const int64_t end = std::min({begin + most, edge, pictures});
            spans.push_back({begin, end});
            begin = end;
        }
    return spans;
}

} // namespace aveffect
