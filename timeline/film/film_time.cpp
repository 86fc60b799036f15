#include "timeline/film/film_time.h"

#include <cmath>
#include <limits>
#include <stdexcept>

namespace aveffect {

namespace {

__extension__ typedef __int128 Wide;

Wide Divisor(Wide a, Wide b) {
    while (b != 0) {
        const Wide rest = a % b;
        a = b;
        b = rest;
    }
    return a;
}

Wide FloorOf(Wide numerator, Wide denominator) {
    const Wide quotient = numerator / denominator;
    return numerator % denominator < 0 ? quotient - 1 : quotient;
}

int64_t Clamped(Wide value) {
    constexpr Wide kMost = std::numeric_limits<int64_t>::max();
    if (value > kMost) return std::numeric_limits<int64_t>::max();
    if (value < -kMost) return -std::numeric_limits<int64_t>::max();
    return static_cast<int64_t>(value);
}

} // namespace

AVRational RateMeant(double rate) {
    constexpr double kDropped = 1000.0 / 1001.0, kHundredths = 0.006;
    const double whole = std::round(rate);
    if (rate == whole && whole >= 1 && whole <= 1e9) return {static_cast<int>(whole), 1};
    const double above = std::round(rate / kDropped);
    if (above >= 1 && above <= 1e6 && std::abs(above * kDropped - rate) < kHundredths)
        return {static_cast<int>(above) * 1000, 1001};
    constexpr int kLargest = 1'000'000;
    return av_d2q(rate, kLargest);
}

FilmTime FilmTime::Reduced(Wide numerator, Wide denominator) {
    const Wide divisor = Divisor(numerator < 0 ? -numerator : numerator, denominator);
    numerator /= divisor;
    denominator /= divisor;
    constexpr Wide kMost = Wide{1} << 62; // two products of such terms can be added
    while (denominator > kMost || numerator > kMost || numerator < -kMost) {
        numerator = FloorOf(numerator + 1, 2);
        denominator = denominator > 1 ? (denominator + 1) / 2 : 1;
    }
    FilmTime time;
    time.m_numerator = static_cast<int64_t>(numerator);
    time.m_denominator = static_cast<int64_t>(denominator);
    return time;
}

FilmTime::FilmTime(int64_t ticks, AVRational rate)
    : FilmTime(Reduced(Wide{ticks} * rate.den, rate.num)) {}

FilmTime FilmTime::FromValue(double value, double rate) {
    constexpr double kLargest = 1e15, kParts = 1000;
    if (!std::isfinite(value) || std::abs(value) > kLargest || !std::isfinite(rate) || rate <= 0 ||
        rate > 1e9)
        throw std::range_error("a time that can't be counted");
    const AVRational meant = RateMeant(rate);
    if (meant.num <= 0) throw std::range_error("a rate that can't be counted");
    const double whole = std::round(value);
    if (whole == value) return {static_cast<int64_t>(whole), meant};
    return FilmTime(static_cast<int64_t>(std::floor(value)), meant) +
           Reduced(static_cast<Wide>(std::round((value - std::floor(value)) * kParts * kParts)) * meant.den,
                   static_cast<Wide>(kParts * kParts) * meant.num);
}

FilmTime FilmTime::operator+(const FilmTime& other) const {
    return Reduced(Wide{m_numerator} * other.m_denominator + Wide{other.m_numerator} * m_denominator,
                   Wide{m_denominator} * other.m_denominator);
}

FilmTime FilmTime::operator-(const FilmTime& other) const { return *this + other * AVRational{-1, 1}; }

FilmTime FilmTime::operator*(AVRational factor) const {
    return Reduced(Wide{m_numerator} * factor.num, Wide{m_denominator} * factor.den);
}

std::strong_ordering FilmTime::operator<=>(const FilmTime& other) const {
    return Wide{m_numerator} * other.m_denominator <=> Wide{other.m_numerator} * m_denominator;
}

int64_t FilmTime::Floor(AVRational rate) const {
    return Clamped(FloorOf(Wide{m_numerator} * rate.num, Wide{m_denominator} * rate.den));
}

int64_t FilmTime::Nearest(AVRational rate) const {
    const Wide numerator = Wide{m_numerator} * rate.num, denominator = Wide{m_denominator} * rate.den;
    return Clamped(FloorOf(2 * numerator + denominator, 2 * denominator));
}

int64_t FilmTime::Ceil(AVRational rate) const {
    return Clamped(-FloorOf(-Wide{m_numerator} * rate.num, Wide{m_denominator} * rate.den));
}

} // namespace aveffect
