#pragma once
/// The part of a clip that is rendered, with times from its own start.
#include <deque>
#include <optional>

#include "host/media/source.h"

namespace aveffect {

/// The span that effects are told of when a clip does not tell its length.
inline constexpr int64_t kUnknownLengthMs = 3600 * 1000;

/// The wanted part; see RenderOptions.
struct SpanLimits {
    std::optional<int64_t> fromMs;
    std::optional<int64_t> toMs;
    std::optional<int64_t> frameLimit;
};

/// One of: a picture (pts and pkt_duration in the picture stream's time base) or a packet to be copied (in
/// its stream's time base); times count from the span's start.
struct SpanItem {
    mediabridge::AVFramePtr picture;
    mediabridge::AVPacketPtr packet;
    mediabridge::AVFramePtr second =
        {}; ///< another clip's picture of the same moment, where one is asked for
};

/// Cuts a source to a span. With a start, the span begins at the first picture at or after it, so that the
/// first picture's time is 0; without one it begins with the clip. Packets are kept when they start inside
/// the span. A span that ends inside a picture's time shortens that picture. Where the pictures come as
/// packets, the span begins at the last key picture shown at or before its start, and ends where no picture
/// that is shown before its end needs another one. Used by one thread at a time.
class SpanReader {
public:
    /// The source outlives the reader. Seeks. Throws Error (Usage) when the span lies outside the clip.
    SpanReader(Source& source, const SpanLimits& limits);

    /// The next item in order; absent at the span's end.
    std::optional<SpanItem> Next();

    /// Length of the span in milliseconds: what the limits and the container say; absent when they do not
    /// tell.
    std::optional<int64_t> LengthMs() const noexcept { return m_lengthMs; }
    /// Number of pictures to expect, as far as can be told.
    std::optional<int64_t> ExpectedPictures() const;
    /// Where times count from, in the picture stream's time base from the clip's start; 0 before the first
    /// picture.
    int64_t Start() const noexcept { return m_start.value_or(0); }
    /// Pictures handed out.
    int64_t Pictures() const noexcept { return m_emitted; }

    /// As Source::Damage. Call after Next() has found the end.
    DamageReport Damage() const { return m_source.Damage(m_emitted, m_lastEnd, m_readToEnd); }

private:
    void CheckLimits();
    void TakePicture(mediabridge::AVFramePtr picture);
    void TakePacket(mediabridge::AVPacketPtr packet);
    bool IsTooEarly(const AVPacket& packet) const;
    void TakeCopiedPicture(mediabridge::AVPacketPtr packet);
    void EmitCopied(mediabridge::AVPacketPtr packet, int64_t time);
    void PassPacket(mediabridge::AVPacketPtr packet);
    void CutSubtitle(AVPacket& packet) const;
    void ReleaseHeld(bool all);
    void EmitPending(int64_t duration);
    void EndPictures(const Moment& end);
    void EndOfClip();
    int64_t LastDuration() const;
    int64_t UsualDuration() const;
    AVRational Base() const noexcept { return m_source.Pictures().time_base; }

    Source& m_source;
    SpanLimits m_limits;
    std::optional<int64_t> m_lengthMs;
    std::deque<SpanItem> m_ready;
    /// Packets that came before it was known whether they lie in the span.
    std::deque<mediabridge::AVPacketPtr> m_held;
    /// Copied pictures past the end, which an earlier one may still need.
    std::deque<mediabridge::AVPacketPtr> m_late;
    mediabridge::AVFramePtr m_pending; ///< waits for its successor, which tells its duration
    std::optional<int64_t> m_start;    ///< in the picture stream's base
    std::optional<Moment> m_end;       ///< known once the pictures have reached it
    std::deque<int> m_soundBeforeEnd;  ///< sound streams that have not passed the end yet
    Moment m_lastEnd;                  ///< of the last picture, from the clip's start
    int64_t m_lastInterval = 0;
    int64_t m_taken = 0;
    int64_t m_emitted = 0;
    std::optional<int64_t> m_lastCopied; ///< latest time of a copied picture, from the clip's start
    bool m_finished = false;
    bool m_readToEnd = false;
};

} // namespace aveffect
