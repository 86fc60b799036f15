#pragma once
/// Times as people write them among settings, and where they lie in a clip.
#include <cstdint>
#include <optional>
#include <string_view>

namespace aveffect {

/// What times among settings refer to: a clip, or the part of it that an effect lasts.
struct TimeSpan {
    int64_t beginMs = 0;          ///< in the clip
    std::optional<int64_t> endMs; ///< absent while nobody knows
    int rateNum = 0, rateDen = 1; ///< pictures a second; 0 while nobody knows

    bool operator==(const TimeSpan&) const = default;
};

/// A moment in a span: from its begin or, below zero, from its end; or a length of time.
struct SettingTime {
    enum class Unit { Milliseconds, Frames, Percent };
    Unit unit = Unit::Milliseconds;
    double count = 0;     ///< not negative
    bool fromEnd = false; ///< counted backwards from the end

    bool operator==(const SettingTime&) const = default;
};

/// "2", "1.5", "1:02", "0:01:02.5" (seconds, minutes, hours), "25f" (pictures), "50%" (of the span), each
/// with
/// "-" in front to count from the span's end. Nothing for anything else.
std::optional<SettingTime> ParseSettingTime(std::string_view text);

/// What of the span a time needs and nobody knows, as the end of a sentence: "the clip does not tell its
/// length"; empty when nothing is missing.
std::string_view MissingFor(const SettingTime& time, const TimeSpan& span);

/// The moment in the clip, to milliseconds, halves up. What it needs is known (MissingFor).
int64_t MomentIn(const SettingTime& time, const TimeSpan& span);

/// As a length of time, in milliseconds; percentages are of the span.
int64_t LengthIn(const SettingTime& time, const TimeSpan& span);

} // namespace aveffect
