#pragma once
/// The pixel format in which effects see the pictures, and the nearest ones on the way in and out.
#include <string>

#include "host/support/av_owner.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// A frame-table format that the effects serve.
struct WorkingFormat {
    unsigned id = 0; ///< frame-table id
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED; ///< unspecified: the pictures' own
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;  ///< unspecified: the pictures' own
};

/// The clip's own pictures, before any conversion.
struct ClipKind {
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
};

/// What pictures on their way to an output were, and what has become of them.
struct PictureOrigin {
    ClipKind clip;
    AVPixelFormat wanted = AV_PIX_FMT_NONE; ///< what the output should look like
    bool effects = false;                   ///< they went through some
    bool madeAlpha = false;                 ///< and have the transparency that these gave them
};

/// Of a picture that nothing was done to.
inline PictureOrigin OriginOf(const AVFrame& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    return {{format, picture.color_range}, format};
}

/// What a chain of effects asks of the format it works in.
struct FormatNeeds {
    bool alpha = false;      ///< an alpha channel
    bool fewFormats = false; ///< BGRA or YUV420P
    bool rgb = false;        ///< BGRA; another one only as BT.601 of usual range
};

/// Of the formats that answer the needs the one nearest to these pictures, their own where it is one of them;
/// or the one of that name whatever they are. Throws Error (Usage) that lists the names.
WorkingFormat ChooseWorkingFormat(const std::string& wanted, const AVFrame& picture, FormatNeeds needs);

/// Checks the name alone, before any file is opened. Throws Error (Usage).
void CheckPixelFormatName(const std::string& wanted);

/// The 8-bit format with the same components and subsampling: what pictures are "really" after effects worked
/// in 8 bits.
AVPixelFormat EightBitKind(AVPixelFormat format);

/// Whether two formats lay the same bytes out in the same way, J formats and their plain twins included.
bool SameLayout(AVPixelFormat a, AVPixelFormat b);

/// The picture as the scaler converts it. Throws Error (Output).
mediabridge::AVFramePtr ConvertWith(mediabridge::Scaler& scaler, const AVFrame& picture);

/// Whether a format has an alpha channel.
bool HasAlpha(AVPixelFormat format);

/// Whether a format has brightness alone, with alpha or without.
bool IsGrey(AVPixelFormat format);

/// The library's name of a format, for messages.
std::string FormatName(AVPixelFormat format);

} // namespace aveffect
