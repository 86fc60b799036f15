// Any bytes as the clip of a whole run: opened, decoded, drawn on, encoded, closed, and the output read
// again. Two bytes stand before the file: what is made of it, and with which effect.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "aveffect/catalogue.h"
#include "fuzz/media_mutation.h"
#include "host/jobs/render.h"
#include "host/media/source.h"
#include "host/support/log_capture.h"

namespace {

using namespace aveffect;
namespace fs = std::filesystem;

constexpr size_t kHeader = 2;
constexpr int64_t kMostPictures = 6;
const std::atomic<bool> kNever = false;

/// Where outputs go; gone with the process unless it fails.
class Folder {
public:
    Folder() { fs::create_directories(m_path); }
    ~Folder() { fs::remove_all(m_path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    static std::string File(const char* name) {
        static const Folder folder;
        return folder.m_path / name;
    }

private:
    fs::path m_path = fs::temp_directory_path() / ("aveffect-fuzz-" + std::to_string(getpid()));
};

/// Throws what makes the run count as failed.
void RequirePictures(const std::string& output, int64_t count) {
    Source source({output}, Source::Others::None, 1, kNever);
    int64_t found = 0;
    while (const std::optional<SourceItem> item = source.Next()) found += item->picture ? 1 : 0;
    if (found != count)
        throw std::logic_error(output + " holds " + std::to_string(found) + " pictures, not " +
                               std::to_string(count));
}

void RenderThe(const Plugin& plugin, const std::string& input, unsigned kind, const EffectSpec& effect) {
    static constexpr const char* kNames[] = {"copied.mkv", "coded.mp4", "silent.avi", "sound.wav"};
    RenderOptions options;
    options.input = input;
    options.output = Folder::File(kNames[kind]);
    options.overwrite = true;
    options.threads = 1;
    if (kind < 3) {
        options.frameLimit = kMostPictures;
        options.effects = {effect};
    }
    if (kind == 0) options.videoCodec = "ffv1";
    if (kind == 1) {
        options.videoCodec = "mpeg4";
        options.audioCodec = "aac";
    }
    if (kind == 2) {
        options.videoCodec = "mjpeg";
        options.streams.sound = false;
    }
    if (kind == 3) options.audioEffects = {ParseEffect("volume", false, Medium::Audio)};
    const RenderResult result = Render(plugin, options, {}, kNever);
    if (kind < 3) RequirePictures(options.output, result.frames);
}

void FrameOf(const Plugin& plugin, const std::string& input, int64_t atMs, const EffectSpec& effect) {
    FrameOptions options;
    options.input = input;
    options.output = Folder::File("frame.png");
    options.overwrite = true;
    options.threads = 1;
    options.atMs = atMs;
    options.effects = {effect};
    RenderFrame(plugin, options, {}, kNever);
    RequirePictures(options.output, 1);
}

void Run(const std::string& input, uint8_t kind, uint8_t choice) {
    static const Plugin plugin(AVEFFECT_BIN_DIR);
    const AVBased::EffectInfo& info = AVBased::kVideoEffects[choice % AVBased::kVideoEffects.size()];
    const EffectSpec effect{info.name, {}};
    if (kind % 5 < 4) {
        RenderThe(plugin, input, kind % 5, effect);
    } else {
        FrameOf(plugin, input, int64_t{choice} * 8, effect);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < kHeader) return 0;
    CaptureLibraryLog();
    static const int file = memfd_create("clip", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    const size_t bytes = size - kHeader;
    if (ftruncate(file, 0) != 0 || pwrite(file, data + kHeader, bytes, 0) != static_cast<ssize_t>(bytes))
        throw std::runtime_error("the clip could not be laid down");
    try {
        Run(path, data[0], data[1]);
    } catch (const Error& error) {
        if (error.what() == std::string()) std::abort();
    } catch (const std::bad_alloc&) { // what a header claims may be more than there is
    }
    return 0;
}

extern "C" __attribute__((weak)) size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t room);

/// Half of the changes know what the file is made of; there are no others where nothing guides them.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t room, unsigned seed) {
    const bool guided = LLVMFuzzerMutate && seed % 2;
    if (size <= kHeader || guided) return guided ? LLVMFuzzerMutate(data, size, room) : size;
    if (seed % 3 == 0) data[0] = static_cast<uint8_t>(seed / 3);
    if (seed % 3 == 1) data[1] = static_cast<uint8_t>(seed / 3);
    const std::string file(reinterpret_cast<const char*>(data) + kHeader, size - kHeader);
    const std::string changed = fuzzing::MutateMedia(file, seed);
    const size_t bytes = std::min(changed.size(), room - kHeader);
    std::copy_n(changed.data(), bytes, data + kHeader);
    return kHeader + bytes;
}
