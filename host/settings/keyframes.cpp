#include "host/settings/keyframes.h"

#include <algorithm>
#include <utility>

#include "host/settings/value_text.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

constexpr std::pair<std::string_view, Motion> kMarks[] = {
    {"|", Motion::Hold},
    {"~", Motion::Smooth},
    {"[ease-in]", Motion::EaseIn},
    {"[ease-out]", Motion::EaseOut},
    {"[ease-in-out]", Motion::EaseInOut},
};

std::string_view Trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// Characters, for a mark to stand below the right one.
size_t Columns(std::string_view text) {
    return static_cast<size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

// So much of a text is shown on either side of a place.
constexpr size_t kBefore = 32, kBehind = 32;

/// The text's part around a place, of which a terminal's line shows as much.
struct Excerpt {
    std::string shown;
    size_t column;
};

Excerpt Around(const std::string& text, size_t place) {
    const auto isInside = [&](size_t at) { return at < text.size() && (text[at] & 0xC0) == 0x80; };
    size_t begin = place > kBefore ? place - kBefore : 0;
    size_t end = std::min(text.size(), place + kBehind);
    while (isInside(begin)) ++begin;
    while (isInside(end)) ++end;
    const std::string left = begin > 0 ? "\u2026" : "", right = end < text.size() ? "\u2026" : "";
    return {left + text.substr(begin, end - begin) + right,
            Columns(left) + Columns(std::string_view(text).substr(begin, place - begin))};
}

Keyframe ParseKeyframe(const Keyframes& all, size_t begin, size_t end) {
    const auto refuse = [&](const std::string& complaint, size_t place, size_t length) {
        RefuseAt(all, complaint, place, length);
    };
    const std::string_view whole = std::string_view(all.text).substr(begin, end - begin);
    const std::string_view text = Trimmed(whole);
    const size_t place = text.empty() ? begin : begin + static_cast<size_t>(text.data() - whole.data());
    if (text.empty())
        refuse("a keyframe is missing; write TIME=VALUE between semicolons", begin, end - begin);
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos)
        refuse("'" + std::string(text) + "' is no keyframe; write TIME=VALUE", place, text.size());
    std::string_view time = Trimmed(text.substr(0, equals));
    Keyframe key;
    key.place = place;
    key.length = text.size();
    key.value = Trimmed(text.substr(equals + 1));
    for (const auto& [mark, motion] : kMarks) {
        if (!time.ends_with(mark)) continue;
        key.motion = motion;
        time = Trimmed(time.substr(0, time.size() - mark.size()));
        break;
    }
    if (time.ends_with(']'))
        refuse("only [ease-in], [ease-out] and [ease-in-out] stand behind a time", place, equals);
    const auto parsed = ParseSettingTime(time);
    if (!parsed)
        refuse("'" + std::string(time) + "' is no time; write seconds, mm:ss, hh:mm:ss, 25f or 50%, with - " +
                   "in front from the end",
               place, equals);
    key.time = *parsed;
    if (key.value.empty()) refuse("the keyframe has no value; write TIME=VALUE", place, text.size());
    return key;
}

std::string TextOf(const Keyframes& all, const Keyframe& key) {
    return all.text.substr(key.place, all.text.find('=', key.place) - key.place);
}

[[noreturn]] void RefuseOrder(const Keyframes& all, const Keyframe& key, bool doubled) {
    RefuseAt(all,
             "the time " + TextOf(all, key) +
                 (doubled ? " stands there twice" : " is earlier than the one before it"),
             key.place, key.length);
}

// As far as that can be told of times that count alike.
void RequireOrder(const Keyframes& all) {
    for (size_t index = 1; index < all.keys.size(); ++index) {
        const SettingTime& before = all.keys[index - 1].time;
        const SettingTime& time = all.keys[index].time;
        if (before.unit != time.unit || before.fromEnd != time.fromEnd) continue;
        const double step = time.fromEnd ? before.count - time.count : time.count - before.count;
        if (step <= 0) RefuseOrder(all, all.keys[index], step == 0);
    }
}

double Eased(Motion motion, double share) {
    const double rest = 1 - share;
    switch (motion) {
    case Motion::Hold:
        return 0;
    case Motion::EaseIn:
        return share * share * share;
    case Motion::EaseOut:
        return 1 - rest * rest * rest;
    case Motion::EaseInOut:
        return share < 0.5 ? 4 * share * share * share : 1 - 4 * rest * rest * rest;
    case Motion::Linear:
    case Motion::Smooth:
        break;
    }
    return share;
}

} // namespace

