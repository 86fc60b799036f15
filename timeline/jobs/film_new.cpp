#include "timeline/jobs/film_new.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "host/media/source_request.h"
#include "host/output/output_file.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"
#include "timeline/jobs/film_check.h"
#include "timeline/jobs/text_file.h"
#include "timeline/otio/media_places.h"
#include "timeline/otio/objects.h"

namespace aveffect {

namespace {

constexpr AVRational kMilliseconds{1000, 1};

std::string FileName(const std::string& url) {
    return std::filesystem::path(ParseSourceUrl(url).path).filename().string();
}

/// Clips one after the other, in ticks of the film's rate.
class FilmMaker {
public:
    FilmMaker(const JoinOptions& options, MediaHeaders& headers)
        : m_options(options)
        , m_headers(headers)
        , m_folder(std::filesystem::path(options.film.output).parent_path()) {
        for (const JoinClip& clip : options.clips) Header(clip.url, true);
        m_rate = RateOf();
        TakeSeams();
        for (size_t index = 0; index < options.clips.size(); ++index) TakeShot(index);
    }

    OtioJson Make() {
        OtioJson tracks = OtioJson::array();
        tracks.push_back(MakeTrack("Pictures", "Video", Children(false)));
        const auto isHeard = [this](const JoinClip& clip) { return m_headers.Of(clip.url).sound; };
        if (m_options.clipSound && std::ranges::any_of(m_options.clips, isHeard))
            tracks.push_back(MakeTrack("Sound", "Audio", Children(true)));
        if (m_options.music) tracks.push_back(MusicTrack(*m_options.music));
        OtioJson output = {{"rate", RateJson()}};
        const Framing& framing = m_options.film.framing;
        if (framing.width && framing.height) {
            output["width"] = static_cast<int>(framing.width->value);
            output["height"] = static_cast<int>(framing.height->value);
        }
        const std::string name = std::filesystem::path(m_options.film.output).stem().string();
        return MakeTimeline(name, std::move(tracks), {{"output", std::move(output)}});
    }

private:
    /// The part of a clip between the cuts beside it.
    struct Shot {
        int64_t available, start, duration;
    };
    struct Seam {
        std::string effect; ///< empty: a straight cut
        int64_t before = 0, after = 0;
    };

    const MediaHeader& Header(const std::string& url, bool pictures) {
        const MediaHeader& header = m_headers.Of(url);
        if (!header.fault.empty()) throw Error(ErrorKind::Input, header.fault);
        if (!(pictures ? header.pictures : header.sound))
            throw Error(ErrorKind::Input, url + (pictures ? " has no pictures" : " has no sound"));
        return header;
    }

    /// That of the first clip that moves.
    AVRational RateOf() {
        if (m_options.film.rate) return *m_options.film.rate;
        for (const JoinClip& clip : m_options.clips) {
            const MediaHeader& header = m_headers.Of(clip.url);
            if (!header.still && header.rate.num > 0 && header.rate.den > 0) return header.rate;
        }
        return {25, 1};
    }

    OtioJson RateJson() const {
        if (m_rate.den == 1) return m_rate.num;
        return std::to_string(m_rate.num) + "/" + std::to_string(m_rate.den);
    }

    int64_t Ticks(int64_t milliseconds) const {
        return FilmTime(milliseconds, kMilliseconds).Nearest(m_rate);
    }

    void TakeSeams() {
        const size_t count = m_options.clips.size() - 1, given = m_options.seams.size();
        if (count > 0 && given != 1 && given != count)
            Refuse(std::to_string(given) + " transitions are given, but there are " + std::to_string(count) +
                   " seams: give one for all or one for each");
        for (size_t index = 0; index < count; ++index) {
            const JoinSeam& join = m_options.seams[given == 1 ? 0 : index];
            Seam seam;
            if (join.durationMs > 0) {
                const AVBased::EffectInfo& info = RequireEffect(join.transition);
                if (info.kind != AVBased::EffectKind::Transition)
                    Refuse(join.transition + " is no transition; `aveffect list` shows those there are");
                const int64_t ticks = std::max<int64_t>(1, Ticks(join.durationMs));
                seam = {std::string(info.shortName), ticks - ticks / 2, ticks / 2};
            }
            m_seams.push_back(seam);
        }
    }

    int64_t LengthOf(const JoinClip& clip) {
        const MediaHeader& header = m_headers.Of(clip.url);
        if (header.still) return Ticks(clip.lengthMs.value_or(m_options.pictureMs));
        if (!header.seen && !clip.lengthMs)
            throw Error(ErrorKind::Input, clip.url + " does not tell its length; write " + clip.url +
                                              "@SECONDS for what is to be shown");
        const int64_t whole = header.seen ? header.seen->Floor(m_rate) : Ticks(*clip.lengthMs);
        return clip.lengthMs ? std::min(whole, Ticks(*clip.lengthMs)) : whole;
    }

