#include "host/effects/stereo.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

extern "C" {
#include <libavutil/stereo3d.h>
}

#include "aveffect/catalogue/stereo.h"
#include "aveffect/pixel_format.h"
#include "host/support/error.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {
namespace {

constexpr uint32_t kRed = 0x00FF0000u, kBlue = 0x000000FFu, kColours = 0x00FFFFFFu;

/// Some bits of each pixel from another picture of the same shape.
void TakeBits(AVBased::IRawVideoFrame& to, AVBased::IRawVideoFrame& from, uint32_t bits) {
    unsigned bytes = 0, pitch = 0, rows = 0, fromBytes = 0, fromPitch = 0, fromRows = 0;
    unsigned char* row = to.GetBuffer(0, &bytes, &pitch, &rows);
    const unsigned char* fromRow = from.GetBuffer(0, &fromBytes, &fromPitch, &fromRows);
    const unsigned pixels = std::min(bytes, fromBytes) / 4;
    for (unsigned y = 0; y < std::min(rows, fromRows); ++y, row += pitch, fromRow += fromPitch)
        for (unsigned x = 0; x < pixels; ++x) {
            uint32_t own = 0, other = 0;
            std::memcpy(&own, row + 4 * x, sizeof own);
            std::memcpy(&other, fromRow + 4 * x, sizeof other);
            own = (own & ~bits) | (other & bits);
            std::memcpy(row + 4 * x, &own, sizeof own);
        }
}

std::optional<AVStereo3DType> TypeOf(const Presentation& presentation) {
    if (presentation.mode == 3) return AV_STEREO3D_SIDEBYSIDE;
    if (presentation.mode == 4) return AV_STEREO3D_TOPBOTTOM;
    return std::nullopt;
}

int FlagsOf(const Presentation& presentation) { return presentation.exchanged ? AV_STEREO3D_FLAG_INVERT : 0; }

} // namespace

bool IsStereoEffect(AVBased::IVideoProc& proc) {
    return proc.GetName() == std::string_view(AVBased::effectName3DRenderEffect);
}

Presentation PresentationOf(AVBased::IVideoProc& stereoEffect) {
    return {std::atoi(stereoEffect.GetProperty("render_3d_mode", nullptr)),
            std::atoi(stereoEffect.GetProperty("render_3d_swtich", nullptr)) != 0};
}

bool DrawInPlaceOf(AVBased::IVideoProc& proc, AVBased::IRawVideoFrame& frame) {
    if (!IsStereoEffect(proc)) return false;
    const Presentation shown = PresentationOf(proc);
    if (shown.mode < 0)
        throw Error(ErrorKind::Usage,
                    "render_3d_mode of " + std::string(proc.GetName()) + " can't be negative");
    if (!shown.IsAnaglyph()) return false;
    auto* right = static_cast<AVBased::IRawVideoFrame*>(frame.GetInterface(AVBased::kSubsetFrameInterface));
    const unsigned format = frame.GetPixelFormat(), planes = frame.GetBufferCount();
    if (right ? format != AVBased::BGRA : planes != 1 && planes != 3)
        throw Error(ErrorKind::Usage, "anaglyphs can't be drawn in " + mediabridge::FrameFormatName(format) +
                                          "; choose --pixel-format bgra");
    if (!right) return false;
    const uint32_t fromLeft = shown.mode == 1 ? kRed : kRed | kBlue;
    TakeBits(frame, *right, shown.exchanged ? fromLeft : kColours & ~fromLeft);
    return true;
}

void MarkPicture(AVFrame& picture, const Presentation& presentation) {
    av_frame_remove_side_data(&picture, AV_FRAME_DATA_STEREO3D);
    const auto type = TypeOf(presentation);
    if (!type) return;
    AVStereo3D* const mark = av_stereo3d_create_side_data(&picture);
    if (!mark) throw NoMemory("no memory for what a picture says of its views");
    mark->type = *type;
    mark->flags = FlagsOf(presentation);
}

void MarkStream(AVStream& stream, const Presentation& presentation) {
    av_dict_set(&stream.metadata, "stereo_mode", nullptr, 0);
    const auto type = TypeOf(presentation);
    if (!type) return;
    std::unique_ptr<AVStereo3D, decltype(&av_free)> mark(av_stereo3d_alloc(), av_free);
    if (!mark) throw NoMemory("no memory for what a stream says of its views");
    mark->type = *type;
    mark->flags = FlagsOf(presentation);
    const int code = av_stream_add_side_data(&stream, AV_PKT_DATA_STEREO3D,
                                             reinterpret_cast<uint8_t*>(mark.get()), sizeof *mark);
    RequireMemory(code, "what a stream says of its views");
    static_cast<void>(mark.release()); // the stream's now
}

} // namespace aveffect
