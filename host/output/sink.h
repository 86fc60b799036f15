#pragma once
/// Writing the output: a container with encoded pictures and copied streams, or one still picture.
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "host/effects/stereo.h"
#include "host/media/source.h"
#include "host/media/span.h"
#include "host/output/container.h"
#include "host/output/output_clock.h"
#include "host/output/picture_encoder.h"
#include "host/output/sound_lane.h"
#include "host/output/text_subtitles.h"
#include "host/support/reporter.h"

namespace aveffect {

/// A container file in the making. Used by one thread at a time.
class Sink {
public:
    struct Setup {
        const OutputPlan& plan;
        const Source& source;
        const SpanLimits& limits;
        bool overwrite;
        bool turned; ///< the pictures were turned upright, and what the input says of their sides is no more
        const SourceRequest& request;           ///< of the source
        const SoundJob& sound;                  ///< what becomes of the sound
        std::optional<Presentation> views = {}; ///< how they hold two views; absent: as the input says
    };

    /// Opens the encoder for pictures like the sample, creates the file and writes its header. The source
    /// outlives the sink. Throws Error: Usage for an encoder or a copied stream that does not fit, Output,
    /// Interrupted.
    /// Without a sample the pictures are copied.
    Sink(const Setup& setup, const AVFrame* sample, Reporter& reporter, const std::atomic<bool>& cancel);

    /// Encodes a picture; not where they are copied. pts and pkt_duration as SpanReader gives them.
    void WritePicture(mediabridge::AVFramePtr picture);
    /// Copies a packet, whose stream_index and times are the source's.
    void WritePacket(mediabridge::AVPacketPtr packet);
    /// Writes what the encoder still holds, and the container's end.
    void Complete();
    /// Gives the file its name.
    void Publish() { m_output.Publish(); }

    int64_t Pictures() const noexcept { return m_pictures; }
    /// What was found to be wrong with sound that was decoded, and with packets that were copied.
    DamageReport Damage() const;

private:
    struct Copy {
        AVStream* target = nullptr; ///< null for streams that are left out
        AVRational base{1, 1}; ///< of the packets; kept, since the source's own lists change while it is read
        bool withLead = false; ///< what is not heard comes along until the first packet that is
        std::unique_ptr<TextSubtitles> rewritten = {}; ///< that the packets go through instead
    };
    void MapStreams(const Setup& setup, Reporter& reporter);
    void MapSound(const Setup& setup, const AVStream& stream, Reporter& reporter);
    void MapSubtitles(const Setup& setup, const AVStream& stream, Reporter& reporter);
    void AddCopy(const AVStream& stream);
    bool CopyEdited(const Setup& setup, const AVStream& stream);
    void AddPictureStream(const Setup& setup, const AVFrame* sample);
    void FollowPictures(const AVPacket& packet);
    void FillUntil(int64_t tick);
    void AddLane(const Setup& setup, const AVStream* stream, Reporter& reporter);
    void Encode(AVFrame* picture);

    const Source& m_source;
    std::optional<Moment> m_soundEnd; ///< that was asked for
    bool m_soundEndsWithPictures;
    std::optional<OutputClock> m_clock;        ///< absent where pictures are copied
    std::unique_ptr<PictureEncoder> m_encoder; ///< likewise
    bool m_countsPictures = false;
    Container m_output;
    AVStream* m_pictureStream = nullptr;
    std::vector<Copy> m_copies; ///< by source index
    std::vector<std::unique_ptr<SoundLane>> m_lanes;
    Moment m_end;                           ///< of the pictures so far
    std::map<int64_t, int64_t> m_durations; ///< of pictures in the encoder, by time
    mediabridge::AVFramePtr m_shown;        ///< where pictures are counted: the last one that was encoded
    int64_t m_fillUntil = 0;                ///< its end, in the encoder's base
    int64_t m_pictures = 0;
    int64_t m_refused = 0;
};

/// Encodes one picture, which has the encoder's format, and writes it as a file. Throws Error.
void WriteStill(const OutputPlan& plan, mediabridge::AVFramePtr picture, bool overwrite,
                const std::atomic<bool>& cancel);

} // namespace aveffect