    /// Half of each transition lies beyond the cut, which the clip's own pictures fill.
    void TakeShot(size_t index) {
        const JoinClip& clip = m_options.clips[index];
        const int64_t length = LengthOf(clip);
        const int64_t before = index > 0 ? m_seams[index - 1].before : 0;
        const int64_t after = index < m_seams.size() ? m_seams[index].after : 0;
        const int64_t whole = (index > 0 ? m_seams[index - 1].before + m_seams[index - 1].after : 0) +
                              (index < m_seams.size() ? m_seams[index].before + m_seams[index].after : 0);
        if (length < std::max<int64_t>(1, whole))
            Refuse(clip.url + " is shown for " + NumberText(FilmTime(length, m_rate).Seconds()) +
                   " s, which is shorter than its transitions; give them less --duration");
        m_shots.push_back({length, before, length - before - after});
        m_length += m_shots.back().duration;
    }

    OtioJson Children(bool sound) {
        OtioJson children = OtioJson::array();
        for (size_t index = 0; index < m_shots.size(); ++index) {
            const Shot& shot = m_shots[index];
            const std::string& url = m_options.clips[index].url;
            if (sound && !m_headers.Of(url).sound)
                children.push_back(MakeGap(shot.duration, m_rate));
            else
                children.push_back(MakeClip(
                    {FileName(url), MediaName(url, m_folder), shot.available, shot.start, shot.duration},
                    m_rate));
            if (index < m_seams.size() && !m_seams[index].effect.empty())
                children.push_back(MakeTransition(sound ? "crossfade" : m_seams[index].effect,
                                                  m_seams[index].before, m_seams[index].after, m_rate));
        }
        return children;
    }

    /// Over and over, to the film's end.
    OtioJson MusicTrack(const JoinMusic& music) {
        const MediaHeader& header = Header(music.url, false);
        const int64_t whole = header.heard ? header.heard->Floor(m_rate) : m_length;
        if (whole < 1) throw Error(ErrorKind::Input, music.url + " is too short to be heard");
        OtioJson children = OtioJson::array();
        for (int64_t done = 0; done < m_length; done += whole)
            children.push_back(MakeClip({FileName(music.url), MediaName(music.url, m_folder), whole, 0,
                                         std::min(whole, m_length - done)},
                                        m_rate));
        OtioJson track = MakeTrack("Music", "Audio", std::move(children));
        if (OtioJson words = VolumeWords(music); !words.empty())
            track["effects"].push_back(MakeEffect("volume", std::move(words)));
        return track;
    }

    OtioJson VolumeWords(const JoinMusic& music) const {
        constexpr double kPercent = 100, kMs = 1000;
        const double volume = music.volume * kPercent;
        if (music.fadeInMs == 0 && music.fadeOutMs == 0)
            return volume == kPercent ? OtioJson::object()
                                      : OtioJson{{"settings", {{"audio_volume", volume}}}};
        const double end = FilmTime(m_length, m_rate).Seconds();
        const double risen = static_cast<double>(music.fadeInMs) / kMs;
        const double falls = end - static_cast<double>(music.fadeOutMs) / kMs;
        if (falls < risen) Refuse("the music's fades are longer than the film");
        OtioJson keys = OtioJson::array();
        const auto add = [&keys](double time, double value) {
            if (keys.empty() || keys.back()["time"] != time)
                keys.push_back({{"time", time}, {"value", value}});
        };
        if (risen > 0) add(0, 0);
        add(risen, volume);
        if (music.fadeOutMs > 0) {
            add(falls, volume);
            add(end, 0);
        }
        return {{"keyframes", {{"audio_volume", std::move(keys)}}}};
    }

    const JoinOptions& m_options;
    MediaHeaders& m_headers;
    std::filesystem::path m_folder;
    AVRational m_rate{25, 1};
    std::vector<Seam> m_seams;
    std::vector<Shot> m_shots;
    int64_t m_length = 0; ///< of the film
};

} // namespace

OtioJson NewFilm(const JoinOptions& options, MediaHeaders& headers) {
    return FilmMaker(options, headers).Make();
}

void WriteNewFilm(const JoinOptions& options, const std::atomic<bool>& cancel) {
    for (const JoinClip& clip : options.clips)
        OutputFile::Check(options.film.output, ParseSourceUrl(clip.url).path, options.film.overwrite);
    MediaHeaders headers;
    const std::string text = DocumentText(NewFilm(options, headers));
    // What was made is held to what is asked of any film.
    OtioTerms terms;
    terms.media.folder = std::filesystem::path(options.film.output).parent_path();
    const ReadFilm read = ReadOtio(text, terms);
    RequireFaultless(AllFaults(read, CheckFilm(read.film, headers), false));
    WriteTextFile(options.film.output, text, options.film.overwrite, cancel);
}

} // namespace aveffect
