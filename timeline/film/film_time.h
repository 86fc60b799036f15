#pragma once
/// Times in films.
#include <compare>
#include <cstdint>
#include <string>

extern "C" {
#include <libavutil/rational.h>
}

namespace aveffect {

/// Seconds as a fraction, so that times of different rates are added without a rounding: a film of 29.97
/// pictures a second and sound of 48 kHz does not drift. Where a result's terms grow beyond 62 bits, which
/// mixtures of odd rates may bring about, it is the nearest one that fits.
class FilmTime {
public:
    constexpr FilmTime() = default;
    /// Ticks of a rate above 0, in a second.
    FilmTime(int64_t ticks, AVRational rate);
    /// A value as interchange files write it: may have a fraction of a tick. The rate is above 0 and finite,
    /// and one that is 1000/1001 of a whole number may be rounded to hundredths. Throws std::range_error when
    /// it does not fit.
    static FilmTime FromValue(double value, double rate);

    FilmTime operator+(const FilmTime& other) const;
    FilmTime operator-(const FilmTime& other) const;
    FilmTime operator*(AVRational factor) const;
    std::strong_ordering operator<=>(const FilmTime& other) const;
    bool operator==(const FilmTime& other) const = default;

    /// In ticks of a rate: the last one at or before the time, the nearest one, the first one at or after it.
    int64_t Floor(AVRational rate) const;
    int64_t Nearest(AVRational rate) const;
    int64_t Ceil(AVRational rate) const;
    double Seconds() const { return static_cast<double>(m_numerator) / static_cast<double>(m_denominator); }
    /// As a fraction, "1001/24".
    std::string Text() const { return std::to_string(m_numerator) + "/" + std::to_string(m_denominator); }
    int64_t Milliseconds() const { return Nearest({1000, 1}); }

private:
    __extension__ typedef __int128 Wide;
    static FilmTime Reduced(Wide numerator, Wide denominator);

    int64_t m_numerator = 0;
    int64_t m_denominator = 1; ///< above 0; the fraction is in its lowest terms
};

/// The rate that is meant by a number of pictures a second: 23.976 and 23.98 are 24000/1001.
AVRational RateMeant(double rate);

/// From a moment on.
struct FilmRange {
    FilmTime start, duration;

    FilmTime End() const { return start + duration; }
    bool operator==(const FilmRange&) const = default;
};

} // namespace aveffect
