#pragma once
/// The host's media access, which it hands to the factories: transitions and audio replacement read files
/// through it.
#include <cstdint>

namespace AVBased {

/// One item read from a media source. The object belongs to the reader and is valid until its next ReadItem,
/// Seek or Release; who wants to keep it clones it.
struct AVItem {
    void* object;     ///< kind 1: an IRawVideoFrame*; kind 2: an IRawAudioFrame* (each as that pointer)
    int64_t position; ///< presentation time in milliseconds
    uint32_t stream;  ///< index of the stream in the source
    uint32_t length;  ///< duration in milliseconds
    uint32_t kind;    ///< 1 video, 2 audio
};

/// Reads one opened source, from its beginning. Used by one thread at a time.
class IAVReader {
public:
    /// Reads the next item. Flag bit 0 asks for video items; without it video may be left undecoded.
    /// The timeout is in milliseconds, 0 for none. False at the end of the source.
    virtual bool ReadItem(AVItem* item, unsigned flags, unsigned timeout) = 0;
    virtual bool Seek(unsigned milliseconds) = 0;
    /// Duration in milliseconds, 0 when not known.
    virtual unsigned GetDuration() = 0;
    virtual void Release() = 0;

protected:
    ~IAVReader() = default;
};

/// Opens media sources.
class IAVManager {
public:
    /// Opens a source by its URL text; null with an error recorded when it can't be opened. Options may be
    /// null or empty, any result address may be null: number of streams, picture size in pixels, duration in
    /// milliseconds.
    virtual IAVReader* OpenSource(const char* url, const char* options, unsigned* streams, unsigned* width,
                                  unsigned* height, unsigned* duration) = 0;

protected:
    ~IAVManager() = default;
};

} // namespace AVBased
