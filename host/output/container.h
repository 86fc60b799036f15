#pragma once
/// The output's container file: streams, header, packets, end.
#include <atomic>
#include <memory>
#include <string>

#include "host/output/output_file.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Adds to what a stream says of itself. Throws NoMemory.
void CopySideData(AVStream* to, const AVPacketSideData& data);

/// A container file that appears under its name only when it is whole. Add the streams, Start(), write the
/// packets, Finish(), Publish(). Used by one thread at a time. Everything throws Error (Output).
class Container {
public:
    /// Writes nothing yet. The plan is one for a container.
    explicit Container(const OutputPlan& plan);

    AVFormatContext& Format() noexcept { return *m_output; }

    AVStream* AddStream();
    /// A stream of what the encoder gives out, in the encoder's time base.
    AVStream* AddStream(const AVCodecContext& encoder);

    /// How often the file says that it wants to be played, 0 for ever, where the format says that: GIF and
    /// APNG. Before Start().
    void SetPlayCount(int64_t plays);

    /// Creates the file and writes its header. The flag, which outlives the container, ends all waiting.
    void Start(bool overwrite, const std::atomic<bool>& cancel);
    /// Takes a packet for that stream, times in that base.
    void Write(AVPacket& packet, const AVStream& stream, AVRational base);
    /// The same with a packet of the input's. False when the container refuses it for what it says of itself,
    /// such as a time before its forerunner's; it is left out then.
    bool WriteCopied(AVPacket& packet, const AVStream& stream, AVRational base);
    /// Writes the container's end.
    void Finish();
    /// Gives the file its name.
    void Publish() { m_file->Publish(); }
    /// When the first packet began, in microseconds, as it was handed over.
    std::optional<int64_t> FirstUs() const noexcept { return m_firstUs; }

private:
    [[noreturn]] void Fail(int code);
    int Hand(AVPacket& packet, const AVStream& stream, AVRational base);
    void CountPadding(AVPacket& packet, const AVStream& stream) const;
    void SetLastDelay();

    std::string m_target;
    int m_lastMs = 0; ///< how long the last packet lasts
    std::optional<int64_t> m_firstUs;
    bool m_hasIndex; ///< which is written last and then moved to the file's beginning, where players want it
    std::unique_ptr<OutputFile> m_file;
    OutputContextPtr m_output; ///< after m_file, whose AVIOContext it writes to
};

} // namespace aveffect
