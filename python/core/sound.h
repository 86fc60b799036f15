#pragma once
/// Effects on arrays of sound.
#include <optional>
#include <string>

#include <pybind11/numpy.h>

#include "host/settings/effect_settings.h"

namespace aveffect::python {

/// An effect on sound. Any threads may use it.
class Sound {
public:
    /// An effect as people write it, and the whole's length in milliseconds; absent: that of the samples.
    /// Throws Error (Usage).
    Sound(const std::string& effect, std::optional<int64_t> lengthMs);

    /// Works on the part of a sound that begins at a time, in seconds: int16, or float32 from -1 to 1, of
    /// shape (N) or (N, channels), at so many samples a second. Returns new samples, or the given ones where
    /// it is in place. Lets other threads of Python's run meanwhile. Throws Error, and py::error_already_set
    /// for types.
    pybind11::object Process(const pybind11::object& samples, int rate, double start, bool inplace) const;

    const std::string& Text() const noexcept { return m_text; }
    const std::optional<int64_t>& Length() const noexcept { return m_lengthMs; }

private:
    std::string m_text;
    EffectSpec m_effect;
    std::optional<int64_t> m_lengthMs;
};

} // namespace aveffect::python
