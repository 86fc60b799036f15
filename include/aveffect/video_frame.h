#pragma once
/// Pictures as they cross the plug-in's boundary.

namespace AVBased {

/// One raw picture. Host frames may start at any address and have any pitch.
///
/// A frame is used by one thread at a time.
class IRawVideoFrame {
public:
    /// Pixel format id, see pixel_format.h.
    virtual unsigned GetPixelFormat() = 0;
    /// Size in pixels, less what is cropped. Either address may be null.
    virtual void GetDimension(unsigned* width, unsigned* height) = 0;
    /// Presentation time, in the unit of the effects' "duration" (milliseconds in this host).
    virtual int GetTimeStamp() = 0;
    virtual void SetTimeStamp(int timeStamp) = 0;
    /// Whether the top row is stored first.
    virtual bool IsTopDown() = 0;
    /// Whether all components share one plane.
    virtual bool IsPacked() = 0;
    /// Number of planes.
    virtual unsigned GetBufferCount() = 0;
    /// Sum over the planes of rows times pitch, in bytes.
    virtual unsigned GetTotalSize() = 0;
    /// One plane: the address of its first stored row; bytes of picture a row; bytes from row to row; rows.
    /// The index must be below GetBufferCount(). The memory stays the frame's.
    virtual unsigned char* GetBuffer(unsigned index, unsigned* widthBytes, unsigned* pitch,
                                     unsigned* rows) = 0;
    /// Display aspect ratio, 0 when not known.
    virtual double GetDAR() = 0;
    /// Hides columns at the right and rows at the bottom; false when nothing would be left.
    virtual bool CropRightAndBottom(unsigned right, unsigned bottom) = 0;
    /// Gives the frame up. Only its owner calls this.
    virtual void Free() = 0;
    virtual unsigned GetDuration() = 0;
    virtual void SetDuration(unsigned duration) = 0;
    /// How often the frame is to be repeated; a second counter goes to *extra unless extra is null.
    virtual unsigned GetDuplicatedCount(unsigned* extra) = 0;
    virtual void SetDuplicatedCount(unsigned count, unsigned extra) = 0;
    /// A new frame with its own copy of the pixels, the caller's to Free(). Null with an error recorded on
    /// failure.
    virtual IRawVideoFrame* Clone() = 0;
    /// Whether effects may write into the frame.
    virtual bool CanBeModified() = 0;
    virtual void SetCanBeModified(bool modifiable) = 0;
    virtual bool IsInterlaced() = 0;
    virtual void SetInterlaced(bool interlaced) = 0;
    virtual bool IsTopFieldFirst() = 0;
    virtual void SetTopFieldFirst(bool topFieldFirst) = 0;
    /// Opaque side data, copied. A null pointer changes nothing.
    virtual void SetBorderData(void* data, int bytes) = 0;
    /// The stored copy, still the frame's, and its size.
    virtual void GetBorderData(void** data, int* bytes) = 0;
    /// A further interface of the frame by name (see below), null when it has none of that name.
    virtual void* GetInterface(const char* name) = 0;

protected:
    ~IRawVideoFrame() = default;
};

/// The view that a frame of a multi-view (MVC) stream belongs to.
class IMVCRawVideoFrame {
public:
    /// Always true.
    virtual bool SetViewID(int view) = 0;
    virtual int GetViewID() = 0;

protected:
    ~IMVCRawVideoFrame() = default;
};

/// GetInterface: the frame itself, as IRawVideoFrame*.
inline constexpr char kRawVideoInterface[] = "RawVideoInterfaceRawVideo";
/// GetInterface: the frame's IMVCRawVideoFrame.
inline constexpr char kMVCInterface[] = "RawVideoInterfaceMVC";
/// GetInterface: the attached second frame as IRawVideoFrame*, null when there is none.
inline constexpr char kSubsetFrameInterface[] = "ISubSetRawFrame";

} // namespace AVBased
