// What the modules' ways and the guide's advice rest upon: when one of these fails, a host has changed, and
// both may.
#include "tests/adapters/frei0r_hosts.h"

namespace {

using namespace test;

class Quirks : public Hosts {
protected:
    Outcome RunFfmpeg(const std::string& filter, const std::string& size = "64x48") const {
        return RunningProgram({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=d=0.08:r=25:s=" + size,
                               "-vf", filter, "-f", "null", "-"},
                              m_directory)
            .Wait();
    }
};

// So no module asks for the time.
TEST_F(Quirks, FfmpegTellsMillisecondsOrNothingOfUse) {
    for (const char* const size : {"1280x720", "854x480"}) RunFfmpeg("frei0r=tap:x", size);
    const std::vector<Seen> seen = Taps();
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[1].time, "40");
    EXPECT_GT(std::abs(std::stod(seen[3].time)), 1e9);
}

// So the guide says to crop: what a module takes for a picture's end is not.
TEST_F(Quirks, FfmpegPadsRowsWithoutSayingSo) {
    for (const auto& [size, whole] : {std::pair(Size{320, 241}, true), {Size{321, 240}, false}}) {
        const auto picture = MakePicture("picture", size);
        Run({"ffmpeg", "-v", "error", "-i", "picture.mkv", "-vf", "frei0r=tap:x", "-f", "null", "-"});
        EXPECT_EQ(Taps().at(0).hash == HashText(picture.data(), picture.size()), whole) << size.Text();
    }
}

// So modules hold values to their ranges, and transitions are for other programs.
TEST_F(Quirks, FfmpegChecksNoRangesAndTakesNoMixers) {
    EXPECT_EQ(RunFfmpeg("frei0r=aveffect_edge_light:-5000").exitCode, 0);
    EXPECT_NE(RunFfmpeg("frei0r=aveffect_reverse:1").exitCode, 0) << "switches are y or n";
    const Outcome mixer = RunFfmpeg("frei0r=aveffect_push");
    EXPECT_NE(mixer.exitCode, 0);
    EXPECT_NE(mixer.messages.find("Invalid type"), std::string::npos) << mixer.messages;
}

// So kernels ask nothing of addresses, and the guide says to leave `threads` alone.
TEST_F(Quirks, MeltCutsPicturesWhereThreadsAreSet) {
    MakePicture("picture", {321, 244});
    Melt({"avformat:picture.mkv", "in=0", "out=0", "-attach", "frei0r.tap", "label=x", "threads=2"});
    const std::vector<Seen> slices = Taps();
    ASSERT_FALSE(slices.empty());
    EXPECT_TRUE(std::ranges::all_of(slices, [](const Seen& seen) { return seen.size == "321x122"; }));
    EXPECT_TRUE(std::ranges::any_of(slices, [](const Seen& seen) { return seen.address != "0"; }));
}

// So defaults don't depend on a picture's size: it sets what an instance of 640x480 told.
TEST_F(Quirks, GStreamerSetsEveryParameterAndHoldsItToItsRange) {
    const Size size = {64, 48};
    MakePicture("picture", size);
    const std::string pipeline = Raw("picture", size) + " ! frei0r-filter-aveffect-portrait",
                      tap = " ! frei0r-filter-tap label=";
    Gst(pipeline + tap + "default ! fakesink");
    Gst(pipeline + " portrait-width=5" + tap + "beyond ! fakesink");
    auto hashes = Hashes();
    EXPECT_FALSE(hashes["default"].empty());
    EXPECT_EQ(hashes["beyond"], hashes["default"]);
}

// So the guide's variable names the system's folders too.
TEST_F(Quirks, MeltLooksWhereItIsToldAlone) {
    setenv("FREI0R_PATH", AVEFFECT_TAP_DIR, 1);
    const Outcome listing = RunningProgram({"melt", "-query", "filters"}, m_directory).Wait();
    const std::string list = listing.output + listing.messages;
    EXPECT_NE(list.find("frei0r.tap"), std::string::npos);
    EXPECT_EQ(list.find("frei0r."), list.rfind("frei0r.")) << list;
}

// So each module is a file of its own.
TEST_F(Quirks, TheLoaderTakesLinksToOneFileForOneModule) {
    const std::string file = AVEFFECT_MODULE_DIR "/aveffect_gray.so";
    std::filesystem::create_symlink(file, Path("link.so"));
    void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(module, nullptr);
    EXPECT_EQ(module, dlopen(Path("link.so").c_str(), RTLD_NOW | RTLD_LOCAL));
}

} // namespace
