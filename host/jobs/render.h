#pragma once
/// The render pipeline: decoding, effects and encoding, each on its own thread, joined by bounded queues.
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/effects/effect_chain.h"
#include "host/media/source_request.h"
#include "host/output/output_options.h"
#include "host/support/error.h"
#include "host/support/observer.h"

namespace aveffect {

/// One of several renders that make a clip's output together: of its pictures those from begin on up to the
/// one before end, encoded like all others, with the output's tags and chapters and nothing else. What is
/// read for them, and the whole that effects' times refer to, are said besides. Moments are milliseconds of
/// the clip, ticks the picture stream's from the clip's start.
struct ClipShare {
    int64_t begin = 0, end = 0;
    std::optional<int64_t> fromMs, toMs; ///< what is read
    int64_t wholeStart = 0;              ///< ticks: the whole's first picture
    std::optional<int64_t> wholeToMs;    ///< where the whole is cut
    std::optional<int64_t> wholeLengthMs;
};

struct RenderOptions : OutputOptions {
    std::string input;       ///< source URL
    StreamSelection streams; ///< of the input
    std::vector<EffectSpec> effects;
    std::vector<EffectSpec> audioEffects; ///< that each stream of sound passes; without any, and without an
                                          ///< audioCodec, sound is copied as it is
    std::optional<int64_t> fromMs; ///< first moment of the input that is kept; the clip's start when absent
    std::optional<int64_t> toMs;   ///< first moment that is no longer kept; the clip's end when absent
    std::optional<int64_t> frameLimit; ///< no more pictures than this
    bool restart = false; ///< effects take what is kept for the whole clip; else they stand where they stand
                          ///< in the clip
    std::string pixelFormat =
        "auto";                ///< format that the effects work in: auto or a frame-table format by name
    bool strip = false;        ///< a photo's metadata is left out but for what tells how it looks
    StereoOptions stereo = {}; ///< two views need a stereo effect among the effects
    std::optional<ClipShare> share = {}; ///< of an output that is a clip of pictures; absent: all of it
};

/// The input, which of its streams are asked for, and at which rate its pictures come when they are numbered.
/// Throws Error (Input).
SourceRequest RequestOf(const RenderOptions& options);

struct RenderResult {
    int64_t frames = 0; ///< pictures; where there is sound alone, pieces of a fiftieth of a second
    /// An input ended early or was damaged; what could be decoded is in the output. Says what was found, a
    /// line for each file and each decoder.
    std::optional<std::string> inputDamage;
    /// Of what lies beside the pictures, rendered alone: when its first packet begins, in microseconds,
    /// before the container moved it; below 0 where a codec needs a lead.
    std::optional<int64_t> besideStartUs = {};
};

/// Renders a clip, a still picture or a file of sound alone. A container for sound alone takes the sound of a
/// clip. The output appears under its name only when it is whole: it is written
/// beside it under a temporary name, which is removed on failure. Throws Error. Setting cancel ends the
/// render soon with Error (Interrupted). Memory use does not grow with the length of the clip.
RenderResult Render(const Plugin& plugin, const RenderOptions& options, const RenderObserver& observer,
                    const std::atomic<bool>& cancel);

/// Of the options of outputs, those of still pictures count.
struct FrameOptions : OutputOptions {
    std::string input;       ///< source URL
    StreamSelection streams; ///< of the input
    int64_t atMs = 0;
    std::vector<EffectSpec> effects;
    std::string pixelFormat = "auto";
    bool strip = false; ///< as in RenderOptions
    StereoOptions stereo = {};
};

/// Renders the picture shown at one moment of the input into a still picture (format by the output's
/// extension), seeking straight to it. "duration" is the whole clip's and the effects see the picture's time
/// in the clip. Throws Error.
RenderResult RenderFrame(const Plugin& plugin, const FrameOptions& options, const RenderObserver& observer,
                         const std::atomic<bool>& cancel);

} // namespace aveffect
