#pragma once
/// The host's media access for processors: IAVManager on libavformat and libavcodec.
#include <atomic>
#include <memory>
#include <mutex>

#include "aveffect/media.h"
#include "host/media/damage.h"
#include "host/picture/fitting.h"
#include "host/picture/framing.h"
#include "host/picture/picture_intake.h"

namespace aveffect {

class OpenReaders;

/// Opens anything the installed libraries read. A URL is a path or protocol URL, optionally followed by "?"
/// and key=value pairs joined by "&", of which "vstreamid" and "astreamid" select streams by their index in
/// the file (bit 29 of the number is a flag and not part of the index). Pictures come in BGRA, brought there
/// by the matrix and range that they say, upright, and of square pixels unless others are asked for; sound
/// comes in one of the boundary's sample formats.
///
/// Different threads may open sources at the same time. Readers outlive it safely.
class MediaManager final : public AVBased::IAVManager {
public:
    /// The flag, if any, ends all waiting for sources; it outlives the manager and its readers.
    explicit MediaManager(const std::atomic<bool>* cancel = nullptr);

    /// Pictures of sources that are opened from now on are taken in on these terms, which outlive the
    /// manager and its readers.
    void TakeOn(IntakeTerms& terms) { m_terms = &terms; }

    /// Pictures of sources that are opened from now on have pixels of this canvas's shape and its primaries
    /// and transfer.
    void Match(const Canvas& canvas) {
        const std::scoped_lock lock(m_mutex);
        m_canvas = canvas;
    }

    /// Pictures of sources that are opened from now on are cut and scaled, as they are seen.
    void Frame(const Framing& framing) { m_framing = framing; }

    /// Throws Error (Input) and NoMemory, which effects tell of in the error record: where nothing is opened
    /// some of them have an assertion. Null, with a word in the record, for a null URL.
    AVBased::IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                   unsigned* height, unsigned* duration) override;

    /// What was found to be wrong with the sources so far. Call while nobody reads.
    DamageReport Damage() const;

private:
    const std::atomic<bool>* m_cancel;
    std::mutex m_mutex; ///< of the canvas
    Canvas m_canvas;
    Framing m_framing;
    IntakeTerms* m_terms = nullptr;
    std::shared_ptr<OpenReaders> m_readers;
};

} // namespace aveffect
