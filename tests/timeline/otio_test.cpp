// Films as interchange files have them: what is read, what is refused, and that nothing is lost.
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "timeline/jobs/film_check.h"
#include "timeline/otio/document.h"
#include "timeline/otio/film_reader.h"
#include "timeline/otio/places.h"

namespace aveffect {
namespace {

namespace fs = std::filesystem;

/// Bare times, without schemas, are read too.
std::string Range(const std::string& start, const std::string& duration, const std::string& rate = "24") {
    return R"({"start_time":{"value":)" + start + R"(,"rate":)" + rate + R"(},"duration":{"value":)" +
           duration + R"(,"rate":)" + rate + "}}";
}

std::string Clip(const std::string& range, const std::string& more = "",
                 const std::string& available = "null") {
    return R"({"OTIO_SCHEMA":"Clip.1","name":"c","source_range":)" + range +
           R"(,"media_reference":{"OTIO_SCHEMA":"ExternalReference.1","target_url":"c.mp4","available_range":)" +
           available + "}" + (more.empty() ? "" : "," + more) + "}";
}

std::string Effects(const std::string& effects) { return R"("effects":[)" + effects + "]"; }

std::string Effect(const std::string& name, const std::string& words) {
    return R"({"OTIO_SCHEMA":"Effect.1","effect_name":")" + name + R"(","metadata":{"aveffect":)" + words +
           "}}";
}

std::string Warp(const std::string& scalar) {
    return R"({"OTIO_SCHEMA":"LinearTimeWarp.1","time_scalar":)" + scalar + "}";
}

std::string Timeline(const std::string& items, const std::string& more = "") {
    return R"({"OTIO_SCHEMA":"Timeline.1","name":"f","tracks":{"OTIO_SCHEMA":"Stack.1","children":[)"
           R"({"OTIO_SCHEMA":"Track.1","kind":"Video","children":[)" +
           items + "]}]}" + (more.empty() ? "" : "," + more) + "}";
}

ReadFilm Read(const std::string& text, const MediaTerms& media = {}) {
    return ReadOtio(text, {media, nullptr});
}

FilmTime Ticks(int64_t count, int rate = 24) { return {count, {rate, 1}}; }

TEST(OtioTest, ReadsTimesExactly) {
    const std::string whole = Range("86400", "240"); // from an hour on
    const struct {
        std::string clip;
        FilmTime start, duration;
        AVRational speed;
    } cases[] = {
        {Clip(Range("12", "48")), Ticks(12), Ticks(48), {1, 1}},
        {Clip(Range("86412", "48"), "", whole), Ticks(12), Ticks(48), {1, 1}},
        {Clip("null", "", whole), {}, Ticks(240), {1, 1}},
        {Clip(Range("0", "30", "29.97")), {}, FilmTime(30, {30000, 1001}), {1, 1}},
        {Clip(Range("12", "48"), Effects(Warp("0.5") + "," + Warp("3"))), Ticks(12), Ticks(48), {3, 2}},
        {Clip(Range("12", "48"), Effects(R"({"OTIO_SCHEMA":"FreezeFrame.1"})")),
         Ticks(12),
         Ticks(48),
         {0, 1}},
        // Backwards from the last picture that it would show forwards.
        {Clip(Range("12", "48"), Effects(Warp("-1"))), Ticks(59), Ticks(48), {-1, 1}},
    };
    for (const auto& one : cases) {
        const ReadFilm read = Read(Timeline(one.clip));
        ASSERT_TRUE(read.faults.empty()) << read.faults.front().Text();
        const FilmItem& clip = read.film.stack.children.at(0).children.at(0);
        EXPECT_TRUE(clip.start == one.start && clip.duration == one.duration) << one.clip;
        EXPECT_EQ(av_cmp_q(clip.speed, one.speed), 0) << one.clip;
        EXPECT_TRUE(read.film.stack.duration == one.duration);
    }
}

TEST(OtioTest, ReadsOldAndNestedObjectsAndOtherTops) {
    const std::string track =
        R"({"OTIO_SCHEMA":"Sequence.1","kind":"Audio","children":[{"OTIO_SCHEMA":"Filler.1","source_range":)" +
        Range("0", "24") + R"(},{"OTIO_SCHEMA":"Stack.1","children":[)" + Clip(Range("0", "12")) + "," +
        Clip(Range("0", "36")) + "]}]}";
    const std::string stack = R"({"OTIO_SCHEMA":"Stack.1","children":[)" + track + "]}";
    const std::string timeline = R"({"OTIO_SCHEMA":"Timeline.1","tracks":)" + stack + "}";
    for (const std::string& top :
         {track, stack, timeline,
          R"({"OTIO_SCHEMA":"SerializableCollection.1","children":[)" + timeline + "]}"}) {
        ReadFilm read = Read(top);
        ASSERT_TRUE(read.faults.empty()) << top << read.faults.front().Text();
        const FilmItem& item = read.film.stack.children.at(0);
        EXPECT_EQ(item.carries, FilmItem::Carries::Sound);
        EXPECT_EQ(item.children.at(0).kind, FilmItem::Kind::Gap);
        EXPECT_TRUE(read.film.stack.duration == Ticks(60)) << top;
        // A place names its object in the document again.
        OtioJson document = ParseDocument(top);
        EXPECT_TRUE(ObjectAt(document, item.children.at(1).children.at(1).place) ==
                    ParseDocument(Clip(Range("0", "36"))));
    }
}

TEST(OtioTest, ReadsEffectsAsTheCommandLineDoes) {
    const struct {
        const char *name, *words, *text;
    } cases[] = {
        {"spherize", R"({"preset":"bulge","settings":{"spherize_x":"30%","spherize_y":5}})",
         "spherize/bulge:spherize_x=30%:spherize_y=5"},
        {"spherize",
         R"({"keyframes":{"spherize_scale":[{"time":0,"value":0},{"time":{"value":36,"rate":24},"value":0.5,"easing":"smooth"},)"
         R"({"time":"50%","value":1,"easing":"ease-in-out"}],"mix":[{"time":0,"value":0.5,"easing":"hold"}]}})",
         "spherize:spherize_scale=0=0;1.5~=0.5;50%[ease-in-out]=1:@mix=0|=50"},
        {"reverse", R"({"settings":{"mirror":true},"from":"1:02","to":-1,"fade_in":0.5,"mix":0.25})",
         "reverse:mirror=on:@from=1\\:02:@to=-1:@fade-in=0.5:@mix=25"},
        {"gray", R"({"mask":"a:b.png","mask_invert":true,"mask_feather":8})",
         "gray:@mask=./a\\:b.png:@mask-invert=on:@mask-feather=8"},
        {"volume", R"({"settings":{"audio_volume":"0=0;2=40"}})", "volume:audio_volume=0=0;2=40"},
    };
    for (const auto& one : cases) {
        const ReadFilm read = Read(Timeline(
            Clip(Range("0", "24"), Effects(Effect(std::string("aveffect.") + one.name, one.words)))));
        ASSERT_TRUE(read.faults.empty()) << read.faults.front().Text();
        const FilmEffect& effect = read.film.stack.children.at(0).children.at(0).effects.at(0);
        const Medium medium = std::string(one.name) == "volume" ? Medium::Audio : Medium::Video;
        EXPECT_EQ(effect.medium, medium);
        const EffectSpec expected = ParseEffect(one.text, false, medium);
        EXPECT_EQ(effect.spec.properties, expected.properties) << one.text;
        for (const PropertySetting& setting : expected.reach)
            EXPECT_NE(std::ranges::find(effect.spec.reach, setting), effect.spec.reach.end()) << setting.name;
        EXPECT_EQ(effect.spec.reach.size(), expected.reach.size());
    }
}

TEST(OtioTest, FindsEveryFault) {
    const std::string good = Clip(Range("0", "24"));
    const auto effect = [](const std::string& name, const std::string& words) {
        return Timeline(Clip(Range("0", "24"), Effects(Effect(name, words))));
    };
    const auto dissolve = [&](const std::string& in, const std::string& out,
                              const std::string& words = "{}") {
        return Timeline(good + R"(,{"OTIO_SCHEMA":"Transition.1","in_offset":{"rate":24,"value":)" + in +
                        R"(},"out_offset":{"rate":24,"value":)" + out + R"(},"metadata":{"aveffect":)" +
                        words + "}}," + good);
    };
    std::string deep = good;
    for (int level = 0; level < 70; ++level) deep = R"({"OTIO_SCHEMA":"Stack.1","children":[)" + deep + "]}";
    const struct {
        std::string film, fault; ///< what its text has in it
    } cases[] = {
        {"{", "line 1, column 1: this is no JSON"},
        {"", "this is no JSON"},
        {"[]", "OTIO_SCHEMA should be Timeline.1"},
        {R"({"OTIO_SCHEMA":"Clip.2"})", "this is a Clip, no film"},
        {R"({"a":{"b":1,"b":2}})", "member \"b\" stands twice"},
        {Timeline(Clip(Range("NaN", "24"))), "NaN and Infinity"},
        {Timeline(Clip(Range("1e999", "24"))), "too large"},
        {std::string(300, '[') + std::string(300, ']'), "deep in each other"},
        {Timeline(deep), "items lie more than 64 deep"},
        {Timeline(Clip(Range("0", "-1"))),
         "tracks[0].children[0] \"c\": source_range.duration is -1 at a rate of 24"},
        {Timeline(Clip(Range("0", "1", "0"))), "rate is 0, but should be a number above 0"},
        {Timeline(Clip(Range("1e18", "1"))), "a time within a million years"},
        {Timeline(Clip(Range("\"x\"", "1"))),
         "source_range.start_time.value is \"x\", but should be a number"},
        {Timeline(Clip("null")), "how long the clip is, nothing says"},
        {Timeline("7"), "tracks[0].children[0]: is 7, but should be an object"},
        {Timeline(good, R"("metadata":{"aveffect":{"output":{"width":0,"height":2}}})"), "output.width is 0"},
        {Timeline(good, R"("metadata":{"aveffect":{"output":{"rate":0}}})"), "output.rate is 0"},
        {effect("aveffect.spherise", "{}"),
         R"(effects[0] "aveffect.spherise": unknown effect 'spherise'; did you mean)"},
        {effect("aveffect.spherize", R"({"settings":{"spherize_r":-1}})"), "spherize_r of spherize"},
        {effect("aveffect.spherize", R"({"seting":{}})"), "did you mean 'settings'?"},
        {effect("aveffect.gray", R"({"mix":50})"), "mix is 50, but should be from 0 to 1"},
        {effect("aveffect.gray", R"({"keyframes":{"mix":[{"time":0,"value":1,"easing":"eas-in"}]}})"),
         "'ease-in'"},
        {effect("aveffect.gray", R"({"mix":0.5,"keyframes":{"mix":[{"time":0,"value":1}]}})"),
         "@mix is set twice"},
        {effect("aveffect.spherize/bulge:@mask=/dev/zero", "{}"), "unknown preset"},
        {effect("aveffect.gray", R"({"keyframes":{"mask":[{"time":0,"value":"/dev/zero"}]}})"),
         "has no keyframes"},
        {effect("aveffect.gray", R"({"mask":"/dev/zero"})"), "'/dev/zero' is no file but a device"},
        {Timeline(
             R"({"OTIO_SCHEMA":"Clip.1","media_reference":{"OTIO_SCHEMA":"ImageSequenceReference.1","name_suffix":"/x"}})"),
         "name_suffix is"},
        {effect("aveffect.crossfade", "{}"), "is a transition, which stands between clips"},
        {dissolve("25", "0"), R"(in_offset is 1.042 s, but tracks[0].children[0] "c" lasts 1.0 s)"},
        {dissolve("0", "25"), "out_offset is 1.042 s"},
        {dissolve("1", "1", R"({"effect":"gray"})"), "gray is no transition"},
        {dissolve("1", "1", R"({"settings":{"EffectPropVFPath1":"a.png"}})"), "can't be set"},
    };
    for (const auto& one : cases) {
        const ReadFilm read = Read(one.film);
        const auto has = [&](const FilmFault& fault) {
            return fault.Text().find(one.fault) != std::string::npos;
        };
        std::string found;
        for (const FilmFault& fault : read.faults) found += fault.Text() + "\n";
        EXPECT_TRUE(std::ranges::any_of(read.faults, has)) << one.fault << "\nbut: " << found;
    }
    // Several are told at once, and what is not known is no fault.
    const ReadFilm two = Read(Timeline(
        Clip(Range("0", "-1"),
             Effects(Effect("aveffect.nix", "{}") + R"(,{"OTIO_SCHEMA":"Effect.1","effect_name":"Blur"})")) +
            R"(,{"OTIO_SCHEMA":"Clip.9","source_range":)" + Range("0", "1") + R"(,"markers":[{}],"new":1})",
        R"("metadata":{"other":{}})"));
    EXPECT_EQ(two.faults.size(), 2U);
    EXPECT_EQ(two.unknown.size(), 6U); // the effect, the version, the member, markers, no media, metadata
}

TEST(OtioTest, WritesAgainWhatItRead) {
    const std::string film = Timeline(Clip(
        Range("0.5", "24", "23.976023976023978"),
        R"("foreign":{"z":[1,1.0,-0.1,1e300,9223372036854775807,"\u00e9\n\"",null,true,{}],"a":{"OTIO_SCHEMA":"Own.7"}})"));
    const OtioJson document = ParseDocument(film);
    const std::string text = DocumentText(document);
    EXPECT_EQ(ParseDocument(text), document);
    EXPECT_EQ(nlohmann::json::parse(text), nlohmann::json::parse(film));
    EXPECT_EQ(DocumentText(ParseDocument(text)), text);
}

class MediaPlaceTest : public ::testing::Test {
protected:
    MediaPlaceTest() {
        fs::create_directories(m_root / "in");
        std::ofstream(m_root / "in" / "a b?.mp4") << "x";
        std::ofstream(m_root / "out.mp4") << "x";
        fs::create_symlink("../out.mp4", m_root / "in" / "link.mp4");
    }
    ~MediaPlaceTest() override { fs::remove_all(m_root); }

