#pragma once
/// The effects on sound that hosts of sound plug-ins get: those that need no file.
#include <memory>

#include "adapters/sound/channel.h"
#include "aveffect/catalogue/sounds.h"

namespace AVBased::sound {

/// In the order in which hosts count them: it only grows.
constexpr const EffectInfo* kEffects[] = {&catalogue::kVolume, &catalogue::kFadeSound};

/// A new channel of that effect at so many samples a second, from its first sample on. Null when there is no
/// memory, or no such rate: from 200 to 10 million.
std::unique_ptr<Channel> MakeChannel(size_t effect, double rate) noexcept;

} // namespace AVBased::sound
