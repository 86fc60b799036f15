// Films from the command line: made, checked, shown and changed.
#include <nlohmann/json.hpp>

#include "tests/cli/program.h"

namespace test {
namespace {

using nlohmann::ordered_json;

class TimelineProgramTest : public ProgramTest {
protected:
    /// A film of a still and a clip with a transition between them, and music.
    void MakeFilm() const {
        MakeStill("a<b>.png", "ff0000");
        MakeClip("clip.mkv", "64x48", 50);
        Ffmpeg({"-f", "lavfi", "-i", "sine=duration=1", "music.wav"});
        const Outcome made =
            Aveffect({"timeline", "new", "film.otio", "a<b>.png@2", "clip.mkv", "-e", "clock", "--music",
                      "music.wav", "--music-fade-out", "0.5", "--music-volume", "40%"});
        ASSERT_EQ(made.exitCode, 0) << made.messages;
    }
    ordered_json Film() const { return ordered_json::parse(ReadFile(Path("film.otio"))); }
    void Write(const ordered_json& film) const { WriteFile(Path("film.otio"), film.dump()); }
    static ordered_json& Item(ordered_json& film, size_t track, size_t index) {
        return film["tracks"]["children"][track]["children"][index];
    }
    /// The outcome of a command on the film.
    Outcome On(const std::string& command, std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"timeline", command, "film.otio"});
        return Aveffect(more);
    }
};

TEST_F(TimelineProgramTest, MakesFilmsOfTheLengthThatJoinGivesThem) {
    MakeFilm();
    // 2 s and 2 s that share 1 s; the music of 1 s is heard three times.
    const Outcome checked = On("check", {"--strict", "--json"});
    ASSERT_EQ(checked.exitCode, 0) << checked.messages;
    const auto report = ordered_json::parse(checked.output);
    EXPECT_EQ(report["seconds"], 3.0);
    EXPECT_EQ(report["clips"], 5);
    EXPECT_EQ(report["remarks"].size(), 0U); // the transition's handles are there
    const std::string shown = On("show").output;
    for (const char* text : {"clock, 0.52 s before the cut and 0.48 s behind it", "0:01.520 + 0:01.480",
                             "volume: audio_volume=0=40;2.5=40;3=0"})
        EXPECT_NE(shown.find(text), std::string::npos) << text << " in\n" << shown;
    const std::string before = ReadFile(Path("film.otio"));
    EXPECT_EQ(On("new", {"clip.mkv"}).exitCode, 4);
    EXPECT_EQ(On("new", {"clip.mkv", "clip.mkv", "--overwrite"}).exitCode, 2);
    EXPECT_EQ(On("new", {"clip.mkv", "gone.mkv", "-e", "cut", "--overwrite"}).exitCode, 3);
    EXPECT_TRUE(ReadFile(Path("film.otio")) == before);
}

TEST_F(TimelineProgramTest, ShowsAPageThatNamesCannotBreak) {
    MakeFilm();
    ordered_json film = Film();
    film["name"] = "<script>\"&\x1b";
    Write(film);
    EXPECT_EQ(On("show").output.find('\x1b'), std::string::npos);
    const Outcome shown = On("show", {"--html", "page.html"});
    ASSERT_EQ(shown.exitCode, 0) << shown.messages;
    const std::string page = ReadFile(Path("page.html"));
    EXPECT_EQ(page.find("<script"), std::string::npos);
    EXPECT_EQ(page.find("a<b>"), std::string::npos);
    size_t pictures = 0;
    for (size_t at = 0; (at = page.find("data:image/jpeg;base64,/9j/", at)) != std::string::npos; ++at)
        ++pictures;
    EXPECT_EQ(pictures, 2U);
    EXPECT_EQ(On("show", {"--html", "page.html"}).exitCode, 4);
}

