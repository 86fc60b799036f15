#include "timeline/jobs/film_check.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <utility>

#include <unistd.h>

#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/settings_at_time.h"

namespace aveffect {

namespace {

using Kind = FilmItem::Kind;

std::string Seconds(const FilmTime& time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3g s", time.Seconds());
    return text.data();
}

class FilmChecker {
public:
    FilmChecker(FilmCheck& found, MediaHeaders& headers, AVRational rate)
        : m_found(found)
        , m_headers(headers)
        , m_rate(rate) {}

    void Check(const FilmItem& item, FilmItem::Carries carries) {
        if (!item.enabled) return;
        if (item.kind == Kind::Track) carries = item.carries;
        for (const FilmEffect& effect : item.effects) CheckEffect(effect, item, carries);
        if (item.kind == Kind::Clip) CheckClip(item, carries);
        for (const FilmItem& child : item.children) Check(child, carries);
        for (const FilmItem::Transition& transition : item.transitions)
            CheckHandles(transition, item, carries);
    }

private:
    void Fault(const std::string& place, const std::string& message, ErrorKind kind) {
        m_found.faults.push_back({place, message, kind});
    }
    void Remark(const std::string& place, const std::string& text) {
        m_found.remarks.push_back(place + ": " + text);
    }

    /// Each file that can't be opened is a fault once.
    const MediaHeader* Header(const std::string& url, const std::string& place) {
        const MediaHeader& header = m_headers.Of(url);
        if (header.fault.empty()) return &header;
        if (m_refused.insert(url).second) Fault(place, header.fault, ErrorKind::Input);
        return nullptr;
    }

    void CheckEffect(const FilmEffect& effect, const FilmItem& item, FilmItem::Carries carries) {
        const AVBased::EffectInfo& info = *FindNamed(effect.spec.name);
        const bool sound = effect.medium == Medium::Audio;
        if (item.kind != Kind::Stack && sound != (carries == FilmItem::Carries::Sound))
            Remark(effect.place, std::string(info.shortName) + " works on " + (sound ? "sound" : "pictures") +
                                     " and changes nothing in a track of " + (sound ? "pictures" : "sound"));
        try {
            SettingsAtTime(effect.spec, {0, item.duration.Milliseconds(), m_rate.num, m_rate.den});
        } catch (const Error& wrong) {
            Fault(effect.place, wrong.what(), ErrorKind::Usage);
        }
        for (const PropertySetting& setting : effect.spec.reach)
            if (setting.name == reach::kMask) RequireIn(setting.value, true, effect.place);
        for (const PropertySetting& setting : effect.spec.properties) {
            const AVBased::PropertyInfo* const property = AVBased::FindProperty(info, setting.name);
            if (property && property->kind == AVBased::ValueKind::Path && !setting.value.empty())
                RequireIn(setting.value, !sound, effect.place);
        }
    }

    void RequireIn(const std::string& url, bool pictures, const std::string& place) {
        const MediaHeader* const header = Header(url, place);
        if (header && !(pictures ? header->pictures : header->sound))
            Fault(place, url + (pictures ? " has no pictures" : " has no sound"), ErrorKind::Input);
    }

    void CheckClip(const FilmItem& clip, FilmItem::Carries carries) {
        if (clip.media.kind == FilmMedia::Kind::Numbered) {
            if (carries == FilmItem::Carries::Sound)
                Fault(clip.place, "numbered pictures have no sound", ErrorKind::Input);
            else
                CheckNumbers(clip);
        }
        if (clip.media.kind != FilmMedia::Kind::File) return;
        const MediaHeader* const header = Header(clip.media.url, clip.place);
        if (!header) return;
        const bool sound = carries == FilmItem::Carries::Sound;
        if (!(sound ? header->sound : header->pictures))
            Fault(clip.place,
                  clip.media.url + (sound ? " has no sound, which a track of sound needs"
                                          : " has no pictures, which a track of pictures needs"),
                  ErrorKind::Input);
        else
            CheckRange(clip, carries);
    }

    /// How much of its own time an item has; absent: without an end, or nobody knows.
    std::optional<FilmTime> LengthOf(const FilmItem& item, FilmItem::Carries carries) {
        if (item.kind == Kind::Track || item.kind == Kind::Stack) {
            FilmTime length;
            for (const FilmItem& child : item.children)
                length =
                    item.kind == Kind::Track ? length + child.duration : std::max(length, child.duration);
            return length;
        }
        if (item.kind != Kind::Clip || item.media.kind == FilmMedia::Kind::None) return {};
        if (item.media.kind == FilmMedia::Kind::File) {
            const MediaHeader& header = m_headers.Of(item.media.url);
            if (!header.fault.empty() || header.still) return {};
            const auto& length = carries == FilmItem::Carries::Sound ? header.heard : header.seen;
            if (length) return length;
        }
        if (item.media.available) return item.media.available->duration;
        return {};
    }

    /// What containers tell of lengths is right to a picture.
    FilmTime Tolerance(const FilmItem& item) {
        constexpr AVRational kUsual{25, 1};
        const AVRational rate = item.kind == Kind::Clip && item.media.kind == FilmMedia::Kind::File
                                    ? m_headers.Of(item.media.url).rate
                                    : kUsual;
        return FilmTime(1, rate.num > 0 && rate.den > 0 ? rate : kUsual);
    }

