#pragma once
/// A clip as the render pipeline reads it: decoded pictures, and the packets of the streams that are copied.
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/media/input.h"
#include "host/media/moment.h"
#include "host/media/source_request.h"

namespace aveffect {

/// Where a clip's own time is 0, in the file's times: at its first picture, or earlier where something else
/// of it is. Of sound alone, without pictures, at its first sample.
Moment StartOf(const AVFormatContext& input, const AVStream* pictures, const AVStream* sound = nullptr);

/// One of: a decoded picture, or a packet of another stream. Their times (AVFrame::pts in the picture
/// stream's time base, packets in their stream's) count from the clip's start.
struct SourceItem {
    mediabridge::AVFramePtr picture;
    mediabridge::AVPacketPtr packet;
};

/// Reads a clip from its beginning. Used by one thread at a time.
class Source {
public:
    /// What is read besides the pictures. WithPictures: these are not decoded but come as packets too.
    enum class Others { None, Copied, WithPictures };

    /// Opens the clip. Throws Error (Input, Interrupted). The flag ends blocking reads and outlives the
    /// source.
    Source(const SourceRequest& request, Others others, unsigned threads, const std::atomic<bool>& cancel);
    Source(const Source&) = delete; // the library holds on to its place
    Source& operator=(const Source&) = delete;

    const std::string& Path() const noexcept { return m_path; }
    const AVFormatContext& Format() const noexcept { return *m_input; }
    const AVStream& Pictures() const noexcept { return *m_pictures; }
    const AVCodecContext& PictureDecoder() const noexcept { return m_decoder->Context(); }
    /// Sound, subtitles and attachments that are wanted, in file order.
    const std::vector<const AVStream*>& CopiedStreams() const noexcept { return m_copied; }

    /// The clip's start in the file's times.
    const Moment& Start() const noexcept { return m_start; }

    /// Pictures a second; 25 when the clip does not tell.
    AVRational FrameRate() const noexcept;
    /// True when the rate is the same all along, as far as the container tells.
    bool IsConstantRate() const noexcept;

    /// When the pictures end, from the clip's start, in milliseconds; absent when the container does not
    /// tell.
    std::optional<int64_t> EndMs() const noexcept { return m_endMs; }
    /// Number of pictures in the clip, as far as the container tells.
    std::optional<int64_t> PictureCount() const noexcept;

    /// Goes to where the picture shown at this time can be decoded: the next picture is that one, an earlier
    /// one, or the clip's first.
    void SeekBefore(int64_t milliseconds);

    /// Goes to before the last key picture that is shown at or before this time, or the clip's first; a while
    /// before, for the sound that belongs to it. Gives its time in the pictures' base; absent when there is
    /// none. For pictures that come as packets.
    std::optional<int64_t> SeekToKey(int64_t milliseconds);

    /// Whether the pictures come as packets.
    bool CopiesPictures() const noexcept { return m_copiesPictures; }

    /// The next picture, in order of presentation, or packet; absent at the end.
    std::optional<SourceItem> Next();

    /// Throws Error (Input) when what Next() took for the end was a failure to read. What is damaged is told
    /// by Damage().
    void RequireRead() const;

    /// No more pictures; packets are read up to this moment (with some slack for how the file is
    /// interleaved).
    void StopPictures(const Moment& packetsUntil);

    /// What was found to be wrong. Call after the last Next() with the number of pictures of the whole clip
    /// and the time at which the last of them ended; readToEnd false: only a part was wanted.
    DamageReport Damage(int64_t pictures, const Moment& end, bool readToEnd) const;

private:
    void ChooseStreams(Others others, const SourceRequest& request);
    void FindEnd();
    bool SeekAndDecode(int64_t milliseconds);
    bool SeekPackets(int64_t milliseconds);
    std::optional<int64_t> LastKeyBefore(int64_t milliseconds);
    bool ReadPacket();
    std::optional<SourceItem> Read();
    mediabridge::AVPacketPtr TakePacket();
    mediabridge::AVFramePtr TakePicture();
    int64_t StartIn(AVRational base) const;
    std::string EarlyEnd(int64_t pictures, const Moment& end) const;

    std::string m_path;
    ReadInterrupt m_interrupt;
    InputContextPtr m_input;
    AVStream* m_pictures = nullptr;
    std::unique_ptr<Decoder> m_decoder;
    std::vector<const AVStream*> m_copied;
    mediabridge::AVPacketPtr m_packet;
    std::deque<SourceItem> m_stash; ///< read while seeking, not handed out yet
    Moment m_start;
    Moment m_lastRead; ///< latest end of any packet, from the clip's start
    std::optional<int64_t> m_endMs;
    bool m_endIsPictures = false; ///< m_endMs is the picture stream's own, not the whole container's
    std::optional<Moment> m_packetsUntil;
    std::optional<int64_t> m_lastPts;
    bool m_copiesPictures;
    int64_t m_picturePackets = 0;
    int m_readError = 0;
    bool m_draining = false;
    bool m_soughtAway = false;
};

} // namespace aveffect
