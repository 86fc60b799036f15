#pragma once
/// Owners for the media libraries' objects.
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace mediabridge {

/// Log offset for the libraries' functions that take one: nothing they say is shown, their results tell
/// enough. (Beyond 255 minus the quietest level it would wrap round.)
inline constexpr int kSilent = 100;

struct FrameDeleter {
    void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
};
using AVFramePtr = std::unique_ptr<AVFrame, FrameDeleter>;

struct PacketDeleter {
    void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
};
using AVPacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;

struct CodecContextDeleter {
    void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
};
using AVCodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;

struct SwsContextDeleter {
    void operator()(SwsContext* context) const noexcept { sws_freeContext(context); }
};
using SwsContextPtr = std::unique_ptr<SwsContext, SwsContextDeleter>;

struct SwrContextDeleter {
    void operator()(SwrContext* context) const noexcept { swr_free(&context); }
};
using SwrContextPtr = std::unique_ptr<SwrContext, SwrContextDeleter>;

struct BufferPoolDeleter {
    void operator()(AVBufferPool* pool) const noexcept { av_buffer_pool_uninit(&pool); }
};
using AVBufferPoolPtr = std::unique_ptr<AVBufferPool, BufferPoolDeleter>;

} // namespace mediabridge
