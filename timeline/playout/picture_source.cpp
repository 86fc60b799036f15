#include "timeline/playout/picture_source.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <optional>
#include <utility>

#include "host/media/clip_player.h"
#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

AVFramePtr Clone(const AVFrame& picture) {
    AVFramePtr clone(av_frame_clone(&picture));
    if (!clone) throw NoMemory("no memory for a picture");
    return clone;
}

/// A clip or a still picture.
class FilePictures : public PictureSource {
public:
    FilePictures(const SourceRequest& request, const SourceTerms& terms)
        : m_player(request, terms.rate, terms.terms, terms.threads, terms.cancel)
        , m_rate(m_player.CountAtOwnRate()) {}

    AVFramePtr At(const FilmTime& time) override {
        const int64_t tick = std::max<int64_t>(0, time.Floor(m_rate));
        return tick < m_tick ? Backwards(tick) : Forwards(tick);
    }
    DamageReport Damage() const override { return m_player.Damage(); }

private:
    AVFramePtr Forwards(int64_t tick) {
        constexpr int64_t kFar = 4; // seconds, over which seeking is quicker than decoding
        const bool far = FilmTime(tick - m_tick, m_rate) > FilmTime(kFar, {1, 1});
        if (far || !m_back.empty()) m_player.GoTo(tick);
        m_back.clear();
        m_tick = tick;
        return m_player.At(tick);
    }

    // Some pictures are decoded in a row and shown from the last to the first.
    AVFramePtr Backwards(int64_t tick) {
        constexpr int64_t kRow = 12;
        if (m_back.empty() || tick < m_begin) {
            m_back.clear();
            m_begin = std::max<int64_t>(0, tick - kRow + 1);
            m_player.GoTo(m_begin);
            for (int64_t at = m_begin; at <= tick; ++at) m_back.push_back(m_player.At(at));
        }
        m_tick = tick;
        return Clone(*m_back[static_cast<size_t>(tick - m_begin)]);
    }

    ClipPlayer m_player;
    AVRational m_rate;
    int64_t m_tick = 0;            ///< shown last
    std::deque<AVFramePtr> m_back; ///< from m_begin on, where the clip runs backwards
    int64_t m_begin = 0;
};

/// Pictures in files of their own.
class NumberedPictures : public PictureSource {
public:
    NumberedPictures(const FilmMedia& media, const SourceTerms& terms)
        : m_numbered(media.numbered)
        , m_terms(terms) {
        if (media.available) m_last = std::max<int64_t>(0, Place(media.available->duration, true));
    }

    AVFramePtr At(const FilmTime& time) override {
        const int64_t place = std::clamp<int64_t>(Place(time, false), 0, m_last.value_or(INT64_MAX));
        if (place != m_place) Load(place);
        return m_shown ? Clone(*m_shown) : nullptr;
    }
    DamageReport Damage() const override { return m_damage; }

private:
    // Numbers run at the rate, whether every one of them has a file or not.
    int64_t Place(const FilmTime& time, bool last) const {
        const int64_t number = last ? time.Ceil(m_numbered.rate) - 1 : time.Floor(m_numbered.rate);
        return number >= 0 ? number / m_numbered.step : -1;
    }

    std::string FileAt(int64_t place) const {
        return m_numbered.File(m_numbered.first + place * m_numbered.step);
    }

    void Load(int64_t place) {
        int64_t there = place;
        const bool holds = m_numbered.missing == NumberedMedia::Missing::Hold;
        while (holds && there > 0 && !std::filesystem::exists(FileAt(there))) --there;
        const std::string file = FileAt(there);
        if (m_numbered.missing == NumberedMedia::Missing::Black && !std::filesystem::exists(file)) {
            m_shown.reset();
        } else {
            ClipPlayer player({file}, m_terms.rate, m_terms.terms, 1, m_terms.cancel);
            m_shown = player.At(0);
            m_damage.Add(player.Damage());
        }
        m_place = place;
    }

    NumberedMedia m_numbered;
    SourceTerms m_terms;
    std::optional<int64_t> m_last; ///< place of the last picture
    int64_t m_place = -1;          ///< that is shown
    AVFramePtr m_shown;
    DamageReport m_damage;
};

} // namespace

std::unique_ptr<PictureSource> OpenPictures(const FilmMedia& media, const SourceTerms& terms) {
    switch (media.kind) {
    case FilmMedia::Kind::File:
        return std::make_unique<FilePictures>(ParseSourceUrl(media.url), terms);
    case FilmMedia::Kind::Numbered:
        return std::make_unique<NumberedPictures>(media, terms);
    default:
        return nullptr;
    }
}

} // namespace aveffect
