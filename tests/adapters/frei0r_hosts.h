#pragma once
/// Programs that load the frei0r modules, and what a tap beside them sees.
#include <algorithm>
#include <map>
#include <random>
#include <sstream>

#include "tests/adapters/frei0r_modules.h"
#include "tests/adapters/picture_hash.h"
#include "tests/cli/program.h"

namespace test {

struct Size {
    unsigned width, height;
    std::string Text() const { return std::to_string(width) + "x" + std::to_string(height); }
};

/// What a tap wrote: label, size, address modulo 16, time, hash.
struct Seen {
    std::string label, size, address, time, hash;
};

inline std::string HashText(const uint32_t* pixels, size_t count) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(PictureHash(pixels, count)));
    return text;
}

class Hosts : public ProgramTest {
protected:
    Hosts() {
        FindFirstIn(AVEFFECT_SOURCE_DIR "/tests/adapters/programs");
        setenv("FREI0R_PATH", AVEFFECT_MODULE_DIR ":" AVEFFECT_TAP_DIR, 1);
        setenv("AVEFFECT_TAP", Path("tap").c_str(), 1);
        setenv("GST_REGISTRY", Path("registry").c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    // Runs a program that must succeed; returns what it wrote to standard error.
    std::string Run(const std::vector<std::string>& command) const {
        const Outcome outcome = RunningProgram(command, m_directory).Wait();
        EXPECT_EQ(outcome.exitCode, 0) << command.front() << ": " << outcome.messages;
        return outcome.messages;
    }
    std::string Melt(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"melt", "-silent"});
        arguments.insert(arguments.end(), {"-consumer", "null", "real_time=-1", "terminate_on_pause=1"});
        return Run(arguments);
    }
    // Words, as a shell parts them.
    std::string Gst(const std::string& pipeline) const {
        std::vector<std::string> command = {"gst-launch-1.0", "-q"};
        std::istringstream words(pipeline);
        for (std::string word; words >> word;) command.push_back(word);
        return Run(command);
    }
    // A picture with soft and hard edges, grain and alpha, so many times, as raw bytes and in a clip of raw
    // pictures.
    std::vector<uint32_t> MakePicture(const std::string& name, Size size, unsigned seed = 1,
                                      int frames = 1) const {
        std::mt19937 random(seed);
        std::vector<uint32_t> pixels(size_t{size.width} * size.height);
        for (size_t i = 0; i < pixels.size(); ++i) {
            const size_t x = i % size.width, y = i / size.width;
            const size_t soft = (x * 255 / size.width) << 16 | (y * 255 / size.height) << 8;
            pixels[i] = static_cast<uint32_t>((soft | ((x / 16 + y / 16) % 2 ? 200 : 30)) ^
                                              (i % 8 ? 0 : random() & 0xFF0F0F0F));
        }
        std::string bytes;
        while (frames-- > 0) bytes.append(reinterpret_cast<const char*>(pixels.data()), pixels.size() * 4);
        WriteFile(Path(name), bytes);
        Ffmpeg({"-y", "-f", "rawvideo", "-pixel_format", "bgra", "-video_size", size.Text(), "-i", Path(name),
                "-c:v", "ffv1", Path(name + ".mkv")});
        return pixels;
    }
    static std::string Raw(const std::string& name, Size size) {
        return "filesrc location=" + name + " blocksize=" + std::to_string(size.width * size.height * 4) +
               " ! rawvideoparse format=bgra framerate=25/1 width=" + std::to_string(size.width) +
               " height=" + std::to_string(size.height);
    }
    std::vector<Seen> Taps() const {
        std::vector<Seen> all;
        std::istringstream lines(ReadFile(Path("tap")));
        for (Seen seen; lines >> seen.label >> seen.size >> seen.address >> seen.time >> seen.hash;)
            all.push_back(seen);
        std::filesystem::remove(Path("tap"));
        return all;
    }
    // The hash behind each label; hosts that draw a picture again must draw the same one.
    std::map<std::string, std::string> Hashes() const {
        std::map<std::string, std::string> hashes;
        for (const Seen& seen : Taps()) {
            const auto [known, added] = hashes.emplace(seen.label, seen.hash);
            EXPECT_TRUE(added || DrawsRandom(seen.label) || known->second == seen.hash) << seen.label;
        }
        return hashes;
    }
};

} // namespace test
