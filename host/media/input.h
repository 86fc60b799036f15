#pragma once
/// Opening media files and decoding their streams.
#include <atomic>
#include <chrono>
#include <optional>
#include <string>

#include "host/media/input_owner.h"
#include "host/media/source_request.h"

namespace aveffect {

/// Ends blocking reads: when the flag is set, or when the deadline passes. Outlives the input that was opened
/// with it.
struct ReadInterrupt {
    const std::atomic<bool>* cancel = nullptr;
    std::optional<std::chrono::steady_clock::time_point> deadline;

    bool Due() const noexcept;
    AVIOInterruptCB Callback() noexcept;
};

/// Whether the text names a file of this machine rather than a protocol's resource.
bool IsLocalPath(const std::string& path);

/// The name that a pattern ("shot%03d.png") stands for.
std::string NumberedName(const std::string& pattern, int number);

/// Whether a pattern names this file, or all of another pattern's.
bool StandsFor(const std::string& pattern, const std::string& path);

/// Throws Error (Input) for pipes and devices, which can't be opened again.
void RequireRereadable(const std::string& path);

/// Whether a name is a pattern for numbered pictures, and no file is really called so.
bool IsNumbered(const std::string& path);

/// How many bytes a file has, or all pictures that a pattern names have together; absent where there is none.
/// Throws Error (Input) where that can't be found out.
std::optional<int64_t> BytesOf(const std::string& path);

/// Opens a file (or a protocol URL) and finds out its streams. Its claims are believed within limits
/// (limits.h), and what it names besides is opened only as input_access.h says. Throws Error (Input), one
/// line that names the file.
InputContextPtr OpenInput(const SourceRequest& request, ReadInterrupt& interrupt);

/// As av_read_frame, noting damage.
int ReadPacket(const InputContextPtr& input, AVPacket& packet);

/// The same of a file whose every packet counts: false at its end, Error (Input) where reading fails.
bool NextPacket(const InputContextPtr& input, AVPacket& packet);

/// One stream's decoder. Used by one thread at a time.
class Decoder {
public:
    /// Threads 0: as many as there are processors. Throws Error (Input).
    Decoder(const InputContextPtr& input, const AVStream& stream, unsigned threads);
    Decoder(const Decoder&) = delete; // the library holds on to its place
    Decoder& operator=(const Decoder&) = delete;

    /// Hands over the next packet, null at the end. Receive() everything before the next Send().
    void Send(const AVPacket* packet);

    /// The next decoded frame; null when the decoder wants more, or at the end.
    mediabridge::AVFramePtr Receive();

    /// Forgets what it has in work, before reading on elsewhere.
    void Flush();

    /// Errors that the decoder reported and those that it hides in what it gives out.
    DamageReport Damage() const;
    /// Forgets those before this frame, the latest received, which may come from starting in the middle of
    /// frames that depend on one another.
    void ForgetDamageBefore(const AVFrame& frame);

    const AVCodecContext& Context() const noexcept { return *m_context; }

private:
    void Note(const AVFrame& frame);

    std::string m_path;
    ErrorLines m_lines; ///< outlives the context
    mediabridge::AVCodecContextPtr m_context;
    int64_t m_failures = 0;
    int64_t m_hidden = 0; ///< frames in which damage is hidden
};

} // namespace aveffect
