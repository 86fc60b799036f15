#pragma once
/// One channel of an effect, as sound plug-ins have it: ports that the host connects, and stretches of float
/// samples of any length, one after the other.
#include <cstddef>
#include <span>

#include "aveffect/effect_info.h"

namespace AVBased::sound {

/// The ports of every effect: samples in, samples out (which may be the same), and one control for each
/// property of the catalogue, in its order.
constexpr size_t kInput = 0;
constexpr size_t kOutput = 1;
constexpr size_t kFirstControl = 2;
constexpr size_t kMostControls = 4;

/// The number that a decimal text such as "-1.0" stands for. Not a constant where it is anything else.
constexpr double NumberIn(const char* text) {
    const double sign = *text == '-' ? -1 : 1;
    if (*text == '-') ++text;
    double digits = 0, unit = 1;
    bool fraction = false;
    for (; *text; ++text) {
        if (*text == '.' && !fraction) {
            fraction = true;
            continue;
        }
        if (*text < '0' || *text > '9') throw "no decimal number";
        digits = digits * 10 + (*text - '0');
        if (fraction) unit *= 10;
    }
    return sign * digits / unit;
}

/// What a control may say: the property's meaningful range, and what is in force where the host says nothing.
struct ControlRange {
    double least, most, first;
    bool whole; ///< the property is an integer

    /// The value of a connected control, rounded to a whole number where the property is one and kept within
    /// the range; the first value for null and NaN.
    double ValueOf(const float* control) const noexcept;
};

/// Controls are floats: a highest number that is none gives way to the next one below.
constexpr ControlRange RangeOf(const PropertyInfo& property) {
    constexpr double kSpacing = 1.0 / 16777216; // of floats: 2^-24 of the number at least
    double most = static_cast<float>(property.maximum);
    if (most > property.maximum) most = static_cast<float>(property.maximum * (1 - kSpacing));
    return {property.minimum, most, NumberIn(property.InForceAtFirst()), property.type == kInt32};
}

/// Used by one thread at a time. Begin() and Run() neither allocate nor lock nor call the system, and take
/// time in proportion to the samples.
class Channel {
public:
    virtual ~Channel() = default;
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    /// The place stays the host's and is looked at by Run(); ports that there are not are left out.
    void Connect(size_t port, void* place) noexcept;

    /// The next sample is the first one.
    virtual void Begin() noexcept {}

    /// The next samples, from the input to the output. Nothing happens while either is not connected.
    void Run(size_t count) noexcept;

protected:
    /// A range for each control, which outlives the channel.
    explicit Channel(std::span<const ControlRange> controls) noexcept
        : m_Controls(controls) {}

    /// Changes so many samples, of which there is at least one, as the controls say.
    virtual void Work(float* samples, size_t count, std::span<const double> controls) noexcept = 0;

private:
    const std::span<const ControlRange> m_Controls;
    float* m_Places[kFirstControl + kMostControls] = {};
};

} // namespace AVBased::sound