std::string PictureOf(const Keyframes& keyframes, size_t place, size_t length) {
    const Excerpt excerpt = Around(keyframes.name + "=" + keyframes.text, keyframes.name.size() + 1 + place);
    const size_t width = Columns(std::string_view(keyframes.text).substr(place, length));
    return excerpt.shown + "\n" + std::string(excerpt.column, ' ') + '^' +
           std::string(std::clamp<size_t>(width, 1, kBehind) - 1, '~');
}

void RefuseAt(const Keyframes& keyframes, const std::string& complaint, size_t place, size_t length) {
    throw Error(ErrorKind::Usage, keyframes.name + " of " + keyframes.effect + ": " + complaint,
                PictureOf(keyframes, place, length));
}

Keyframes ParseKeyframes(std::string name, std::string effect, std::string text) {
    Keyframes all{std::move(name), std::move(effect), std::move(text), {}};
    for (size_t begin = 0; begin <= all.text.size();) {
        const size_t end = std::min(all.text.find(';', begin), all.text.size());
        all.keys.push_back(ParseKeyframe(all, begin, end));
        begin = end + 1;
    }
    RequireOrder(all);
    return all;
}

std::vector<int64_t> MomentsOf(const Keyframes& keyframes, const TimeSpan& span) {
    std::vector<int64_t> moments;
    for (const Keyframe& key : keyframes.keys) {
        const auto refuse = [&](const std::string& complaint) {
            RefuseAt(keyframes, "the time " + TextOf(keyframes, key) + complaint, key.place, key.length);
        };
        if (const std::string_view missing = MissingFor(key.time, span); !missing.empty())
            refuse(" can't be told, for " + std::string(missing));
        const int64_t moment = MomentIn(key.time, span);
        if (moment < span.beginMs) refuse(" lies before the effect's begin");
        if (span.endMs && moment > *span.endMs)
            refuse(" lies beyond the effect's end, which is " +
                   NumberText(static_cast<double>(*span.endMs - span.beginMs) / 1000) +
                   " s behind its begin");
        if (!moments.empty() && moment <= moments.back())
            RefuseOrder(keyframes, key, moment == moments.back());
        moments.push_back(moment);
    }
    return moments;
}

std::vector<Motion> MotionsOf(const Keyframes& keyframes) {
    std::vector<Motion> motions;
    for (const Keyframe& key : keyframes.keys) motions.push_back(key.motion);
    return motions;
}

Between FindBetween(const std::vector<Motion>& motions, const std::vector<int64_t>& moments, double ms) {
    const auto isLater = [ms](int64_t moment) { return static_cast<double>(moment) > ms; };
    const auto next = static_cast<size_t>(std::ranges::find_if(moments, isLater) - moments.begin());
    if (next == 0) return {0, 0, 0};
    if (next == moments.size()) return {next - 1, next - 1, 0};
    const int64_t begin = moments[next - 1];
    const double share = (ms - static_cast<double>(begin)) / static_cast<double>(moments[next] - begin);
    return {next - 1, next, Eased(motions[next - 1], share)};
}

Curve::Curve(const Keyframes& keyframes, std::vector<int64_t> moments, std::vector<double> values)
    : m_motions(MotionsOf(keyframes))
    , m_moments(std::move(moments))
    , m_values(std::move(values)) {}

// Per millisecond: along the two neighbours, at the ends along the one there is.
double Curve::Tangent(size_t index) const {
    const size_t before = index == 0 ? 0 : index - 1, behind = std::min(index + 1, m_values.size() - 1);
    return (m_values[behind] - m_values[before]) / static_cast<double>(m_moments[behind] - m_moments[before]);
}

double Curve::At(double ms) const {
    const auto [first, second, share] = FindBetween(m_motions, m_moments, ms);
    const double from = m_values[first], to = m_values[second];
    if (first == second || m_motions[first] != Motion::Smooth) return from + share * (to - from);
    // A cubic Hermite curve. What it would swing beyond the two values is cut off.
    const auto length = static_cast<double>(m_moments[second] - m_moments[first]);
    const double square = share * share, cube = square * share;
    const double value = (2 * cube - 3 * square + 1) * from +
                         (cube - 2 * square + share) * length * Tangent(first) +
                         (3 * square - 2 * cube) * to + (cube - square) * length * Tangent(second);
    return std::clamp(value, std::min(from, to), std::max(from, to));
}

} // namespace aveffect
