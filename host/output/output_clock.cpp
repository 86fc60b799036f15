#include "host/output/output_clock.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace aveffect {
namespace {

constexpr int64_t kLargestBase = 100'000'000;
/// A tick fine enough for any clip, for codecs with 16-bit denominators; whole ticks for the usual picture
/// rates.
constexpr int kFineTicks = 60000;

AVRational ChooseBase(AVRational clip, const OutputClock::Rate& rate, int64_t largest) {
    const int64_t limit = largest > 0 ? largest : kLargestBase;
    if (rate.constant) {
        const int64_t both = std::lcm(int64_t{rate.picturesPerSecond.num}, int64_t{clip.den});
        if (both <= limit) return {1, static_cast<int>(both)};
        if (largest > 0 && rate.picturesPerSecond.num <= limit) return {1, rate.picturesPerSecond.num};
    }
    if (clip.den <= limit) return {1, clip.den};
    return {1, static_cast<int>(std::min<int64_t>(limit, kFineTicks))};
}

} // namespace

OutputClock::OutputClock(AVRational clipBase, Rate rate, bool needsConstantRate, int largestDenominator)
    : m_clipBase(clipBase)
    , m_base(needsConstantRate ? av_inv_q(rate.picturesPerSecond)
                               : ChooseBase(clipBase, rate, largestDenominator))
    , m_interval(rate.constant && !needsConstantRate ? av_inv_q(rate.picturesPerSecond) : AVRational{0, 1}) {}

int64_t OutputClock::Nearest(int64_t clipTime) const {
    if (m_interval.num > 0) {
        // On the grid of the picture rate when the clip's tick rounds to it.
        const int64_t picture = av_rescale_q(clipTime, m_clipBase, m_interval);
        if (av_rescale_q(picture, m_interval, m_clipBase) == clipTime)
            return av_rescale_q(picture, m_interval, m_base);
    }
    return av_rescale_q(clipTime, m_clipBase, m_base);
}

int64_t OutputClock::Convert(int64_t clipTime) {
    int64_t time = Nearest(clipTime);
    if (m_last != INT64_MIN) time = std::max(time, m_last + 1);
    return m_last = time;
}

int64_t OutputClock::ConvertDuration(int64_t clipTime, int64_t duration) const {
    return std::max<int64_t>(1, Nearest(clipTime + duration) - Nearest(clipTime));
}

} // namespace aveffect
