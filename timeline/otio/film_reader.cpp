#include "timeline/otio/film_reader.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "host/settings/catalogue_lookup.h"
#include "timeline/otio/clip_media.h"
#include "timeline/otio/document.h"
#include "timeline/otio/effect_words.h"
#include "timeline/otio/fields.h"
#include "timeline/otio/findings.h"

namespace aveffect {

namespace {

using Kind = FilmItem::Kind;

constexpr int kDeepestItem = 64;

/// Schemas, old names among them, and the latest version that is known.
struct KnownSchema {
    const char* name;
    int version;
};
constexpr KnownSchema kKnownSchemas[] = {
    {"Timeline", 1},
    {"Stack", 1},
    {"Track", 1},
    {"Sequence", 1},
    {"Clip", 2},
    {"Gap", 1},
    {"Filler", 1},
    {"Transition", 1},
    {"Effect", 1},
    {"TimeEffect", 1},
    {"LinearTimeWarp", 1},
    {"FreezeFrame", 1},
    {"ExternalReference", 1},
    {"MissingReference", 1},
    {"ImageSequenceReference", 1},
    {"GeneratorReference", 1},
    {"SerializableCollection", 1},
};

/// Members that the format has and films either use or have no use for: how programs show an item, say.
const std::set<std::string>& KnownMembers() {
    static const std::set<std::string> kNames = {"OTIO_SCHEMA",
                                                 "name",
                                                 "metadata",
                                                 "source_range",
                                                 "effects",
                                                 "markers",
                                                 "enabled",
                                                 "color",
                                                 "children",
                                                 "kind",
                                                 "media_reference",
                                                 "media_references",
                                                 "active_media_reference_key",
                                                 "tracks",
                                                 "global_start_time",
                                                 "transition_type",
                                                 "in_offset",
                                                 "out_offset",
                                                 "parameters",
                                                 "effect_name",
                                                 "time_scalar",
                                                 "available_range",
                                                 "available_image_bounds",
                                                 "target_url",
                                                 "target_url_base",
                                                 "name_prefix",
                                                 "name_suffix",
                                                 "start_frame",
                                                 "frame_step",
                                                 "frame_zero_padding",
                                                 "rate",
                                                 "missing_frame_policy",
                                                 "generator_kind"};
    return kNames;
}

/// An object and where it stands.
struct Node {
    const OtioJson& json;
    std::string path; ///< tracks[1].children[3]

    /// With the object's name.
    std::string Place(const char* member = "name") const {
        const OtioJson* const name = Member(json, member);
        std::string where = path.empty() ? "timeline" : path;
        if (!name || !name->is_string() || name->get_ref<const std::string&>().empty()) return where;
        return where + " " + name->dump();
    }
    Node Child(const OtioJson& child, const char* list, size_t index) const {
        const std::string own = path.empty() ? "" : path + ".";
        return {child, own + list + "[" + std::to_string(index) + "]"};
    }
};

FilmTime LengthOf(const FilmItem& item) {
    FilmTime length;
    for (const FilmItem& child : item.children)
        length = item.kind == Kind::Track ? length + child.duration : std::max(length, child.duration);
    return length;
}

class FilmReader {
public:
    explicit FilmReader(const OtioTerms& terms)
        : m_terms(terms) {}

    ReadFilm Read(const std::string& bytes) {
        m_findings.Try("", [&] { ReadTop(ParseDocument(bytes)); });
        m_film.faults = m_findings.TakeFaults();
        m_film.unknown = m_findings.UnknownTexts();
        return std::move(m_film);
    }

private:
    void ReadTop(const OtioJson& document) {
        const std::string schema = SchemaOf(document).name;
        if (schema == "Timeline") return ReadTimeline({document, ""});
        if (schema == "SerializableCollection") return ReadCollection({document, ""});
        if (schema == "Stack") return ReadTracks(document, "");
        if (schema == "Track" || schema == "Sequence") {
            m_film.film.stack.kind = Kind::Stack;
            m_film.film.stack.children.push_back(
                ReadItem({document, "tracks[0]"}, FilmItem::Carries::Pictures, 0));
            m_film.film.stack.duration = LengthOf(m_film.film.stack);
            return;
        }
        throw Error(ErrorKind::Usage,
                    schema.empty() ? "this is JSON, but no film: OTIO_SCHEMA should be Timeline.1"
                                   : "this is a " + schema + ", no film: OTIO_SCHEMA should be Timeline.1");
    }

