#include "host/output/still_picture.h"

#include "host/output/picture_encoder.h"
#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;
using mediabridge::AVPacketPtr;

std::unique_ptr<OutputFile> WriteStill(const OutputPlan& plan, AVFramePtr picture,
                                       const PhotoMetadata& metadata, bool overwrite,
                                       const std::atomic<bool>& cancel) {
    picture->pts = 0;
    PictureEncoder encoder(plan, *picture, {{1, 25}, {25, 1}});
    AVPacketPtr packet;
    const auto keepFirst = [&](AVPacket& given) {
        if (packet) return;
        packet.reset(av_packet_clone(&given));
        if (!packet) throw NoMemory(plan.target + ": out of memory");
    };
    encoder.Encode(picture.get(), keepFirst);
    if (!packet) encoder.Encode(nullptr, keepFirst);
    if (!packet) throw Error(ErrorKind::Output, plan.target + ": the encoder gave nothing out");
    if (cancel.load()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
    auto file = std::make_unique<OutputFile>(plan.target, overwrite, cancel);
    const std::string bytes = AddPhotoMetadata(
        std::string(reinterpret_cast<const char*>(packet->data), static_cast<size_t>(packet->size)),
        metadata);
    avio_write(file->Io(), reinterpret_cast<const unsigned char*>(bytes.data()),
               static_cast<int>(bytes.size()));
    return file;
}

} // namespace aveffect
