#include "host/media/media_manager.h"

#include "aveffect/base_tools.h"
#include "host/media/media_reader.h"

namespace aveffect {

MediaManager::MediaManager(const std::atomic<bool>* cancel)
    : m_cancel(cancel)
    , m_readers(std::make_shared<OpenReaders>()) {}

DamageReport MediaManager::Damage() const { return m_readers->Damage(); }

AVBased::IAVReader* MediaManager::OpenSource(const char* url, const char* /*options*/, unsigned* streams,
                                             unsigned* width, unsigned* height, unsigned* duration) {
    if (!url) {
        GetBaseException()->SetException(AVBased::kBadPointer, "Bad pointer", __LINE__, __FILE__);
        return nullptr;
    }
    const Canvas canvas = [this] {
        const std::scoped_lock lock(m_mutex);
        return m_canvas;
    }();
    auto* reader = new MediaReader(url, {canvas, m_framing, m_terms}, m_cancel, m_readers);
    if (streams) *streams = reader->Streams();
    if (width) *width = reader->Width();
    if (height) *height = reader->Height();
    if (duration) *duration = reader->GetDuration();
    return reader;
}

} // namespace aveffect
