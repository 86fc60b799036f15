#pragma once
/// A channel as the handle that hosts of C interfaces hold; each function fits a descriptor's entry.
#include "adapters/sound/effects.h"

namespace AVBased::sound {

inline Channel& ChannelOf(void* handle) { return *static_cast<Channel*>(handle); }

template <class Port, class Place>
void ConnectPort(void* handle, Port port, Place* place) {
    ChannelOf(handle).Connect(port, place);
}

inline void Activate(void* handle) { ChannelOf(handle).Begin(); }

template <class Count>
void Run(void* handle, Count count) {
    ChannelOf(handle).Run(count);
}

inline void Cleanup(void* handle) { delete &ChannelOf(handle); }

} // namespace AVBased::sound
