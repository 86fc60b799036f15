#pragma once
/// The plug-in's own pictures, the table of pixel formats, and copies between pictures.
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "BaseTools/res_keeper.h"
#include "avbase/avbase_srcutils/holders.h"
#include "aveffect/pixel_format.h"
#include "aveffect/video_frame.h"

namespace AVBased {

/// Layout of one plane for a picture of some size.
struct PlaneParameters {
    uint32_t widthBytes = 0; ///< bytes of picture a row
    uint32_t rows = 0;
    uint32_t horizontalCode = 0;  ///< pixels a unit in the high 16 bits, bytes a unit in the low 16
    uint32_t verticalDivisor = 0; ///< luma rows a row
};

/// Layout of a picture.
struct ImageParameters {
    bool packed = false;
    unsigned components = 0; ///< colour components of a packed format, planes of another
    unsigned planeCount = 0; ///< planes that are described below
    std::array<PlaneParameters, 4> planes;
};

/// The layout of a format for a size in pixels. Chroma sizes are rounded down. Formats outside the table fail
/// an assertion.
ImageParameters GetImageParameters(unsigned format, unsigned width, unsigned height);

/// A picture: a description, and the pixels when it is a copy. A picture that is constructed has planes
/// without memory: its maker sets each plane's pitch and data and releases the memory itself.
class CRawVideoFrame : public IRawVideoFrame, public IMVCRawVideoFrame {
public:
    struct FrameBuffer {
        unsigned char* data = nullptr; ///< first byte of the first stored row
        uint32_t widthBytes = 0;
        uint32_t pitch = 0; ///< bytes from row to row
        uint32_t rows = 0;
        uint32_t horizontalCode = 0;
        uint32_t verticalDivisor = 0;
    };

    /// Self-owned frames delete themselves on Free(); others are left alone by it.
    CRawVideoFrame(bool selfOwned, unsigned format, unsigned width, unsigned height, bool topDown);
    /// Copies the description and the pixels into one block of its own, each plane on a 16-byte boundary.
    /// Throws CBaseException 10021007 when memory is short.
    CRawVideoFrame(const CRawVideoFrame& other);
    CRawVideoFrame& operator=(const CRawVideoFrame&) = delete;

    unsigned GetPixelFormat() override { return m_nFormat; }
    void GetDimension(unsigned* width, unsigned* height) override;
    int GetTimeStamp() override { return m_nTimeStamp; }
    void SetTimeStamp(int timeStamp) override { m_nTimeStamp = timeStamp; }
    bool IsTopDown() override { return m_bTopDown; }
    bool IsPacked() override { return m_bPacked; }
    unsigned GetBufferCount() override { return static_cast<unsigned>(m_Buffers.size()); }
    unsigned GetTotalSize() override;
    unsigned char* GetBuffer(unsigned index, unsigned* widthBytes, unsigned* pitch, unsigned* rows) override;
    double GetDAR() override { return m_dDAR; }
    bool CropRightAndBottom(unsigned right, unsigned bottom) override;
    void Free() override;
    unsigned GetDuration() override { return m_nDuration; }
    void SetDuration(unsigned duration) override { m_nDuration = duration; }
    unsigned GetDuplicatedCount(unsigned* extra) override;
    void SetDuplicatedCount(unsigned count, unsigned extra) override;
    IRawVideoFrame* Clone() override;
    bool CanBeModified() override { return m_bCanBeModified; }
    void SetCanBeModified(bool modifiable) override { m_bCanBeModified = modifiable; }
    bool IsInterlaced() override { return m_bInterlaced; }
    void SetInterlaced(bool interlaced) override { m_bInterlaced = interlaced; }
    bool IsTopFieldFirst() override { return m_bTopFieldFirst; }
    void SetTopFieldFirst(bool topFieldFirst) override { m_bTopFieldFirst = topFieldFirst; }
    void SetBorderData(void* data, int bytes) override;
    void GetBorderData(void** data, int* bytes) override;
    void* GetInterface(const char* name) override;

    virtual ~CRawVideoFrame() = default;

    bool SetViewID(int view) override;
    int GetViewID() override { return m_nViewID; }

    /// Changes the described size: planes are measured anew, data and pitches stay. The right crop is reset,
    /// the bottom crop is kept.
    void SetSize(unsigned width, unsigned height);
    /// Sum over the planes of rows times bytes of picture a row.
    unsigned GetRequireSize() const;
    void SetDAR(double ratio) { m_dDAR = ratio; }
    void SetTopDown(bool topDown) { m_bTopDown = topDown; }
    /// One plane's description; the index must be below the number of planes.
    FrameBuffer* GetBuffer(unsigned index);
    /// Whether the pixels are this object's own, as a copy's are.
    bool OwnsPixels() const { return m_nOwnsPixels != 0; }
    /// Attaches a clone of the frame as the second view; null detaches. When there is no clone, the record
    /// says why, and the old view stays.
    void CopySubsetFrame(IRawVideoFrame* frame);

private:
    void CopyPixels();

    unsigned m_nFormat;
    unsigned m_nWidth;
    unsigned m_nHeight;
    int m_nTimeStamp = 0;
    bool m_bTopDown;
    bool m_bPacked = false;
    bool m_bCanBeModified = true;
    bool m_bSelfOwned;
    bool m_bTopFieldFirst = false;
    bool m_bInterlaced = false;
    std::vector<FrameBuffer> m_Buffers;
    double m_dDAR = 0;
    unsigned m_nCropRight = 0;
    unsigned m_nCropBottom = 0;
    unsigned m_nDuration = 1;
    unsigned m_nDuplicatedCount = 1;
    unsigned m_nDuplicatedExtra = 0;
    unsigned m_nOwnsPixels = 0;
    BaseTool::AlignedMallocAllocator m_Pixels;
    std::vector<unsigned char> m_BorderData;
    bool m_bHasBorderData = false;
    int m_nViewID = 0;
    FramePtr m_pSubsetFrame;
};

/// Copies time stamp, interlacing, view id, border data and pixels between frames of one format, size, plane
/// rows and pitches (anything else fails an assertion). False with an error recorded when a frame is null.
bool CopyVideoFrame(IRawVideoFrame* dst, IRawVideoFrame* src);

/// Converts one sample triple to RGB, its bytes taken without the 128 offset of chroma, and back to
/// limited-range YUV (ITU-R BT.601 in 8-bit fixed point). The three sizes are not looked at.
void MergeYUVRedBlue(unsigned char y, unsigned char u, unsigned char v, unsigned ySize, unsigned uSize,
                     unsigned vSize, unsigned char* yOut, unsigned char* uOut, unsigned char* vOut);

} // namespace AVBased
