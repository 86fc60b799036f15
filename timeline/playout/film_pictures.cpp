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

void AddSeen(const FilmItem& item, std::vector<const FilmItem*>& clips) {
    if (!IsSeen(item)) return;
    if (item.kind == FilmItem::Kind::Clip && item.media.kind != FilmMedia::Kind::None) clips.push_back(&item);
    for (const FilmItem& child : item.children) AddSeen(child, clips);
}

/// Whether a clip moves; its rate and codec then.
bool LearnRate(const FilmMedia& media, FilmLook& look, const std::atomic<bool>& cancel) {
    if (media.kind == FilmMedia::Kind::Numbered) {
        look.rate = media.numbered.rate;
        return true;
    }
    const Source source(ParseSourceUrl(media.url), Source::Others::None, 1, cancel);
    if (source.PictureCount() == 1 || source.Format().duration == AV_NOPTS_VALUE) return false;
    look.rate = source.FrameRate();
    look.codec = source.PictureDecoder().codec_id;
    return true;
}

} // namespace

FilmLook LookAt(const Film& film, IntakeTerms& terms, const std::atomic<bool>& cancel) {
    FilmLook look;
    std::vector<const FilmItem*> clips;
    AddSeen(film.stack, clips);
    for (const FilmItem* clip : clips) {
        const FilmMedia& media = clip->media;
        const bool moves = LearnRate(media, look, cancel);
        if (!look.picture) {
            const bool numbered = media.kind == FilmMedia::Kind::Numbered;
            look.source =
                numbered ? media.numbered.File(media.numbered.first) : ParseSourceUrl(media.url).path;
            look.still = !moves || numbered;
            look.picture = OpenPictures(media, {look.rate, &terms, 1, cancel})->At(clip->start);
        }
        if (moves) break;
    }
    return look;
}

} // namespace aveffect
