#include "cli/option_values.h"

#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "host/media/source_request.h"
#include "host/settings/value_text.h"
#include "host/support/error.h"

namespace aveffect {

void Refuse(const char* option, const std::string& rule, const std::string& value) {
    throw Error(ErrorKind::Usage, std::string(option) + " takes " + rule + ", not '" + value + "'");
}

int64_t TimeOption(const char* option, const std::string& value) {
    const auto time = ParseTime(value);
    if (!time) Refuse(option, "seconds or hh:mm:ss.ms", value);
    return *time;
}

int64_t WholeOption(const char* option, const std::string& value, int64_t minimum, int64_t maximum) {
    const auto number = ParseWhole(value);
    if (number && *number >= minimum && *number <= maximum) return *number;
    const bool open = maximum == std::numeric_limits<int64_t>::max();
    Refuse(option,
           "a whole number from " + std::to_string(minimum) +
               (open ? " upwards" : " to " + std::to_string(maximum)),
           value);
}

int64_t BitRateOption(const char* option, const std::string& value) {
    constexpr double kMost = 2e9;
    const char unit = value.empty() ? ' ' : value.back();
    const double factor = unit == 'k' || unit == 'K' ? 1e3 : unit == 'm' || unit == 'M' ? 1e6 : 1;
    const auto number = ParseReal(std::string_view(value).substr(0, value.size() - (factor > 1 ? 1 : 0)));
    if (!number || *number * factor < 1 || *number * factor > kMost)
        Refuse(option, "bits a second from 1 to 2000M, such as 800k or 5M", value);
    return std::llround(*number * factor);
}

double CrfOption(const std::string& value) {
    const auto number = ParseReal(value);
    if (!number || *number < 0) Refuse("--crf", "a number from 0 upwards", value);
    return *number;
}

unsigned ThreadsOption(const std::string& value) {
    constexpr int64_t kMost = 1024;
    return static_cast<unsigned>(WholeOption("--threads", value, 0, kMost));
}

size_t BytesOption(const char* option, const std::string& value) {
    constexpr std::string_view kUnits = "kMG";
    constexpr unsigned kUnitBits = 10;
    constexpr int64_t kMost = int64_t{1} << 50;
    const size_t unit = value.empty() ? std::string_view::npos : kUnits.find(value.back());
    const bool plain = unit == std::string_view::npos;
    const auto number = ParseWhole(std::string_view(value).substr(0, value.size() - (plain ? 0 : 1)));
    const int64_t factor = plain ? 1 : int64_t{1} << (kUnitBits * (unit + 1));
    if (!number || *number < 1 || *number > kMost / factor)
        Refuse(option, "bytes from 1 upwards, such as 512M or 2G", value);
    return static_cast<size_t>(*number * factor);
}

ProgressStyle ProgressOption(const std::string& value) {
    if (value == "auto") return ProgressStyle::Auto;
    if (value == "bar") return ProgressStyle::Bar;
    if (value == "json") return ProgressStyle::Json;
    if (value == "none") return ProgressStyle::None;
    Refuse("--progress", "auto, bar, json or none", value);
}

double VolumeOption(const char* option, const std::string& value) {
    constexpr double kLoudest = 1000, kWhole = 100;
    const auto percent =
        value.ends_with('%') ? ParseReal(std::string_view(value).substr(0, value.size() - 1)) : std::nullopt;
    if (!percent || *percent < 0 || *percent > kLoudest)
        Refuse(option, "a percentage from 0% to 1000%", value);
    return *percent / kWhole;
}

PictureSize SizeOption(const std::string& value) {
    constexpr int64_t kLargest = 16384;
    const std::string_view text = value;
    const size_t by = text.find('x');
    const int64_t width = ParseWhole(text.substr(0, by)).value_or(0);
    const int64_t height = by == std::string_view::npos ? 0 : ParseWhole(text.substr(by + 1)).value_or(0);
    if (width < 1 || width > kLargest || height < 1 || height > kLargest)
        Refuse("--size", "WIDTHxHEIGHT, each from 1 to 16384 pixels", value);
    return {static_cast<int>(width), static_cast<int>(height)};
}

namespace {

std::optional<Extent> ParseExtent(std::string_view text) {
    constexpr double kMost = 16384;
    const bool percent = text.ends_with('%');
    const auto number = percent ? ParseReal(text.substr(0, text.size() - 1)) : std::optional<double>();
    const auto pixels = percent ? std::optional<int64_t>() : ParseWhole(text);
    if (percent ? !number : !pixels) return std::nullopt;
    const double value = percent ? *number : static_cast<double>(*pixels);
    if (value < 0 || value > kMost) return std::nullopt;
    return Extent{value, percent};
}

} // namespace

void FramedSizeOption(const std::string& value, Framing& framing) {
    const std::string_view text = value;
    const size_t by = text.find_first_of("x:");
    const bool alone = by == std::string_view::npos;
    const std::string_view width = text.substr(0, by), height = alone ? text : text.substr(by + 1);
    framing.width = ParseExtent(width);
    framing.height = ParseExtent(height);
    const auto right = [&](const std::optional<Extent>& side, std::string_view written) {
        return side ? side->value > 0 : written.empty() && !alone && text[by] == ':';
    };
    const bool said = framing.width || framing.height;
    if (!said || !right(framing.width, width) || !right(framing.height, height) ||
        (alone && !framing.width->percent))
        Refuse("--size", "WIDTHxHEIGHT, WIDTH:, :HEIGHT or a percentage, each side up to 16384 pixels",
               value);
}

Framing::Crop CropOption(const std::string& value) {
    constexpr char kRule[] = "W:H or W:H:X:Y, in pixels or percent";
    std::vector<Extent> extents;
    for (size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = value.find(':', begin);
        const auto extent = ParseExtent(std::string_view(value).substr(begin, end - begin));
        if (!extent) Refuse("--crop", kRule, value);
        extents.push_back(*extent);
    }
    constexpr size_t kWithPlace = 4;
    if (extents.size() != 2 && extents.size() != kWithPlace) Refuse("--crop", kRule, value);
    Framing::Crop crop{extents[0], extents[1]};
    if (extents.size() == kWithPlace) {
        crop.x = extents[2];
        crop.y = extents[3];
    }
    return crop;
}

Framing::Fit FitOption(const std::string& value) {
    if (value == "contain") return Framing::Fit::Contain;
    if (value == "cover") return Framing::Fit::Cover;
    if (value == "stretch") return Framing::Fit::Stretch;
    Refuse("--fit", "contain, cover or stretch", value);
}

AVRational RateOption(const std::string& value) {
    const auto rate = ParsePictureRate(value);
    if (!rate)
        Refuse("--fps", "pictures a second above 0 up to 1000, such as 25, 29.97 or 30000/1001", value);
    return *rate;
}

} // namespace aveffect
