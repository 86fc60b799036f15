// The modules in the programs that load them. Pictures are compared by what the tap beside them saw, so that
// the programs' own conversions and encoders don't count.
#include <cctype>

#include "tests/adapters/frei0r_hosts.h"

namespace {

using namespace test;

using Filters = std::vector<FilterCase>;

class Filtering : public Hosts {
protected:
    std::map<std::string, std::string> InFfmpeg(Size size, const Filters& filters) const;
    std::map<std::string, std::string> InGStreamer(Size size, const Filters& filters) const;
    std::map<std::string, std::string> InMelt(const Filters& filters) const;
    std::map<std::string, std::string> InAveffect(Size size, const Filters& filters) const;
};

// The parameters' values in the words of a host that knows them by name.
template <class Word>
void ForValues(const FilterCase& filter, Word word) {
    const Module module(ModuleName(filter.effect));
    std::istringstream values{std::string(filter.values)};
    size_t index = 0;
    for (std::string value; std::getline(values, value, '|'); ++index)
        word(module.parameters.at(index), static_cast<int>(index), value);
}

std::map<std::string, std::string> Filtering::InFfmpeg(Size size, const Filters& filters) const {
    std::string graph = "split=" + std::to_string(filters.size() + 1) + "[rest]", uses;
    for (const FilterCase& filter : filters) {
        const std::string name(filter.effect), values(filter.values);
        std::string separated;
        for (const char letter : values)
            separated += letter == '#' ? std::string("0x") : std::string(1, letter);
        graph += "[" + name + "]";
        uses += ";[" + name + "]frei0r=" + ModuleName(name) + ":" + separated + ",frei0r=tap:" + name +
                ",nullsink";
    }
    Run({"ffmpeg", "-v", "error", "-f", "rawvideo", "-pixel_format", "bgra", "-video_size", size.Text(), "-i",
         "picture", "-filter_complex", "[0]" + graph + uses, "-map", "[rest]", "-f", "null", "-"});
    return Hashes();
}

// Names in lower case with dashes; colours in three parts.
std::string GstName(std::string name) {
    for (char& letter : name) letter = letter == '_' ? '-' : static_cast<char>(std::tolower(letter));
    return name;
}

std::map<std::string, std::string> Filtering::InGStreamer(Size size, const Filters& filters) const {
    std::string pipeline = Raw("picture", size) + " ! tee name=all";
    for (const FilterCase& filter : filters) {
        const std::string name(filter.effect);
        pipeline += " all. ! queue ! frei0r-filter-aveffect-" + name;
        ForValues(filter, [&](const f0r_param_info_t& parameter, int, const std::string& value) {
            const std::string property = " " + GstName(parameter.name);
            if (parameter.type == F0R_PARAM_COLOR)
                for (const auto& [part, place] : {std::pair("-r=", 1), {"-g=", 3}, {"-b=", 5}})
                    pipeline +=
                        property + part +
                        std::to_string(std::stoi(value.substr(static_cast<size_t>(place), 2), nullptr, 16) /
                                       255.0);
            else
                pipeline += property + "=" + (value == "y" ? "true" : value == "n" ? "false" : value);
        });
        pipeline += " ! frei0r-filter-tap label=" + name + " ! fakesink";
    }
    Gst(pipeline);
    return Hashes();
}

// By name and by position in turn.
std::map<std::string, std::string> Filtering::InMelt(const Filters& filters) const {
    std::vector<std::string> words;
    for (const FilterCase& filter : filters) {
        words.insert(words.end(), {"avformat:picture.mkv", "in=0", "out=0", "-attach-cut",
                                   "frei0r." + ModuleName(filter.effect)});
        ForValues(filter, [&](const f0r_param_info_t& parameter, int index, const std::string& value) {
            const std::string name = index % 2 ? parameter.name : std::to_string(index);
            words.push_back(name + "=" + (value == "y" ? "1" : value == "n" ? "0" : value));
        });
        words.insert(words.end(), {"-attach-cut", "frei0r.tap", "label=" + std::string(filter.effect)});
    }
    Melt(words);
    return Hashes();
}

std::map<std::string, std::string> Filtering::InAveffect(Size size, const Filters& filters) const {
    int number = 0;
    for (const FilterCase& filter : filters) {
        const Outcome outcome = Aveffect({"frame", "picture.mkv", std::to_string(number++) + ".png",
                                          "--overwrite", "--pixel-format", "bgra", "-e",
                                          std::string(filter.effect) + std::string(filter.properties)});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
    }
    Ffmpeg({"-i", Path("%d.png"), "-pix_fmt", "bgra", "-f", "rawvideo", Path("pictures")});
    const std::string bytes = ReadFile(Path("pictures"));
    const size_t count = size_t{size.width} * size.height;
    EXPECT_EQ(bytes.size(), filters.size() * count * 4);
    std::map<std::string, std::string> hashes;
    const auto* pixels = reinterpret_cast<const uint32_t*>(bytes.data());
    for (const FilterCase& filter : filters) {
        hashes[std::string(filter.effect)] = HashText(pixels, count);
        pixels += count;
    }
    return hashes;
}

// All filters in small pictures, each n-th in others.
struct Trial {
    Size size;
    size_t each;
};

class SameBytes : public Filtering, public ::testing::WithParamInterface<Trial> {};

TEST_P(SameBytes, EverywhereAsFromTheProgram) {
    const auto [size, each] = GetParam();
    Filters filters;
    for (size_t i = 0; i < std::size(kFilterCases); i += each) filters.push_back(kFilterCases[i]);
    const auto picture = MakePicture("picture", size);
    const std::string untouched = HashText(picture.data(), picture.size());
    const auto expected = InAveffect(size, filters);
    std::map<std::string, std::map<std::string, std::string>> hosts = {
        {"melt", InMelt(filters)}, {"GStreamer", InGStreamer(size, filters)}};
    // It hands rows of other widths over with padding between them.
    if (size.width % 16 == 0) hosts["ffmpeg"] = InFfmpeg(size, filters);
    for (const auto& [host, hashes] : hosts)
        for (const auto& [effect, hash] : expected) {
            ASSERT_TRUE(hashes.contains(effect)) << effect << " did not run in " << host;
            EXPECT_NE(hashes.at(effect), untouched) << effect << " changes nothing in " << host;
            EXPECT_TRUE(DrawsRandom(effect) || hashes.at(effect) == hash) << effect << " in " << host;
        }
}
INSTANTIATE_TEST_SUITE_P(Frei0r, SameBytes,
                         ::testing::Values(Trial{{176, 145}, 1}, Trial{{321, 243}, 5}, Trial{{720, 576}, 7},
                                           Trial{{3840, 2160}, 38}),
                         [](const auto& test) { return test.param.size.Text(); });

// A module says once in its process why it passes pictures on, whatever is missing beside it; people may link
// modules to where their programs look.
TEST_F(Hosts, PassPicturesOnWithoutTheEffects) {
    namespace fs = std::filesystem;
    MakePicture("picture", {64, 48});
    const fs::path lib = m_directory / "lib", linked = m_directory / "linked", modules = lib / "frei0r-1",
                   effects = lib / "aveffect";
    for (const fs::path& folder : {modules, effects, linked}) fs::create_directories(folder);
    for (const char* const name : {"libaveffect_frei0r.so", "aveffect_gray.so"}) {
        fs::copy(fs::path(AVEFFECT_MODULE_DIR) / name, modules);
        fs::create_symlink(modules / name, linked / name);
    }
    const fs::path plugin = effects / "libAVEffect.so", media = effects / "libAVBaseMedia.so";
    const auto run = [&](const char* folder) {
        setenv("FREI0R_PATH", (std::string(folder) + ":" AVEFFECT_TAP_DIR).c_str(), 1);
        const std::string gray = "frei0r=aveffect_gray";
        std::string words =
            Run({"ffmpeg", "-v", "error", "-i", "picture.mkv", "-vf",
                 "frei0r=tap:before," + gray + "," + gray + ",frei0r=tap:after", "-f", "null", "-"});
        auto hashes = Hashes();
        EXPECT_EQ(hashes["before"] == hashes["after"], !words.empty());
        return words;
    };
    const auto expectOneLine = [&](const std::string& part) {
        const std::string words = run("lib/frei0r-1");
        EXPECT_TRUE(IsOneMessage(words)) << words;
        EXPECT_NE(words.find(part), std::string::npos) << words;
    };
    expectOneLine("libAVEffect.so: cannot open");
    for (const char* const name : {"libAVEffect.so", "libAVBaseTools.so"})
        fs::copy(fs::path(AVEFFECT_BIN_DIR) / name, effects);
    expectOneLine("libAVBaseMedia.so: cannot open");
    fs::copy(fs::path(AVEFFECT_BIN_DIR) / "libAVBaseMedia.so", effects);
    EXPECT_EQ(run("lib/frei0r-1"), "");
    EXPECT_EQ(run("linked"), "");
    fs::copy_file(media, plugin, fs::copy_options::overwrite_existing);
    expectOneLine("CreateVideoProc");
    fs::copy_file(OTHER_PLUGIN, plugin, fs::copy_options::overwrite_existing);
    expectOneLine("gray passes pictures on: the plug-in can't make it");
}

// Per frame: keyframes from melt's text, commands from ffmpeg's.
TEST_F(Hosts, ChangeParametersOnTheWay) {
    const auto picture = MakePicture("picture", {64, 48}, 1, 4);
    const Module fade("aveffect_fade_out_color");
    const Effect effect(fade, 64, 48);
    const auto at = [&](const std::string& progress) {
        std::vector<uint32_t> out(picture.size());
        effect.Set(progress);
        effect.Update(picture.data(), out.data());
        return HashText(out.data(), out.size());
    };
    Melt({"avformat:picture.mkv", "in=0", "out=3", "-attach", "frei0r.aveffect_fade_out_color",
          "progress=0=0;2=0.5;3=1", "-attach", "frei0r.tap", "label=melt"});
    // It draws some pictures more than once.
    std::map<std::string, std::string> wanted = {{"0", "0"},
                                                 {"0.04", "0.25"},
                                                 {"0.08", "0.5"},
                                                 {"0.12", "1"}},
                                       seen;
    for (const Seen& tap : Taps()) seen[tap.time] += seen[tap.time] == tap.hash ? "" : tap.hash;
    for (auto& [time, progress] : wanted) progress = at(progress);
    EXPECT_EQ(seen, wanted);
    WriteFile(Path("commands"), "0.06 frei0r@fade filter_params 0.75;");
    Run({"ffmpeg", "-v", "error", "-i", "picture.mkv", "-vf",
         "sendcmd=f=commands,frei0r@fade=aveffect_fade_out_color:0.25,frei0r=tap:ffmpeg", "-f", "null", "-"});
    const std::vector<Seen> ffmpeg = Taps();
    ASSERT_EQ(ffmpeg.size(), 4u);
    EXPECT_EQ(ffmpeg[0].hash, at("0.25"));
    EXPECT_EQ(ffmpeg[3].hash, at("0.75"));
}

TEST_F(Hosts, MixTheirPicturesAsTheModulesDo) {
    constexpr Size kSize = {64, 48};
    const auto first = MakePicture("first", kSize, 1, 3), second = MakePicture("second", kSize, 2, 3);
    std::string pipelines;
    std::map<std::string, std::string> expected;
    for (const auto& row : AVBased::kVideoEffects) {
        if (row.kind != AVBased::EffectKind::Transition) continue;
        const std::string name(row.shortName), module = ModuleName(name);
        const Module mixer(module);
        const Effect effect(mixer, kSize.width, kSize.height);
        std::vector<uint32_t> out(first.size());
        effect.Set("0.5");
        effect.Update(first.data(), out.data(), second.data());
        expected[name] = HashText(out.data(), out.size());
        EXPECT_NE(expected[name], HashText(first.data(), first.size())) << name;
        pipelines += "frei0r-mixer-aveffect-" + name + " name=" + module +
                     " progress=0.5 ! frei0r-filter-tap label=" + name + " ! fakesink " +
                     Raw("first", kSize) + " ! " + module + ".sink_0 " + Raw("second", kSize) + " ! " +
                     module + ".sink_1 ";
        Melt({"avformat:first.mkv", "out=2", "avformat:second.mkv", "out=2", "-mix", "3", "-mixer",
              "frei0r." + module, "progress=0.5", "-filter", "frei0r.tap", "label=" + name});
        const std::vector<Seen> melt = Taps();
        EXPECT_NE(std::ranges::find(melt, expected[name], &Seen::hash), melt.end()) << name << " in melt";
    }
    Gst(pipelines);
    EXPECT_EQ(Hashes(), expected);
}

/// How far two clips' first pictures are apart, as a mean over their samples.
double Distance(const std::string& a, const std::string& b) {
    double sum = 0;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        sum += std::abs(static_cast<uint8_t>(a[i]) - static_cast<uint8_t>(b[i]));
    return sum / static_cast<double>(std::max<size_t>(1, std::min(a.size(), b.size())));
}

// As a person does who has installed the modules: the commands work as they stand there, and change what they
// are given.
TEST_F(Hosts, RunTheGuidesCommands) {
    std::filesystem::create_directory_symlink(AVEFFECT_BIN_DIR "/..", Path(".local"));
    Ffmpeg({"-f", "lavfi", "-i", "testsrc=s=320x240:d=2", "-pix_fmt", "yuv420p", "-c:v", "libx264",
            Path("in.mp4")});
    Ffmpeg({"-f", "lavfi", "-i", "testsrc=s=320x240:d=1", "-frames:v", "1", Path("in.png")});
    Ffmpeg({"-f", "lavfi", "-i", "mandelbrot=s=320x240", "-t", "2", "-pix_fmt", "yuv420p", "-c:v", "libx264",
            Path("next.mp4")});
    const std::string guide = ReadFile(AVEFFECT_SOURCE_DIR "/docs/in-other-programs.md");
    const size_t chapter = guide.find("\n## Pictures"), end = guide.find("\n## ", chapter + 1);
    constexpr std::string_view kBegin = "```sh\n";
    std::string setUp;
    size_t made = 0;
    for (size_t at = chapter; (at = guide.find(kBegin, at)) < end;) {
        at += kBegin.size();
        const std::string commands = guide.substr(at, guide.find("```", at) - at);
        if (setUp.empty()) {
            setUp = commands;
            Run({"env", "HOME=" + m_directory.string(), "sh", "-euc", setUp});
            continue;
        }
        const std::string words =
            Run({"env", "-u", "FREI0R_PATH", "HOME=" + m_directory.string(), "bash", "-euc", commands});
        EXPECT_EQ(words.find("aveffect:"), std::string::npos) << words;
        for (const std::string& name : Names()) {
            if (!name.starts_with("out")) continue;
            EXPECT_GT(Distance(Pixels("in.mp4"), Pixels(name)), 2.0) << commands; // encoders alone: below 1
            std::filesystem::remove(Path(name));
            ++made;
        }
    }
    EXPECT_EQ(made, 8u);
}

} // namespace
