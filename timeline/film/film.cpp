#include "timeline/film/film.h"

#include <algorithm>
#include <cstdlib>

namespace aveffect {

std::string NumberedMedia::File(int64_t number) const {
    const std::string text = std::to_string(std::abs(number));
    const size_t wanted = static_cast<size_t>(std::max(0, digits));
    const std::string zeros(wanted - std::min(wanted, text.size()), '0');
    return before + (number < 0 ? "-" : "") + zeros + text + after;
}

std::string NumberedMedia::Pattern() const {
    const std::string width = digits > 0 ? "0" + std::to_string(digits) : "";
    return before + "%" + width + "d" + after;
}

namespace {

void AddClips(const FilmItem& item, std::vector<const FilmItem*>& clips) {
    if (!item.enabled) return;
    if (item.kind == FilmItem::Kind::Clip) clips.push_back(&item);
    for (const FilmItem& child : item.children) AddClips(child, clips);
}

void AddMedia(const FilmItem& item, std::set<std::string>& names) {
    if (!item.enabled) return;
    if (item.media.kind == FilmMedia::Kind::File) names.insert(item.media.url);
    if (item.media.kind == FilmMedia::Kind::Numbered) names.insert(item.media.numbered.Pattern());
    for (const FilmEffect& effect : item.effects)
        for (std::string& name : FilesOf(effect.spec)) names.insert(std::move(name));
    for (const FilmItem& child : item.children) AddMedia(child, names);
}

} // namespace

std::vector<const FilmItem*> ClipsOf(const FilmItem& item) {
    std::vector<const FilmItem*> clips;
    AddClips(item, clips);
    return clips;
}

std::set<std::string> MediaOf(const FilmItem& item) {
    std::set<std::string> names;
    AddMedia(item, names);
    return names;
}

int64_t PicturesOf(const Film& film, AVRational rate) {
    return std::max<int64_t>(1, film.stack.duration.Nearest(rate));
}

} // namespace aveffect