    void ReadCollection(const Node& collection) {
        const OtioJson& children = ListOf(collection.json, "children");
        bool found = false;
        for (size_t index = 0; index < children.size(); ++index) {
            const Node child = collection.Child(children[index], "children", index);
            if (!found && IsA(child.json, "Timeline")) {
                found = true;
                ReadTimeline(child);
            } else {
                m_findings.Unknown("what a collection holds besides its first timeline", child.Place());
            }
        }
        if (!found) throw Error(ErrorKind::Usage, "the collection holds no Timeline");
    }

    void ReadTimeline(const Node& timeline) {
        NoteUnknown(timeline);
        const OtioJson* const tracks = Member(timeline.json, "tracks");
        if (!tracks || !IsA(*tracks, "Stack"))
            throw Error(ErrorKind::Usage, "tracks is " + Shown(tracks ? *tracks : OtioJson()) +
                                              ", but should be a Stack object");
        m_findings.Try(timeline.Place(), [&] { m_film.film.name = TextOf(timeline.json, "name"); });
        ReadTracks(*tracks, timeline.path);
        m_findings.Try(timeline.Place(), [&] {
            const OtioJson& words = OwnWords(timeline.json);
            m_film.film.wishes = ReadWishes(ObjectOf(words, "output"), timeline.Place(), m_findings);
            for (const auto& [name, value] : words.items())
                if (name != "output")
                    m_findings.Fault(timeline.Place(), "metadata.aveffect of the film has no member \"" +
                                                           name + "\"; there is output");
        });
    }

    /// A stack at the top, whose children are called tracks.
    void ReadTracks(const OtioJson& stack, const std::string& path) {
        FilmItem& film = m_film.film.stack;
        const Node self{stack, path.empty() ? "tracks" : path + ".tracks"};
        ReadCommon(self, film);
        film.kind = Kind::Stack;
        ReadChildren({stack, path}, "tracks", film, FilmItem::Carries::Pictures, 0);
        Trim(self, film);
    }

    const OtioJson& OwnWords(const OtioJson& object) {
        return ObjectOf(ObjectOf(object, "metadata"), "aveffect");
    }

    /// What is there and not used.
    void NoteUnknown(const Node& node) {
        const OtioSchema schema = SchemaOf(node.json);
        for (const KnownSchema& known : kKnownSchemas)
            if (schema.name == known.name && schema.version > known.version)
                m_findings.Unknown(schema.name + "." + std::to_string(schema.version) + ", read as " +
                                       schema.name + "." + std::to_string(known.version),
                                   node.Place());
        for (const auto& [name, value] : node.json.items())
            if (!KnownMembers().contains(name))
                m_findings.Unknown("member " + OtioJson(name).dump(), node.Place());
        if (const OtioJson* const markers = Member(node.json, "markers"); markers && !markers->empty())
            m_findings.Unknown("markers", node.Place());
        if (const OtioJson* const metadata = Member(node.json, "metadata"); metadata && metadata->is_object())
            for (const auto& [name, value] : metadata->items())
                if (name != "aveffect") m_findings.Unknown("metadata " + OtioJson(name).dump(), node.Place());
    }

    /// What all items have. Speed before times, for those of what runs backwards depend on it.
    void ReadCommon(const Node& node, FilmItem& item) {
        NoteUnknown(node);
        item.place = node.Place();
        m_findings.Try(item.place, [&] { item.name = TextOf(node.json, "name"); });
        m_findings.Try(item.place, [&] { item.enabled = SwitchOf(node.json, "enabled", true); });
        m_findings.Try(item.place, [&] { ReadEffects(node, item); });
    }

    void ReadEffects(const Node& node, FilmItem& item) {
        const OtioJson& effects = ListOf(node.json, "effects");
        for (size_t index = 0; index < effects.size(); ++index) {
            const Node effect = node.Child(effects[index], "effects", index);
            const std::string place = effect.Place("effect_name");
            m_findings.Try(place, [&] { ReadEffect(effect, place, item); });
        }
    }

    void ReadEffect(const Node& node, const std::string& place, FilmItem& item) {
        const std::string schema = SchemaOf(node.json).name;
        NoteUnknown(node);
        if (!SwitchOf(node.json, "enabled", true)) return;
        if (schema == "FreezeFrame") {
            item.speed = {0, 1};
            return;
        }
        if (schema == "LinearTimeWarp") return Warp(NumberOf(node.json, "time_scalar", 1), item);
        const std::string name = TextOf(node.json, "effect_name");
        const std::string own = schema == "Effect" ? OwnEffectName(name) : "";
        if (own.empty()) {
            m_findings.Unknown(schema == "Effect" ? "effect " + OtioJson(name).dump() : "effects " + schema,
                               place);
            return;
        }
        const auto spec = ReadEffectWords(own, OwnWords(node.json), m_terms.media, place, m_findings);
        if (!spec) return;
        const bool sound = FindNamed(spec->name)->kind == AVBased::EffectKind::Audio;
        item.effects.push_back({*spec, sound ? Medium::Audio : Medium::Video, place});
    }