    /// The first and the last moment of its own time that an item shows, with handles.
    static std::pair<FilmTime, FilmTime> Shown(const FilmItem& item, const FilmTime& before,
                                               const FilmTime& after) {
        const FilmTime first = item.OwnTime(FilmTime() - before), last = item.OwnTime(item.duration + after);
        return std::minmax(first, last);
    }

    void CheckRange(const FilmItem& clip, FilmItem::Carries carries) {
        const auto length = LengthOf(clip, carries);
        if (!length) return;
        const auto [first, last] = Shown(clip, {}, {});
        const FilmTime tolerance = Tolerance(clip);
        const char* const held =
            carries == FilmItem::Carries::Sound ? "; the rest is silent" : "; its last picture is held";
        if (first >= *length + tolerance)
            Fault(clip.place,
                  "begins at " + Seconds(first) + " of its media, which end at " + Seconds(*length),
                  ErrorKind::Usage);
        else if (last > *length + tolerance)
            Remark(clip.place, "is " + Seconds(last - *length) + " longer than its media" + held);
        if (first + tolerance < FilmTime())
            Remark(clip.place, "begins " + Seconds(FilmTime() - first) + " before its media");
    }

    /// What transitions need beyond the cut.
    void CheckHandles(const FilmItem::Transition& transition, const FilmItem& track,
                      FilmItem::Carries carries) {
        if (transition.cut > 0)
            CheckHandle(transition, track.children[transition.cut - 1], {}, transition.after, carries);
        if (transition.cut < track.children.size())
            CheckHandle(transition, track.children[transition.cut], transition.before, {}, carries);
    }

    void CheckHandle(const FilmItem::Transition& transition, const FilmItem& item, const FilmTime& before,
                     const FilmTime& after, FilmItem::Carries carries) {
        const auto length = LengthOf(item, carries);
        if (!length || !item.enabled) return;
        const auto [first, last] = Shown(item, before, after);
        const FilmTime tolerance = Tolerance(item);
        const FilmTime lacks = std::max(last - std::max(*length, Shown(item, {}, {}).second),
                                        std::min(FilmTime(), Shown(item, {}, {}).first) - first);
        if (lacks > tolerance)
            Remark(transition.place, "needs " + Seconds(lacks) + " more of " + item.place +
                                         " than its media have; its " +
                                         (after > FilmTime() ? "last" : "first") + " picture is held");
    }

    void CheckNumbers(const FilmItem& clip) {
        const NumberedMedia& media = clip.media.numbered;
        CheckRange(clip, FilmItem::Carries::Pictures);
        if (media.missing != NumberedMedia::Missing::Refuse) return;
        const auto [first, last] = Shown(clip, {}, {});
        FilmTime end = std::max(last, first);
        if (clip.media.available) end = std::min(end, clip.media.available->duration);
        const AVRational pictures{media.rate.num, media.rate.den};
        constexpr int64_t kMost = 1'000'000'000'000;
        const int64_t stop = std::clamp<int64_t>(end.Ceil(pictures), 1, kMost);
        const int64_t start = std::clamp<int64_t>(first.Floor(pictures), 0, stop - 1);
        for (int64_t number = start - start % media.step; number < stop; number += media.step) {
            const std::string file = media.File(media.first + number);
            if (access(file.c_str(), R_OK) == 0) continue;
            if (m_refused.insert(file).second)
                Fault(clip.place, file + " is missing or can't be read", ErrorKind::Input);
            return; // one tells of all that follow
        }
    }

    FilmCheck& m_found;
    MediaHeaders& m_headers;
    AVRational m_rate; ///< that times counted in pictures are looked at with
    std::set<std::string> m_refused;
};

} // namespace

FilmCheck CheckFilm(const Film& film, MediaHeaders& headers) {
    FilmCheck found;
    constexpr AVRational kUsual{25, 1};
    if (!(film.stack.duration > FilmTime()))
        found.faults.push_back({"", "the film is empty: no item in it takes any time", ErrorKind::Usage});
    std::vector<std::string> files;
    for (const FilmItem* clip : ClipsOf(film.stack))
        if (clip->media.kind == FilmMedia::Kind::File) files.push_back(clip->media.url);
    headers.Prepare(files);
    FilmChecker(found, headers, film.wishes.rate.value_or(kUsual))
        .Check(film.stack, FilmItem::Carries::Pictures);
    return found;
}

std::vector<FilmFault> AllFaults(const ReadFilm& read, const FilmCheck& check, bool strict) {
    std::vector<FilmFault> faults = read.faults;
    faults.insert(faults.end(), check.faults.begin(), check.faults.end());
    if (strict)
        for (const std::string& unknown : read.unknown)
            faults.push_back({"", "not used: " + unknown, ErrorKind::Usage});
    return faults;
}

void RequireFaultless(const std::vector<FilmFault>& faults) {
    if (faults.empty()) return;
    const bool film =
        std::ranges::any_of(faults, [](const FilmFault& fault) { return fault.kind == ErrorKind::Usage; });
    std::string others;
    for (size_t index = 1; index < faults.size(); ++index)
        others += (index > 1 ? "\n" : "") + faults[index].Text();
    throw Error(film ? ErrorKind::Usage : ErrorKind::Input, faults.front().Text(), others);
}

} // namespace aveffect
