// Any bytes as a media file, read through the host's manager as a transition and a replaced soundtrack read
// theirs.
#include <sys/mman.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>

#include "aveffect/audio_frame.h"
#include "aveffect/video_frame.h"
#include "host/media/media_manager.h"
#include "tests/support/input_bytes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace AVBased;
    static const int file = memfd_create("media", 0);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size))
        throw std::runtime_error("the media could not be laid down");
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    unsigned streams = 0, width = 0, height = 0, duration = 0;
    IAVReader* opened = nullptr;
    try {
        opened =
            aveffect::MediaManager().OpenSource(path.c_str(), nullptr, &streams, &width, &height, &duration);
    } catch (const std::exception&) {
        return 0;
    }
    const std::unique_ptr<IAVReader, void (*)(IAVReader*)> reader(opened, [](IAVReader* r) { r->Release(); });
    for (const unsigned seek : {0u, duration / 2, 0xFFFFFFFFu}) {
        for (int items = 0; items < 12; ++items) {
            AVItem item{nullptr, -1, 0, 0xFFFFFFFF, 0};
            if (!reader->ReadItem(&item, items % 2 ? 1u : 0u, 0xFFFFFFFF)) break;
            if (item.kind == 1 && item.object) static_cast<IRawVideoFrame*>(item.object)->Clone()->Free();
            if (item.kind == 2 && item.object) {
                unsigned bytes = 0;
                static_cast<IRawAudioFrame*>(item.object)->GetBuffer(0, &bytes);
            }
        }
        reader->Seek(seek);
    }
    return 0;
}
