#pragma once
/// Whether files give the pictures and the sound that effects read from them.
#include <string>
#include <vector>

#include "host/effects/effect_chain.h"
#include "host/media/media_manager.h"
#include "host/picture/fitting.h"

namespace aveffect {

/// The canvas of the picture that a transition will read from the URL through the manager. A transition would
/// say nothing of files that it can't use, so this throws Error (Input) that names the file and the reason:
/// it can't be opened, or has no picture among its first 30 items.
Canvas RequirePicture(MediaManager& manager, const std::string& url);

/// The same for both pictures of every transition in a chain. Throws Error (Usage) when one is not named.
void RequirePictures(MediaManager& manager, const std::vector<EffectSpec>& effects);

/// As RequirePictures for the files whose sound a chain of audio effects plays.
void RequireSounds(AVBased::IAVManager& manager, const std::vector<EffectSpec>& effects);

} // namespace aveffect
