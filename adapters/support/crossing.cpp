#include "adapters/support/crossing.h"

#include "host/effects/transition_frame.h"

namespace aveffect::adapters {

// A transition reads its pictures once in its life, so each moment has its own.
void DrawMoment(const Plugin& plugin, const char* transition, const HostPicture& first,
                const HostPicture& second, const HostPicture& drawn, const Moment& moment) {
    ShownPictures pictures(first, second, drawn.planes.front().data);
    const EffectSpec spec =
        TransitionSpec(transition, ShownPictures::kFirst, ShownPictures::kSecond, 0, moment.length);
    EffectChain chain(plugin, &pictures, {spec}, {0, moment.length});
    AVBased::MemoryFrame picture = drawn.Frame();
    chain.Process(&picture, static_cast<int>(moment.time));
}

} // namespace aveffect::adapters
