#pragma once
/// New pictures from recycled memory: a fresh block of a few megabytes costs more in page faults than copying
/// a picture into it.
#include "mediabridge/av_ptr.h"

namespace mediabridge {

/// A writable picture of that format and size with undefined pixels and zeros behind its rows, each row at a
/// multiple of 64 bytes with room for wide registers behind the last one. Its block returns to the process's
/// pool with the last reference; the pool keeps a bounded number of bytes. Null for impossible sizes or when
/// memory is short. Safe from any thread.
AVFramePtr AllocatePicture(AVPixelFormat format, int width, int height);

/// A new picture with the same pixels, every byte of every plane, and the same properties; its rows lie as
/// far apart, unless they are stored bottom-up. Behind them are zeros. Null when memory is short.
AVFramePtr CopyPicture(const AVFrame* picture);

/// Zeroes what lies between the rows of a top-down picture. Some effects copy or show it, so it must not be
/// what a block held before, nor what a library's wide registers left there.
void ClearBehindRows(AVFrame* picture);

} // namespace mediabridge