    fs::path m_root = fs::path(::testing::TempDir()) / "media_place_test";
};

TEST_F(MediaPlaceTest, OpensWhatMayBeOpened) {
    const std::string in = m_root / "in", file = in + "/a b?.mp4";
    const MediaTerms plain{in}, confined{in, in}, open{in, {}, true};
    const struct {
        std::string named;
        const MediaTerms& terms;
        std::string url; ///< empty: refused
    } cases[] = {
        {"a b?.mp4", plain, file},
        {"a b?.mp4", confined, file},
        {"file://localhost" + in + "/a%20b%3F.mp4", confined, file},
        {"file://" + in + "/50%.mp4", plain, in + "/50%.mp4"},
        {"x.mp4?vstreamid=1", plain, in + "/x.mp4?vstreamid=1"},
        {"../out.mp4", plain, in + "/../out.mp4"},
        {"../out.mp4", confined, ""},
        {"link.mp4", plain, in + "/link.mp4"},
        {"link.mp4", confined, ""},
        {"/etc/passwd", confined, ""},
        {"file://server/x.mp4", plain, ""},
        {"http://x.y/z.mp4", plain, ""},
        {"http://x.y/z.mp4", open, "http://x.y/z.mp4"},
        {"concat:a|b", plain, ""},
        {"pipe:0", plain, ""},
        {"/dev/zero", plain, ""},
        {"/dev/zero", open, "/dev/zero"},
        {"/proc/self/mem", plain, ""},
        {std::string("a\0b", 3), plain, ""},
        {"", plain, ""},
    };
    for (const auto& one : cases) {
        try {
            EXPECT_EQ(MediaPlace(one.named, one.terms), one.url) << one.named;
        } catch (const Error& refused) {
            EXPECT_EQ(one.url, "") << one.named << ": " << refused.what();
        }
    }
    EXPECT_THROW(NumberedPlace(in, "l", confined), Error); // the link is one of the numbered files
    EXPECT_EQ(NumberedPlace("file://" + in, "a", confined), in + "/a");
    EXPECT_EQ(MediaPlace(MediaName(file, m_root), {m_root}), m_root / "in" / "a b?.mp4");
    EXPECT_EQ(MediaPlace(MediaName(file, m_root / "else"), plain), file);
}

TEST_F(MediaPlaceTest, OpensEachMediumOnce) {
    constexpr int kClips = 5000;
    std::string clips;
    for (int index = 0; index < kClips; ++index) clips += (index ? "," : "") + Clip(Range("0", "24"));
    const ReadFilm read = Read(Timeline(clips), {m_root});
    ASSERT_TRUE(read.faults.empty());
    MediaHeaders headers;
    const FilmCheck check = CheckFilm(read.film, headers);
    EXPECT_EQ(headers.Opened(), 1U);
    ASSERT_EQ(check.faults.size(), 1U); // a file that is missing is one fault
    EXPECT_EQ(check.faults.front().kind, ErrorKind::Input);
}

} // namespace
} // namespace aveffect
