#pragma once
/// Pictures of the media libraries as frames of the plug-in's boundary.
#include <memory>
#include <vector>

#include "aveffect/video_frame.h"
#include "mediabridge/av_ptr.h"
#include "mediabridge/pixel_formats.h"

namespace mediabridge {

/// An IRawVideoFrame over a reference-counted AVFrame. Nothing is copied on wrapping; Clone() copies every
/// byte of the picture. GetBuffer() reports chroma of odd sizes as the picture has it, rounded up.
///
/// Always on the heap and released with Free(), as the interface demands.
class VideoFrame final : public AVBased::IRawVideoFrame, public AVBased::IMVCRawVideoFrame {
public:
    struct Release {
        void operator()(VideoFrame* frame) const noexcept { frame->Free(); }
    };
    using Ptr = std::unique_ptr<VideoFrame, Release>;

    /// Wraps a new reference to a picture in one of the frame table's formats; null when it has another
    /// format or memory is short. Whoever writes into the frame makes the picture writable first. Frames are
    /// always top-down: a picture that is stored bottom-up (negative line sizes) is copied.
    static Ptr Wrap(const AVFrame* picture, int timeStampMs, unsigned durationMs);

    /// A frame with new pixels, undefined, from recycled memory. Null when the format is not the table's, the
    /// size is impossible or memory is short.
    static Ptr Allocate(unsigned format, unsigned width, unsigned height);

    /// The picture, still this frame's.
    AVFrame* Picture() noexcept { return m_picture.get(); }

    /// Attaches a frame as the second view; the frame takes ownership. Null detaches.
    void SetSubsetFrame(Ptr frame) { m_subset = std::move(frame); }

    // IRawVideoFrame
    unsigned GetPixelFormat() override;
    void GetDimension(unsigned* width, unsigned* height) override;
    int GetTimeStamp() override;
    void SetTimeStamp(int timeStamp) override;
    bool IsTopDown() override;
    bool IsPacked() override;
    unsigned GetBufferCount() override;
    unsigned GetTotalSize() override;
    unsigned char* GetBuffer(unsigned index, unsigned* widthBytes, unsigned* pitch, unsigned* rows) override;
    double GetDAR() override;
    bool CropRightAndBottom(unsigned right, unsigned bottom) override;
    void Free() override;
    unsigned GetDuration() override;
    void SetDuration(unsigned duration) override;
    unsigned GetDuplicatedCount(unsigned* extra) override;
    void SetDuplicatedCount(unsigned count, unsigned extra) override;
    AVBased::IRawVideoFrame* Clone() override;
    bool CanBeModified() override;
    void SetCanBeModified(bool modifiable) override;
    bool IsInterlaced() override;
    void SetInterlaced(bool interlaced) override;
    bool IsTopFieldFirst() override;
    void SetTopFieldFirst(bool topFieldFirst) override;
    void SetBorderData(void* data, int bytes) override;
    void GetBorderData(void** data, int* bytes) override;
    void* GetInterface(const char* name) override;

    // IMVCRawVideoFrame
    bool SetViewID(int view) override;
    int GetViewID() override;

private:
    VideoFrame(AVFramePtr picture, unsigned format);
    ~VideoFrame() = default;

    static Ptr Own(AVFramePtr picture, unsigned format);
    /// What Clone() returns; null when memory is short for the pixels.
    Ptr Copy() const;
    PlaneSize UncroppedPlane(unsigned index) const;

    AVFramePtr m_picture;
    Ptr m_subset;
    std::vector<unsigned char> m_borderData;
    unsigned m_format;
    int m_timeStamp = 0;
    int m_viewId = 0;
    unsigned m_duration = 1;
    unsigned m_cropRight = 0;
    unsigned m_cropBottom = 0;
    unsigned m_duplicatedCount = 1;
    unsigned m_duplicatedExtra = 0;
    bool m_canBeModified = true;
};

} // namespace mediabridge
