#include "host/settings/setting_time.h"

#include <cmath>

#include "host/settings/value_text.h"

namespace aveffect {
namespace {

std::optional<double> ParseCount(std::string_view text) {
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string_view::npos) return std::nullopt;
    constexpr double kMost = 2147483647;
    const auto count = ParseReal(text);
    return count && *count <= kMost ? count : std::nullopt;
}

} // namespace

std::optional<SettingTime> ParseSettingTime(std::string_view text) {
    using Unit = SettingTime::Unit;
    const bool fromEnd = text.starts_with('-');
    if (fromEnd) text.remove_prefix(1);
    const auto counted = [&](Unit unit) -> std::optional<SettingTime> {
        text.remove_suffix(1);
        const auto count = ParseCount(text);
        return count ? std::optional(SettingTime{unit, *count, fromEnd}) : std::nullopt;
    };
    if (text.ends_with('%')) return counted(Unit::Percent);
    if (text.ends_with('f')) return counted(Unit::Frames);
    const auto milliseconds = ParseTime(text);
    if (!milliseconds) return std::nullopt;
    return SettingTime{Unit::Milliseconds, static_cast<double>(*milliseconds), fromEnd};
}

std::string_view MissingFor(const SettingTime& time, const TimeSpan& span) {
    if (!span.endMs && (time.fromEnd || time.unit == SettingTime::Unit::Percent))
        return "the clip does not tell its length";
    if (time.unit == SettingTime::Unit::Frames && span.rateNum <= 0) return "there are no pictures to count";
    return {};
}

int64_t LengthIn(const SettingTime& time, const TimeSpan& span) {
    switch (time.unit) {
    case SettingTime::Unit::Frames:
        return std::llround(time.count * 1000 * span.rateDen / span.rateNum);
    case SettingTime::Unit::Percent:
        return std::llround(time.count / 100 * static_cast<double>(*span.endMs - span.beginMs));
    case SettingTime::Unit::Milliseconds:
        break;
    }
    return std::llround(time.count);
}

int64_t MomentIn(const SettingTime& time, const TimeSpan& span) {
    const int64_t length = LengthIn(time, span);
    return time.fromEnd ? *span.endMs - length : span.beginMs + length;
}

} // namespace aveffect
