#include "timeline/playout/film_pictures.h"

#include <algorithm>

#include "host/media/source.h"
#include "timeline/playout/picture_source.h"

namespace aveffect {

namespace {

bool IsSeen(const FilmItem& item) {
    const bool sound = item.kind == FilmItem::Kind::Track && item.carries == FilmItem::Carries::Sound;
    return item.enabled && !sound;
}

const FilmItem* FirstSeen(const FilmItem& item) {
    if (!IsSeen(item)) return nullptr;
    if (item.kind == FilmItem::Kind::Clip) return item.media.kind == FilmMedia::Kind::None ? nullptr : &item;
    for (const FilmItem& child : item.children)
        if (const FilmItem* const found = FirstSeen(child)) return found;
    return nullptr;
}

} // namespace

FilmLook LookAt(const Film& film, IntakeTerms& terms, const std::atomic<bool>& cancel) {
    FilmLook look;
    const FilmItem* const clip = FirstSeen(film.stack);
    if (!clip) return look;
    if (clip->media.kind == FilmMedia::Kind::Numbered) {
        look.rate = clip->media.numbered.rate;
        look.source = clip->media.numbered.File(clip->media.numbered.first);
    } else {
        const Source source(ParseSourceUrl(clip->media.url), Source::Others::None, 1, cancel);
        look.source = source.Path();
        look.still = source.PictureCount() == 1 || source.Format().duration == AV_NOPTS_VALUE;
        if (!look.still) look.rate = source.FrameRate();
    }
    look.picture = OpenPictures(clip->media, {look.rate, &terms, 1, cancel})->At(clip->start);
    return look;
}

} // namespace aveffect
