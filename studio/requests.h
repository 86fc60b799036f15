#pragma once
/// What the page asks for, taken from the JSON that it sends. Everything throws Error (Usage) that names the
/// member, its value and what would be right.
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace aveffect {

/// An effect as the command line has it, switched off where it only has its place.
struct StudioEffect {
    std::string text;
    bool on = true;
};

struct StudioChain {
    std::vector<StudioEffect> effects, audioEffects;
};

/// A moment of a clip through a chain.
struct FrameWish {
    std::string clip; ///< by its id
    int64_t atMs = 0;
    StudioChain chain;
    int width = 0; ///< pixels at most, settings that count pixels scaled along; 0: exactly as it is rendered
    std::string lane; ///< of requests of one lane the newest counts
};

/// A piece of a clip's sound, or what the whole of it looks like.
struct SoundWish {
    std::string clip;
    int64_t fromMs = 0, lengthMs = 10'000;
    int columns = 0;
    StudioChain chain;
};

/// Options of `render` by their names without dashes, as texts.
using RenderWords = std::map<std::string, std::string>;

/// A clip through a chain into a file: to be rendered, told as a command, or kept as a film.
struct OutputWish {
    std::string clip;
    StudioChain chain;
    int64_t atMs = 0;
    std::string output;
    RenderWords options;
    bool overwrite = false;
};

/// An object. Throws for what is none, and for nesting deeper than a chain has.
nlohmann::json ParseBody(const std::string& body);

FrameWish ReadFrameWish(const nlohmann::json& body);
SoundWish ReadSoundWish(const nlohmann::json& body);
OutputWish ReadOutputWish(const nlohmann::json& body);
/// The member "path" alone.
std::string ReadPath(const nlohmann::json& body);

/// Seconds as milliseconds: 0 to ten days.
int64_t ReadMoment(double seconds);

} // namespace aveffect
