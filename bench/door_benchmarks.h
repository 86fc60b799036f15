#pragma once
/// Effects as other programs run them beside the plain ones, on the same pictures in place at 1080p.
#include <array>

#include "bench/copy_time.h"
#include "tests/support/plugin.h"

namespace bench {

/// A format that the programs have, too.
struct DoorKind {
    const char* name;
    unsigned format;
    size_t bytes; ///< of a picture, whose planes lie one behind the other without padding
};

struct DoorPair {
    const char* effect;
    const char* shortName;
    test::Settings settings; ///< of both
};

inline constexpr unsigned kDoorWidth = 1920, kDoorHeight = 1080;
extern const std::array<DoorKind, 2> kDoorKinds;

/// Pushes a picture through what the program has in place of the effect.
using Push = std::function<void()>;

/// Makes that ready for a picture in that memory, which stays.
using MakePush = Push (*)(const DoorPair& pair, const DoorKind& kind, unsigned char* picture);

/// A row for each of some effects and each kind.
void RegisterDoorBenchmarks(const char* program, MakePush make);

} // namespace bench
