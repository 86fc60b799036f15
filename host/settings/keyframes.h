#pragma once
/// Values at times: how they are written, and what lies between them.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/settings/setting_time.h"

namespace aveffect {

/// How a value goes from one keyframe to the next.
enum class Motion {
    Linear,    ///< "TIME=VALUE": evenly
    Hold,      ///< "TIME|=VALUE": not at all, until the next one's time
    Smooth,    ///< "TIME~=VALUE": along a Catmull-Rom curve, within the two values
    EaseIn,    ///< "TIME[ease-in]=VALUE": slowly at first, as the cube of the time gone by
    EaseOut,   ///< "TIME[ease-out]=VALUE": slowly at last
    EaseInOut, ///< "TIME[ease-in-out]=VALUE": slowly at both ends
};

struct Keyframe {
    SettingTime time;
    Motion motion = Motion::Linear;
    std::string value; ///< as it was written
    size_t place = 0;  ///< of the keyframe in the text, in bytes
    size_t length = 0; ///< in bytes

    bool operator==(const Keyframe&) const = default;
};

/// Keyframes as one text, "TIME=VALUE;TIME=VALUE...".
struct Keyframes {
    std::string name;   ///< of the setting
    std::string effect; ///< its short name, for messages
    std::string text;
    std::vector<Keyframe> keys; ///< at least one

    bool operator==(const Keyframes&) const = default;
};

/// Whether a value is written as keyframes.
inline bool IsAnimated(std::string_view value) { return value.find('=') != std::string_view::npos; }

/// Throws Error (Usage) that shows the place for wrong forms, and for times whose order is wrong whatever the
/// span. Values are not looked at.
Keyframes ParseKeyframes(std::string name, std::string effect, std::string text);

/// The text with a mark below that part, in two lines.
std::string PictureOf(const Keyframes& keyframes, size_t place, size_t length);

/// Throws Error (Usage) with the complaint, and to be shown under it the text with a mark below that part.
[[noreturn]] void RefuseAt(const Keyframes& keyframes, const std::string& complaint, size_t place,
                           size_t length);

/// When they are, in the clip. Throws Error (Usage) that shows the place for times that are out of order,
/// doubled or outside the span, and for what nobody knows of it.
std::vector<int64_t> MomentsOf(const Keyframes& keyframes, const TimeSpan& span);

/// What a moment lies between: a value is first + share * (second - first), of keyframes by index.
struct Between {
    size_t first, second;
    double share; ///< 0 to 1
};

/// Numbers at times.
class Curve {
public:
    /// One number for each of the moments, which rise.
    Curve(const Keyframes& keyframes, std::vector<int64_t> moments, std::vector<double> values);

    /// Before the first moment its number, behind the last one that one's.
    double At(double ms) const;

private:
    double Tangent(size_t index) const;

    std::vector<Motion> m_motions;
    std::vector<int64_t> m_moments;
    std::vector<double> m_values;
};

/// The keyframes around a moment, by the motions' timing; smooth ones are even here, for that takes numbers.
Between FindBetween(const std::vector<Motion>& motions, const std::vector<int64_t>& moments, double ms);

std::vector<Motion> MotionsOf(const Keyframes& keyframes);

} // namespace aveffect
