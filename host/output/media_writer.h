#pragma once
/// A media file in the making.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/output/container.h"
#include "host/output/picture_stream.h"
#include "host/output/sound_stream.h"
#include "host/output/text_subtitles.h"

namespace aveffect {

/// A file with encoded pictures, sound from supplies, and packets copied from another file, each if wanted.
/// Add the streams, Start(), write, EndStreams(), Finish(), Publish(). The file appears under its name only
/// when it is whole. Used by one thread at a time. Everything throws Error: Usage for an encoder or a copied
/// stream that does not fit, Output, Interrupted.
class MediaWriter {
public:
    /// Copied packets come from the file of that name. Writes nothing yet. The plan is one for a container
    /// and outlives the writer.
    explicit MediaWriter(const OutputPlan& plan, std::string copiedFrom = {});

    /// The file, for what it says besides its streams.
    Container& File() noexcept { return m_file; }
    const OutputPlan& Plan() const noexcept { return m_plan; }

    /// Opens the encoder for pictures like the sample.
    AVStream& AddPictures(const AVFrame& sample, const PictureTimes& times);
    AVStream& AddSound(SoundFeed feed);
    /// Takes over a stream's packets; withLead: what is not heard comes along until the first packet that is.
    void AddCopy(const AVStream& stream, bool withLead = false);
    /// The same for pictures, which the sound is kept up with.
    AVStream& AddCopiedPictures(const AVStream& stream);
    /// Rewrites subtitles in another codec.
    void AddSubtitles(const AVStream& stream, AVCodecID codec);

    /// Creates the file and writes its header. The flag, which outlives the writer, ends all waiting.
    void Start(bool overwrite, const std::atomic<bool>& cancel);

    /// Encodes a picture, and the sound that lies beside it.
    void WritePicture(mediabridge::AVFramePtr picture);
    /// Copies a packet, whose stream_index and times are its own file's. False where it is left out: no
    /// stream takes it over, or it is not heard.
    bool WritePacket(AVPacket& packet);
    /// Writes the sound up to a moment.
    void WriteSound(const Moment& until);

    /// Writes what encoders still hold, and the sound up to its end (as SoundSupply::EndAt).
    void EndStreams(const std::optional<Moment>& soundEnd);
    /// Writes the container's end.
    void Finish() { m_file.Finish(); }
    /// Gives the file its name.
    void Publish() { m_file.Publish(); }

    int64_t Pictures() const noexcept { return m_pictures; }
    /// The end of the pictures so far.
    Moment PicturesEnd() const noexcept { return m_picturesEnd; }
    /// How far the sound that was written goes.
    Moment SoundReached() const;
    /// What was found to be wrong with sound from supplies, and with packets that were copied.
    DamageReport Damage() const;

private:
    struct Copy {
        AVStream* target = nullptr; ///< null for streams that are left out
        AVRational base{1, 1}; ///< of the packets; kept, since the source's own lists change while it is read
        bool withLead = false;
        std::unique_ptr<TextSubtitles> rewritten = {}; ///< that the packets go through instead
    };
    Copy& CopyFor(const AVStream& stream);
    void FollowPictures(const AVPacket& packet, AVRational base);

    const OutputPlan& m_plan;
    std::string m_copiedFrom;
    Container m_file;
    std::optional<PictureStream> m_pictureStream;
    AVRational m_pictureBase{1, 1}; ///< of the times of pictures that are encoded
    AVStream* m_copiedPictures = nullptr;
    std::vector<std::unique_ptr<SoundStream>> m_sounds;
    std::vector<Copy> m_copies; ///< by the stream's index
    Moment m_picturesEnd;
    int64_t m_pictures = 0;
    int64_t m_refused = 0; ///< packets
};

} // namespace aveffect
