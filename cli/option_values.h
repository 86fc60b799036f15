#pragma once
/// Values of options as people write them. Everything throws Error (Usage) that names the option and the
/// value and says what would be right.
#include <cstdint>
#include <limits>
#include <string>

#include "cli/progress.h"
#include "host/jobs/transition.h"

namespace aveffect {

[[noreturn]] void Refuse(const char* option, const std::string& rule, const std::string& value);

/// Milliseconds.
int64_t TimeOption(const char* option, const std::string& value);

int64_t WholeOption(const char* option, const std::string& value, int64_t minimum,
                    int64_t maximum = std::numeric_limits<int64_t>::max());

/// "800k", "5M", "1.5M" or a plain number, of bits a second.
int64_t BitRateOption(const char* option, const std::string& value);

double CrfOption(const std::string& value);
unsigned ThreadsOption(const std::string& value);
/// Bytes from "64k", "512M", "2G" or a plain number.
size_t BytesOption(const char* option, const std::string& value);
ProgressStyle ProgressOption(const std::string& value);

/// A factor from "50%": 0% to 1000%.
double VolumeOption(const char* option, const std::string& value);

/// "640x360": both sides from 1 to 16384 pixels.
PictureSize SizeOption(const std::string& value);

/// "1080x1920", "1080:" and ":1920" with the other side by the picture's shape, "50%" for both.
void FramedSizeOption(const std::string& value, Framing& framing);
/// "W:H" or "W:H:X:Y", in pixels or percent.
Framing::Crop CropOption(const std::string& value);
Framing::Fit FitOption(const std::string& value);

/// As ParsePictureRate().
AVRational RateOption(const std::string& value);

} // namespace aveffect
