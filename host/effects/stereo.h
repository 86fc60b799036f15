#pragma once
/// What the host adds to stereo effects: what they show, anaglyphs of two views, and marks for players.
#include <optional>
#include <string>

#include "aveffect/plugin.h"
#include "host/support/av_owner.h"

namespace aveffect {

/// How a picture holds two views, the left one first.
enum class StereoLayout { SideBySide, TopAndBottom };

/// Where a render's second view comes from, if there is one.
struct StereoOptions {
    std::string right;                  ///< clip of the right view; empty for none
    std::optional<StereoLayout> layout; ///< absent: each picture of the input is one view

    bool TwoViews() const noexcept { return !right.empty() || layout; }
};

/// What a stereo effect is set to.
struct Presentation {
    int mode = 0;
    bool exchanged = false;

    /// Whether it is an anaglyph, which the effect makes of one picture.
    bool IsAnaglyph() const noexcept { return mode == 1 || mode == 2; }
};

bool IsStereoEffect(AVBased::IVideoProc& proc);

Presentation PresentationOf(AVBased::IVideoProc& stereoEffect);

/// Draws what a stereo effect leaves to the host: the anaglyph of a frame that has a second view. Red is the
/// left view's, or red and blue are, and the other colours are the right view's. False when the effect is to
/// draw. Throws Error (Usage) for settings and formats that would end the program.
bool DrawInPlaceOf(AVBased::IVideoProc& proc, AVBased::IRawVideoFrame& frame);

/// Say to players how pictures hold two views; they say nothing then about what the input's were.
void MarkPicture(AVFrame& picture, const Presentation& presentation);
void MarkStream(AVStream& stream, const Presentation& presentation);

} // namespace aveffect
