#pragma once
/// Films: tracks of clips, with effects and transitions, whatever file they come from.
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/settings/effect_settings.h"
#include "timeline/film/film_time.h"

namespace aveffect {

/// Pictures in files of their own, numbered.
struct NumberedMedia {
    enum class Missing { Refuse, Hold, Black }; ///< what becomes of a picture whose file is not there

    std::string before, after; ///< the number in a file's name: folder and all
    int64_t first = 0;         ///< number of the first picture; may be negative
    int64_t step = 1;          ///< from one picture's number to the next one's; above 0
    int digits = 0;            ///< at least, filled up with zeros
    AVRational rate{24, 1};    ///< numbers a second
    Missing missing = Missing::Refuse;

    /// The file of the picture with that number.
    std::string File(int64_t number) const;
    /// A name for all of them: "shot%04d.png".
    std::string Pattern() const;
};

/// What a clip shows or plays.
struct FilmMedia {
    enum class Kind {
        None, ///< it is not known where: black and silent
        File,
        Numbered,
    };

    Kind kind = Kind::None;
    std::string url;                         ///< of a File: a source URL
    NumberedMedia numbered = {};             ///< where they are
    std::optional<FilmRange> available = {}; ///< what items' times count in: where the first picture stands
                                             ///< and how much there is; absent: from 0 on, all of it
};

/// An effect on pictures or on sound. Its times count from the beginning of what it is on, as long as that
/// is.
struct FilmEffect {
    EffectSpec spec;
    Medium medium = Medium::Video;
    std::string place = {}; ///< as FilmItem's
};

/// Something that lasts in a film. Its own time runs from its start; a clip's is its media's, counted from
/// the media's first picture, that of a track or a stack is what its children's add up to.
struct FilmItem {
    enum class Kind {
        Clip,
        Gap,   ///< nothing: transparent, silent
        Track, ///< children one after the other
        Stack, ///< children above each other, the first at the bottom, all from the same moment on
    };
    enum class Carries { Pictures, Sound };

    /// From the end of one child of a track into the beginning of the next one: it begins so long before the
    /// cut and ends so long after it.
    struct Transition {
        size_t cut = 0; ///< child behind the cut, or how many there are; 0: at the track's beginning
        FilmTime before, after;
        EffectSpec effect; ///< an effect that the catalogue calls a transition, without pictures and times
        std::string name = {}, place = {};
    };

    Kind kind = Kind::Gap;
    std::string name = {};
    std::string place = {}; ///< where it stands in its file, for messages: tracks[1].children[3] "sunset"
    bool enabled = true;
    FilmTime duration = {}; ///< in what it is in
    FilmTime start = {};    ///< in its own time, where its beginning is
    /// Seconds of its own time that pass in a second: 0 holds, below 0 runs backwards.
    AVRational speed{1, 1};
    std::vector<FilmEffect> effects = {};     ///< in their order
    FilmMedia media = {};                     ///< of a Clip
    std::vector<FilmItem> children = {};      ///< of a Track or a Stack
    std::vector<Transition> transitions = {}; ///< of a Track, by their cuts
    Carries carries = Carries::Pictures;      ///< of a Track

    /// In its own time, what a moment shows that counts from its beginning.
    FilmTime OwnTime(const FilmTime& moment) const { return start + moment * speed; }
};

/// What a film says of its outputs; absent: it says nothing.
struct FilmWishes {
    std::optional<int> width, height; ///< both or none
    std::optional<AVRational> rate;
    std::string videoCodec, audioCodec, outputFormat; ///< as in OutputOptions
    std::optional<bool> limiter;                      ///< of sound that would be too loud
};

struct Film {
    std::string name;
    FilmItem stack; ///< of tracks, from the bottom upwards; its duration is the film's
    FilmWishes wishes = {};
};

/// The clips in an item, in their order, those of what is switched off left out.
std::vector<const FilmItem*> ClipsOf(const FilmItem& item);

/// Source URLs of all that an item reads: clips, with a pattern for numbered pictures, and the files of its
/// effects. Each once, in no order; those of what is switched off left out.
std::set<std::string> MediaOf(const FilmItem& item);

/// How many pictures a film has at a rate; at least 1.
int64_t PicturesOf(const Film& film, AVRational rate);

} // namespace aveffect
