#pragma once
/// Any frame of the boundary as a picture of the media libraries.
#include "aveffect/video_frame.h"
#include "mediabridge/av_ptr.h"
#include "mediabridge/video_frame.h"

namespace basemedia {

/// A top-down copy of a frame's pixels in its own format and in the size that remains after cropping, with
/// its field flags and aspect ratio.
///
/// Frames count their chroma rounded down or up at odd sizes, while the libraries need it rounded up: a last
/// column or row that the frame does not have repeats the one before it. Nothing is read outside the rows and
/// bytes that the frame reports, except that rows reach to the format's real size where the frame table
/// counts too little (two bytes a sample at 10 bits, the last byte of 1-bit rows), and then never beyond the
/// pitch.
///
/// Throws Failure for formats and sizes that can't be read.
mediabridge::AVFramePtr ReadPicture(AVBased::IRawVideoFrame* source);

/// The same pixels where they lie, for as long as the frame has them; not to be written. Null where the frame
/// lacks some, or has its rows bottom-up or overlapping. Throws Failure as ReadPicture does.
mediabridge::AVFramePtr ViewPicture(AVBased::IRawVideoFrame* source);

/// A frame over the picture with the source's time stamp, duration and view id (the field flags are the
/// picture's). Throws Failure when memory is short.
mediabridge::VideoFrame::Ptr MakeFrame(const AVFrame* picture, AVBased::IRawVideoFrame* source);

} // namespace basemedia
