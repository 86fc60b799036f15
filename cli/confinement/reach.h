#pragma once
/// What a run may reach from the moment on that media are parsed.
#include <string>
#include <vector>

namespace aveffect {

struct Reach {
    std::vector<std::string> reads;  ///< files, and folders with all below
    std::vector<std::string> writes; ///< folders with all below, which may also be read, and devices
    bool network = false;            ///< other hosts; else none
    bool player = false;             ///< display and sound, which are services of this machine
    bool server = false;             ///< whoever connects to where it listens already
};

} // namespace aveffect
