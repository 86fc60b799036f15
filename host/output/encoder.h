#pragma once
/// What encoding pictures and encoding sound have in common.
#include <functional>
#include <string>

#include "host/support/av_owner.h"

namespace aveffect {

/// One open encoder. Used by one thread at a time.
class Encoder {
public:
    virtual ~Encoder() = default;
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    const AVCodecContext& Context() const noexcept { return *m_context; }

    /// Takes a frame, which may be changed and whose pts is in the encoder's base, and hands over every
    /// packet that this gives, times in that base. Null, at the end, gives all the rest. Throws Error in the
    /// encoder's words, and whatever the function throws.
    void Encode(AVFrame* frame, const std::function<void(AVPacket&)>& take);

protected:
    explicit Encoder(const AVCodec& codec);

    const AVCodec& Codec() const noexcept { return m_codec; }
    /// The context, its settings to be made and then opened.
    AVCodecContext& Settings() noexcept { return *m_context; }
    /// Begins anew with settings as the encoder has them.
    void Reset();
    /// Opens with the settings made; negative when the encoder refuses them. For a container of that kind.
    int Open(const AVOutputFormat* muxer);
    /// Leaves the context, and all that it has, to the process.
    void Abandon() noexcept { static_cast<void>(m_context.release()); }
    /// Throws Error (Usage), or NoMemory when memory is short. Without a detail it is what the library said
    /// last.
    [[noreturn]] void Fail(const std::string& doing, int code, std::string detail = {}) const;

private:
    /// Sees each frame before the encoder does; may give another one in its place.
    virtual AVFrame* Prepare(AVFrame* frame) { return frame; }
    /// Sees each packet after the encoder.
    virtual void Mend(AVPacket& /*packet*/) {}

    const AVCodec& m_codec; ///< the context forgets it when it fails to open
    mediabridge::AVCodecContextPtr m_context;
    mediabridge::AVPacketPtr m_packet;
};

} // namespace aveffect
