#include "tests/host/clips.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace clips {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (fs::temp_directory_path() / "host_test_XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary directory");
    m_path = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::vector<std::string> TemporaryDirectory::Entries() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_path))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

Bytes Run(const std::string& command) {
    struct Closer {
        void operator()(FILE* pipe) const { pclose(pipe); }
    };
    std::unique_ptr<FILE, Closer> pipe(popen(command.c_str(), "r"));
    if (!pipe) throw std::runtime_error("can't run " + command);
    Bytes output;
    std::array<unsigned char, 65536> part{};
    while (const size_t count = fread(part.data(), 1, part.size(), pipe.get()))
        output.insert(output.end(), part.data(), part.data() + count);
    if (pclose(pipe.release()) != 0) throw std::runtime_error("failed: " + command);
    return output;
}

std::string RunText(const std::string& command) {
    const Bytes output = Run(command);
    std::string text(output.begin(), output.end());
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

std::string Make(const std::string& path, const std::string& size, int rate, double seconds,
                 const std::string& options, bool sound) {
    // The test picture is only made in even sizes, so it is cut to the wanted one where no chroma gets in the
    // way.
    int width = 0, height = 0;
    char by = 0;
    std::istringstream(size) >> width >> by >> height;
    std::ostringstream command;
    command << "ffmpeg -v error -nostdin -y -f lavfi -i testsrc2=s=" << width + 16 - width % 2 << "x"
            << height + 16 - height % 2 << ":r=" << rate << ":d=" << seconds << ",format=gbrp,crop=" << width
            << ":" << height << ":0:0";
    if (sound) command << " -f lavfi -i sine=f=440:d=" << seconds;
    command << " " << options << " " << path;
    Run(command.str());
    return path;
}

std::string MakeSound(const std::string& path, const std::string& options) {
    Run("ffmpeg -v error -nostdin -y -f lavfi -i \"aevalsrc='0.4*sin(2*PI*(300+200*t)*t)|"
        "0.3*sin(2*PI*(900-90*t)*t)':s=48000:d=0.7\" " +
        options + " " + path);
    return path;
}

Bytes DecodeSound(const std::string& path, const std::string& form) {
    return Run("ffmpeg -v error -nostdin -i " + path + " -map 0:a " + form + " -");
}

Bytes Decode(const std::string& path, const std::string& inputOptions) {
    return Run("ffmpeg -v error -nostdin -noautorotate " + inputOptions + " -i " + path +
               " -map 0:v -fps_mode passthrough -f rawvideo -");
}

std::string Probe(const std::string& path, const std::string& entry) {
    return RunText("ffprobe -v error -select_streams v:0 -show_entries stream=" + entry +
                   " -of default=nw=1:nk=1 " + path);
}

std::vector<std::string> Packets(const std::string& path, const std::string& stream,
                                 const std::string& entries) {
    std::istringstream text(RunText("ffprobe -v error -select_streams " + stream +
                                    " -show_entries packet=" + entries + " -of csv=p=0 " + path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

std::string PacketSum(const std::string& path, const std::string& stream) {
    return RunText("ffmpeg -v error -nostdin -i " + path + " -map 0:" + stream + " -c copy -f md5 -");
}

Bytes InvertYuv(Bytes pictures, int width, int height, int chromaShiftX, int chromaShiftY, bool alpha) {
    const auto up = [](int size, int shift) { return (size + (1 << shift) - 1) >> shift; };
    const ptrdiff_t luma = ptrdiff_t{width} * height;
    const ptrdiff_t colours = luma + ptrdiff_t{2} * up(width, chromaShiftX) * up(height, chromaShiftY);
    const ptrdiff_t picture = colours + (alpha ? luma : 0);
    for (ptrdiff_t at = 0; at < std::ssize(pictures); ++at)
        if (at % picture < colours)
            pictures[static_cast<size_t>(at)] =
                static_cast<unsigned char>(255 - pictures[static_cast<size_t>(at)]);
    return pictures;
}

const aveffect::Plugin& ThePlugin() {
    static const aveffect::Plugin plugin(AVEFFECT_BIN_DIR);
    return plugin;
}

aveffect::RenderResult Render(const aveffect::RenderOptions& options, const std::atomic<bool>& cancel) {
    return aveffect::Render(ThePlugin(), options, {}, cancel);
}

aveffect::RenderResult Render(const std::string& input, const std::string& output, const std::string& codec,
                              const std::vector<std::string>& effects) {
    aveffect::RenderOptions options;
    options.input = input;
    options.output = output;
    options.videoCodec = codec;
    for (const std::string& effect : effects) options.effects.push_back(aveffect::ParseEffect(effect, false));
    const std::atomic<bool> cancel{false};
    return Render(options, cancel);
}

void ExpectFailure(const Failure& failure, aveffect::ErrorKind kind, const std::string& word) {
    EXPECT_TRUE(failure.failed) << word;
    EXPECT_EQ(failure.kind, kind) << failure.text;
    EXPECT_NE(failure.text.find(word), std::string::npos) << failure.text;
    EXPECT_EQ(failure.text.find('\n'), std::string::npos) << failure.text;
}

} // namespace clips