    static void Warp(double factor, FilmItem& item) {
        constexpr double kMost = 1000;
        constexpr int kTerms = 1'000'000;
        if (std::abs(factor) > kMost)
            throw Error(ErrorKind::Usage,
                        "time_scalar is " + Shown(factor) + ", but should be from -1000 to 1000");
        item.speed = av_mul_q(item.speed, av_d2q(factor, kTerms));
    }

    /// What runs backwards shows what it would show forwards from its last tick on.
    static FilmTime BeginOf(const FilmRange& range, AVRational speed, const FilmTime& tick) {
        if (speed.num >= 0) return range.start;
        return range.start + range.duration * AVRational{-speed.num, speed.den} - tick;
    }

    /// Of a track or a stack, once its children are known.
    void Trim(const Node& node, FilmItem& item) {
        const FilmTime whole = LengthOf(item);
        item.duration = whole;
        m_findings.Try(item.place, [&] {
            const auto range = RangeOf(node.json, "source_range");
            item.start = BeginOf(range.value_or(FilmRange{{}, whole}), item.speed,
                                 range ? TickOf(node.json, "source_range") : FilmTime());
            if (range) item.duration = range->duration;
        });
    }

    void ReadChildren(const Node& node, const char* list, FilmItem& item, FilmItem::Carries carries,
                      int depth) {
        m_findings.Try(item.place, [&] {
            if (depth >= kDeepestItem)
                throw Error(ErrorKind::Usage,
                            "items lie more than " + std::to_string(kDeepestItem) + " deep in each other");
            const OtioJson& children = ListOf(node.json, "children");
            for (size_t index = 0; index < children.size(); ++index) {
                const Node child = node.Child(children[index], list, index);
                if (item.kind == Kind::Track && IsA(child.json, "Transition"))
                    ReadTransition(child, item);
                else
                    item.children.push_back(ReadItem(child, carries, depth + 1));
            }
            for (size_t index = 0; index < item.transitions.size(); ++index) RequireRoom(item, index);
        });
    }

    FilmItem ReadItem(const Node& node, FilmItem::Carries carries, int depth) {
        FilmItem item;
        const std::string schema = SchemaOf(node.json).name;
        ReadCommon(node, item);
        if (schema == "Clip") {
            item.kind = Kind::Clip;
            m_findings.Try(item.place, [&] { ReadClip(node, item, carries); });
        } else if (schema == "Track" || schema == "Sequence") {
            ReadTrack(node, item, depth);
        } else if (schema == "Stack") {
            item.kind = Kind::Stack;
            ReadChildren(node, "children", item, carries, depth);
            Trim(node, item);
        } else {
            if (schema != "Gap" && schema != "Filler") NoteStranger(node, schema);
            m_findings.Try(item.place, [&] {
                if (const auto range = RangeOf(node.json, "source_range")) item.duration = range->duration;
            });
        }
        return item;
    }

    void NoteStranger(const Node& node, const std::string& schema) {
        if (!node.json.is_object())
            m_findings.Fault(node.path, "is " + Shown(node.json) + ", but should be an object");
        else if (schema == "Transition")
            m_findings.Fault(node.Place(), "a transition stands between items of a track, not in a stack");
        else
            m_findings.Unknown("objects " + OtioJson(schema).dump(), node.Place());
    }

    /// Tracks of what is neither seen nor heard become gaps of their length.
    void ReadTrack(const Node& node, FilmItem& item, int depth) {
        item.kind = Kind::Track;
        std::string kind = "Video";
        m_findings.Try(item.place, [&] { kind = TextOf(node.json, "kind", kind); });
        item.carries = kind == "Audio" ? FilmItem::Carries::Sound : FilmItem::Carries::Pictures;
        ReadChildren(node, "children", item, item.carries, depth);
        Trim(node, item);
        if (kind == "Audio" || kind == "Video") return;
        m_findings.Unknown("tracks of kind " + OtioJson(kind).dump() + ", which are left out", item.place);
        item.kind = Kind::Gap;
        item.children.clear();
        item.transitions.clear();
    }

