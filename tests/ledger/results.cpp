#include <array>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <stdexcept>

extern "C" {
#include <libavutil/md5.h>
#include <libavutil/mem.h>
}

#include "aveffect/base_tools.h"
#include "tests/ledger/ledger.h"
#include "tests/support/host_manager.h"
#include "tests/support/plugin.h"

namespace ledger {

using namespace AVBased;

namespace {

using test::HostFrame;
using test::HostSound;

class Md5 {
public:
    Md5()
        : m_state(av_md5_alloc(), av_free) {
        if (!m_state) throw std::bad_alloc();
        av_md5_init(m_state.get());
    }
    void Add(const void* bytes, size_t count) {
        av_md5_update(m_state.get(), static_cast<const uint8_t*>(bytes), count);
    }
    std::string Text() {
        std::array<uint8_t, 16> digest{};
        av_md5_final(m_state.get(), digest.data());
        std::string text;
        for (const uint8_t byte : digest)
            for (const int digit : {byte >> 4, byte & 15}) text += "0123456789abcdef"[digit];
        return text;
    }

private:
    std::unique_ptr<AVMD5, decltype(&av_free)> m_state;
};

// Colours that effects look for: black, white, red, green, blue, and a grey; B, G, R and Y, U, V.
constexpr unsigned char kPatches[6][2][3] = {
    {{0, 0, 0}, {16, 128, 128}},   {{255, 255, 255}, {235, 128, 128}}, {{0, 0, 255}, {82, 90, 240}},
    {{64, 177, 0}, {122, 95, 53}}, {{255, 0, 0}, {41, 240, 110}},      {{126, 127, 128}, {125, 127, 128}}};

// Repeats only after more than any picture has; every computer has the same.
unsigned Grain(unsigned x, unsigned y, unsigned number) {
    unsigned n = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ number * 0xC2B2AE3Du;
    n = (n ^ n >> 15) * 0x2C1B3C6Du;
    n = (n ^ n >> 12) * 0x297A2D39u;
    return n ^ n >> 15;
}

// A byte of the picture: patches above, then what is soft, what has edges, and what is nothing but grain.
unsigned ByteAt(unsigned component, unsigned x, unsigned y, unsigned width, unsigned height, bool packed,
                unsigned number) {
    const unsigned grain = Grain(4 * x + component, y, number);
    if (y * 6 < height && component < 3)
        return kPatches[(x * 6 / width + number) % 6][packed ? 0 : 1][component];
    const unsigned soft =
        (x * (150 + 20 * component) / width + y * 100 / height + 31 * number + 40 * component);
    if (x * 3 < width) return soft + grain % 4;
    if (x * 3 < 2 * width)
        return (x / 7 + y / 5 + component + number) % 2 ? 225 - component * 9 : 30 + soft / 8;
    return grain >> 8;
}

// The generator of random numbers is the process's, and some settings seed it by the clock: who draws has it
// alone from before the settings on.
std::unique_lock<std::mutex> RandomTurn(const EffectInfo& effect) {
    static std::mutex mutex;
    return effect.traits & kDrawsRandom ? std::unique_lock(mutex) : std::unique_lock<std::mutex>();
}

template <class Proc>
Proc WithSettings(Proc proc, const Subject& of) {
    const auto set = [&](const std::string& name, const std::string& text) {
        if (!proc || !proc->SetProperty(name.c_str(), text.c_str()))
            throw std::runtime_error(of.spoken + " does not take " + name + "=" + text);
    };
    set("duration", std::to_string(kSpanMs));
    for (const auto& [name, text] : of.settings) set(name, text);
    return proc;
}

void RequireNoRecord(const Subject& of) {
    if (GetBaseException()->GetExceptionCode() != 0)
        throw std::runtime_error(of.spoken + ": " + GetBaseException()->GetExceptionMsg());
}

} // namespace

test::FramePtr MakePicture(unsigned format, unsigned width, unsigned height, unsigned number) {
    test::FramePtr frame(new HostFrame({format, width, height}));
    const bool packed = format == BGRA;
    frame->Fill([&](unsigned plane, unsigned x, unsigned y) {
        const HostFrame::Plane& of = frame->planes[plane];
        return packed ? ByteAt(x % 4, x / 4, y, width, height, true, number)
                      : ByteAt(plane, x, y, of.width, of.rows, false, number);
    });
    return frame;
}

test::FramePtr Input(const PictureCase& of) { return MakePicture(of.format, of.width, of.height, 1); }

HostSound Input(const SoundCase& of, unsigned piece) {
    HostSound sound(of.shape, piece * kPieceSamples * 1000 / kSoundRate);
    unsigned buffer = 0;
    for (auto& bytes : sound.buffers) {
        const size_t count = bytes.size() / test::SampleBytesOf(of.shape.format);
        for (size_t i = 0; i < count; ++i) {
            const auto at = static_cast<unsigned>(piece * count + i);
            // Numbers a little beyond what floating samples should have; whole ones are any bits.
            const auto grain = Grain(at, buffer, 9);
            const double value = (static_cast<double>(grain) / 2147483648.0 - 1.0) * 1.125;
            const auto single = static_cast<float>(value);
            unsigned char* const to = bytes.data() + i * test::SampleBytesOf(of.shape.format);
            if (of.shape.format == sfDouble)
                std::memcpy(to, &value, sizeof value);
            else if (of.shape.format == sfFloat)
                std::memcpy(to, &single, sizeof single);
            else
                std::memcpy(to, &grain, test::SampleBytesOf(of.shape.format));
        }
        ++buffer;
    }
    return sound;
}

std::string HashOf(HostFrame& frame) {
    Md5 hash;
    for (HostFrame::Plane& plane : frame.planes)
        for (unsigned y = 0; y < plane.rows; ++y)
            hash.Add(plane.Data() + size_t{y} * plane.pitch, plane.width);
    return hash.Text();
}

std::string HashOf(std::vector<HostSound>& sounds) {
    Md5 hash;
    for (HostSound& sound : sounds)
        for (const auto& buffer : sound.buffers) hash.Add(buffer.data(), buffer.size());
    return hash.Text();
}

std::string Made(const PictureCase& of) {
    const auto picture = [&](unsigned number) { return MakePicture(of.format, of.width, of.height, number); };
    const test::FramePtr frame = Input(of), second = picture(2), before = picture(3);
    test::HostManager manager;
    const test::FramePtr from = picture(1);
    manager.sources["first"].picture = from.get();
    manager.sources["second"].picture = second.get();
    const auto turn = RandomTurn(*of.effect);
    GetBaseException()->Clear();
    const auto proc = WithSettings(test::VideoProc(test::CreateVideo(of.effect->name, &manager)), of);
    if (turn) std::srand(kSeed);
    if (of.again) test::Run(*proc, *before, of.time);
    if (of.right) frame->subset = second.get();
    test::Run(*proc, *frame, of.time);
    RequireNoRecord(of);
    return HashOf(*frame);
}

std::string Made(const SoundCase& of) {
    std::vector<std::unique_ptr<HostSound>> played;
    for (unsigned piece = 7; piece < 9; ++piece)
        played.push_back(std::make_unique<HostSound>(Input(of, piece)));
    test::HostManager manager;
    manager.sources["sound"] = test::Playing(std::move(played));
    GetBaseException()->Clear();
    const auto proc = WithSettings(test::AudioProc(test::CreateAudio(of.effect->name, &manager)), of);
    std::vector<HostSound> pieces;
    for (unsigned piece = 0; piece < kPieces; ++piece) {
        pieces.push_back(Input(of, piece));
        proc->ProcFrameInPlace(&pieces.back());
    }
    RequireNoRecord(of);
    return HashOf(pieces);
}

std::map<std::string, std::string> Read(const std::string& path) {
    std::ifstream file(path);
    std::map<std::string, std::string> hashes;
    for (std::string line; std::getline(file, line);) {
        const size_t space = line.rfind(' ');
        if (space == std::string::npos || line.size() - space != 33)
            throw std::runtime_error(path + ": no line of a ledger: '" + line + "'");
        hashes[line.substr(0, space)] = line.substr(space + 1);
    }
    if (hashes.empty()) throw std::runtime_error(path + ": no ledger that can be read");
    return hashes;
}

} // namespace ledger
