// A host with frames of its own: YUV 4:2:0 pictures come on standard input, go through one effect where they
// lie in this program's memory, and leave on standard output.
//
//   ffmpeg -i in.mp4 -f rawvideo -pix_fmt yuv420p - | own_frames_host 640 360 reverse mirror=1 |
//     ffplay -f rawvideo -pixel_format yuv420p -video_size 640x360 -
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "aveffect/base_tools.h"
#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "aveffect/plugin.h"

namespace {

constexpr int kMillisecondsAPicture = 40;

/// The thread's record says what went wrong: operations of the plug-in never throw.
[[noreturn]] void Fail(const std::string& what) {
    throw std::runtime_error(what + ": " + GetBaseException()->GetExceptionMsg());
}

struct Free {
    void operator()(AVBased::IVideoProc* effect) const { effect->Free(); }
};
using Effect = std::unique_ptr<AVBased::IVideoProc, Free>;

Effect MakeEffect(const char* name) {
    // Loaded for as long as the program runs.
    static void* const library = dlopen(PLUGIN_DIR "/libAVEffect.so", RTLD_NOW);
    if (!library) throw std::runtime_error(dlerror());
    const auto create = reinterpret_cast<decltype(&CreateVideoProc)>(dlsym(library, "CreateVideoProc"));
    Effect effect(create(nullptr, name));
    if (!effect) Fail(name);
    return effect;
}

/// "property=value", in the plug-in's own form: switches are 0 and 1.
void Set(AVBased::IVideoProc& effect, const std::string& setting) {
    const size_t equals = setting.find('=');
    if (equals == std::string::npos) throw std::runtime_error(setting + ": settings are property=value");
    if (!effect.SetProperty(setting.substr(0, equals).c_str(), setting.substr(equals + 1).c_str()))
        Fail(setting);
}

/// One picture in memory of the program's: the planes one behind the other, as they come.
class Picture {
public:
    Picture(unsigned width, unsigned height)
        : m_bytes(size_t{width} * height * 3 / 2)
        , m_frame(AVBased::YUV420P, width, height, PlanesOf(m_bytes.data(), width, height)) {}

    bool Read() { return std::fread(m_bytes.data(), 1, m_bytes.size(), stdin) == m_bytes.size(); }
    void Write() const {
        if (std::fwrite(m_bytes.data(), 1, m_bytes.size(), stdout) != m_bytes.size())
            throw std::runtime_error("can't write to standard output");
    }
    AVBased::MemoryFrame& Frame() { return m_frame; }

private:
    static std::vector<AVBased::MemoryFrame::Plane> PlanesOf(unsigned char* bytes, unsigned width,
                                                             unsigned height) {
        const unsigned luma = width * height, chroma = luma / 4;
        return {{bytes, width, width, height},
                {bytes + luma, width / 2, width / 2, height / 2},
                {bytes + luma + chroma, width / 2, width / 2, height / 2}};
    }

    std::vector<unsigned char> m_bytes;
    AVBased::MemoryFrame m_frame; ///< shows the bytes to effects and owns nothing
};

unsigned EvenNumber(const char* text) {
    const unsigned long number = std::strtoul(text, nullptr, 10);
    if (number == 0 || number > 16384 || number % 2 != 0)
        throw std::runtime_error(std::string(text) + ": sizes are even, from 2 to 16384");
    return static_cast<unsigned>(number);
}

void Run(int count, char** arguments) {
    if (count < 4) throw std::runtime_error("own_frames_host WIDTH HEIGHT EFFECT [PROPERTY=VALUE...]");
    Picture picture(EvenNumber(arguments[1]), EvenNumber(arguments[2]));
    const Effect effect = MakeEffect(arguments[3]);
    for (int i = 4; i < count; ++i) Set(*effect, arguments[i]);

    AVBased::ImagePostion position{};
    for (int time = 0; picture.Read(); time += kMillisecondsAPicture) {
        GetBaseException()->Clear();
        picture.Frame().SetTimeStamp(time);
        effect->ProcFrameInPlace(&position, time, &picture.Frame());
        if (GetBaseException()->GetExceptionCode() != 0) Fail(arguments[3]);
        picture.Write();
    }
}

} // namespace

int main(int count, char** arguments) {
    try {
        Run(count, arguments);
    } catch (const std::exception& error) {
        return std::fprintf(stderr, "%s\n", error.what()), 1;
    }
}