    void ReadClip(const Node& node, FilmItem& item, FilmItem::Carries carries) {
        const OtioJson* reference = nullptr;
        const bool known = m_findings.Try(item.place, [&] {
            reference = ActiveReference(node.json);
            if (reference) NoteUnknown({*reference, node.path + ".media_reference"});
            item.media = ReadMedia(reference, m_terms.media, item.place, m_findings);
        });
        const auto range = RangeOf(node.json, "source_range");
        const FilmTime first = item.media.available ? item.media.available->start : FilmTime();
        if (range) {
            item.duration = range->duration;
            item.start = BeginOf(*range, item.speed, TickOf(node.json, "source_range")) - first;
        } else if (known) {
            item.duration = item.media.available ? item.media.available->duration : OwnLength(item, carries);
            const FilmTime tick = item.media.available ? TickOf(*reference, "available_range") : FilmTime();
            item.start = BeginOf({FilmTime(), item.duration}, item.speed, tick);
        }
    }

    FilmTime OwnLength(const FilmItem& item, FilmItem::Carries carries) {
        const auto refuse = [](const std::string& why, ErrorKind kind = ErrorKind::Usage) -> FilmTime {
            throw Error(kind, why + "; give the clip a source_range or its media an available_range");
        };
        if (item.media.kind != FilmMedia::Kind::File || !m_terms.headers)
            return refuse("how long the clip is, nothing says");
        const MediaHeader& header = m_terms.headers->Of(item.media.url);
        if (!header.fault.empty()) throw Error(ErrorKind::Input, header.fault);
        const auto& length = carries == FilmItem::Carries::Sound ? header.heard : header.seen;
        if (header.still) return refuse(item.media.url + " is a still picture and has no length");
        if (!length) return refuse(item.media.url + " does not tell its length", ErrorKind::Input);
        return *length;
    }

    void ReadTransition(const Node& node, FilmItem& track) {
        FilmItem::Transition transition;
        transition.place = node.Place();
        transition.cut = track.children.size();
        NoteUnknown(node);
        m_findings.Try(transition.place, [&] {
            transition.name = TextOf(node.json, "name");
            transition.before = TimeOf(node.json, "in_offset").value_or(FilmTime());
            transition.after = TimeOf(node.json, "out_offset").value_or(FilmTime());
            if (transition.before < FilmTime() || transition.after < FilmTime())
                throw Error(ErrorKind::Usage, "in_offset and out_offset should be 0 or longer");
            if (!track.transitions.empty() && track.transitions.back().cut == transition.cut)
                throw Error(ErrorKind::Usage, "two transitions stand at the same cut");
            const auto effect =
                ReadTransitionWords(TransitionWords(node), m_terms.media, transition.place, m_findings);
            if (!effect || !SwitchOf(node.json, "enabled", true)) return;
            transition.effect = *effect;
            if (transition.before + transition.after == FilmTime())
                m_findings.Unknown("transitions that take no time", transition.place);
            else
                track.transitions.push_back(transition);
        });
    }

    const OtioJson& TransitionWords(const Node& node) {
        const OtioJson& words = OwnWords(node.json);
        const std::string type = TextOf(node.json, "transition_type", "SMPTE_Dissolve");
        if (type != "SMPTE_Dissolve" && !words.contains("effect"))
            m_findings.Unknown("transitions of type " + OtioJson(type).dump() +
                                   ", which are cross-fades here",
                               node.Place());
        return words;
    }

    /// Transitions lie within the items beside their cuts, and don't overlap.
    void RequireRoom(const FilmItem& track, size_t index) {
        const FilmItem::Transition& transition = track.transitions[index];
        const auto require = [&](const char* member, const FilmTime& offset, size_t child, FilmTime other) {
            if (child >= track.children.size()) return;
            const FilmItem& item = track.children[child];
            if (offset + other <= item.duration) return;
            m_findings.Fault(transition.place,
                             std::string(member) + " is " + SecondsText(offset) + ", but " + item.place +
                                 " lasts " + SecondsText(item.duration) +
                                 (other == FilmTime()
                                      ? ""
                                      : ", of which its other transition takes " + SecondsText(other)));
        };
        if (transition.cut > 0) require("in_offset", transition.before, transition.cut - 1, FilmTime());
        const bool follows =
            index + 1 < track.transitions.size() && track.transitions[index + 1].cut == transition.cut + 1;
        require("out_offset", transition.after, transition.cut,
                follows ? track.transitions[index + 1].before : FilmTime());
    }

    static std::string SecondsText(const FilmTime& time) {
        return Shown(std::round(time.Seconds() * 1000) / 1000) + " s";
    }

    const OtioTerms& m_terms;
    Findings m_findings;
    ReadFilm m_film;
};

} // namespace

ReadFilm ReadOtio(const std::string& bytes, const OtioTerms& terms) { return FilmReader(terms).Read(bytes); }

ReadFilm ReadOtioFile(const std::string& path, OtioTerms terms) {
    terms.media.folder = std::filesystem::path(path).parent_path();
    return ReadOtio(DocumentBytes(path), terms);
}

} // namespace aveffect