TEST_F(TimelineProgramTest, TellsAllFaultsAtOnceAndWhoseTheyAre) {
    MakeFilm();
    ordered_json film = Film();
    const auto url = [&](size_t track, size_t index) -> ordered_json& {
        return Item(film, track, index)["media_references"]["DEFAULT_MEDIA"]["target_url"];
    };
    url(0, 0) = "gone.png";
    url(1, 1) = "clip.mkv";
    Write(film);
    const Outcome media = On("check");
    EXPECT_EQ(media.exitCode, 3);
    for (const char* text : {"tracks[0].children[0] \"a<b>.png\": gone.png: no such file",
                             "tracks[1].children[1] \"music.wav\": clip.mkv has no sound"})
        EXPECT_NE(media.messages.find(text), std::string::npos) << media.messages;

    Item(film, 0, 2)["source_range"]["start_time"]["value"] = 100;
    Item(film, 0, 2)["markers"].push_back({{"OTIO_SCHEMA", "Marker.2"}});
    Write(film);
    const Outcome both = On("check");
    EXPECT_EQ(both.exitCode, 2);
    EXPECT_TRUE(AreMessages(both.messages));
    for (const char* text :
         {"begins at 4 s of its media, which end at 2 s", "gone.png", "warning: not used: markers"})
        EXPECT_NE(both.messages.find(text), std::string::npos) << text << " in\n" << both.messages;
    EXPECT_EQ(On("render", {"film.mkv"}).exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(Path("film.mkv")));
}

TEST_F(TimelineProgramTest, SetsWhatIsRightAndNothingElse) {
    MakeFilm();
    ordered_json film = Film();
    film["foreign"] = {{"z", 1.0}, {"a", nullptr}};
    Item(film, 0, 2)["effects"].push_back(
        {{"OTIO_SCHEMA", "Effect.1"},
         {"effect_name", "aveffect.spherize"},
         {"metadata",
          {{"aveffect", {{"keyframes", {{"spherize_scale", {{{"time", 0}, {"value", 1}}}}}}}},
           {"theirs", 3}}}});
    Write(film);
    const std::string place = "tracks[0].children[2].effects[0]";
    const Outcome done = On("set", {place, "preset=bulge", "spherize_scale=0.5", "mix=0.25", "enabled=off"});
    ASSERT_EQ(done.exitCode, 0) << done.messages;
    ordered_json& effect = Item(film, 0, 2)["effects"][0];
    effect["enabled"] = false;
    effect["metadata"]["aveffect"] = {
        {"preset", "bulge"}, {"settings", {{"spherize_scale", 0.5}}}, {"mix", 0.25}};
    EXPECT_EQ(nlohmann::json(Film()), nlohmann::json(film));

    const std::string before = ReadFile(Path("film.otio"));
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } wrong[] = {
        {{place, "spherize_skale=1"}, "did you mean 'spherize_scale'?"},
        {{place, "enabled=on", "mix=0.5", "spherize_x=-5"}, "spherize_x of spherize"},
        {{place, "mix"}, "write SETTING=VALUE"},
        {{"tracks[0].children[1]", "effect=gray"}, "gray is no transition"},
        {{"tracks[0].children[0]", "mix=1"}, "is a Clip, no effect or transition"},
        {{"tracks[7]", "mix=1"}, "'children' has 2 there"},
    };
    for (const auto& one : wrong) {
        const Outcome refused = On("set", one.arguments);
        EXPECT_EQ(refused.exitCode, 2) << one.message;
        EXPECT_NE(refused.messages.find(one.message), std::string::npos) << refused.messages;
        EXPECT_TRUE(ReadFile(Path("film.otio")) == before);
    }
    EXPECT_EQ(On("set", {"tracks[0].children[1]", "effect=crossfade", "-o", "other.otio"}).exitCode, 0);
    EXPECT_TRUE(ReadFile(Path("film.otio")) == before);
    EXPECT_NE(ReadFile(Path("other.otio")), before);
}

} // namespace
} // namespace test
