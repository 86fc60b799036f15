#pragma once
/// The gallery's own pictures: drawn, so that they belong to nobody else.
#include <cstdint>
#include <filesystem>
#include <vector>

namespace aveffect::manual {

constexpr int kSceneWidth = 432, kSceneHeight = 288;

/// Bytes of red, green, blue, row by row.
using Drawing = std::vector<uint8_t>;

/// A face under a hat before hills in the sun: skin, hair as fine texture, a checked shirt, saturated
/// colours, gradients. What is near moves to the right by so many pixels, what is far stays: two views of it
/// are a stereo pair.
Drawing DrawDay(double parallax = 0);

/// A town by night: lit windows, a moon, its light on the water.
Drawing DrawNight();

/// Throws std::runtime_error when the file can't be written.
void WritePicture(const std::filesystem::path& file, const Drawing& drawing);

} // namespace aveffect::manual
