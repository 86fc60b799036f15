#pragma once
/// Pictures of high dynamic range: what they say of the light they were made for, and their way to screens of
/// standard range.
#include <optional>
#include <string>

#include "host/picture/picture_filter.h"

namespace aveffect {

/// Whether the picture says that it is PQ or HLG.
bool IsHighDynamicRange(const AVFrame& picture);
bool IsHighDynamicRange(AVColorTransferCharacteristic transfer);

/// Gives a picture what its stream says of the mastering display and of the light of the whole, where it does
/// not say so itself.
void KeepLight(const AVStream& from, AVFrame& picture);
/// The same with what another picture says.
void KeepLight(const AVFrame& from, AVFrame& picture);

/// Writes what a picture says of these onto a stream.
void MarkLight(AVStream& to, const AVFrame& picture);

/// The same as settings of libx264 or libx265 ("master-display=...:max-cll=..."); empty for other encoders,
/// and when the picture says nothing.
std::string LightSettings(const std::string& encoder, const AVFrame& picture);

/// Brings PQ and HLG pictures to the BT.709 colours and standard range of 8 bits; leaves others as they are.
/// Used by one thread at a time.
class ToneMapper {
public:
    /// Whether the library has the filters. Require() throws Error (Usage) when it lacks them.
    static bool Exists();
    static void Require();
    mediabridge::AVFramePtr Apply(mediabridge::AVFramePtr picture);

private:
    std::optional<PictureFilter> m_filter; ///< made for the first picture that needs it
};

} // namespace aveffect
