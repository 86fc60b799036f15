#pragma once
/// Sound as a small drawing.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace aveffect::manual {

/// The loudest sample of each of equally long parts, 0 to 1.
using Loudness = std::vector<double>;

struct Waves {
    Loudness before, after;
};

/// A file of six words, each louder and softer, or of one long tone that swells, as another sound.
void WriteWords(const std::filesystem::path& wav);
void WriteSwell(const std::filesystem::path& wav);

/// Of a WAV file of 16 bits. Throws std::runtime_error when it isn't one.
Loudness LoudnessOf(const std::filesystem::path& wav);

/// As SVG in the text's colour; the label is read out.
std::string DrawWave(const Loudness& loudness, const std::string& label);

} // namespace aveffect::manual
