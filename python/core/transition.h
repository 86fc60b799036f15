#pragma once
/// Transitions between two pictures of arrays.
#include <string>

#include "python/core/work_picture.h"

namespace aveffect::python {

/// A transition, and copies of its two pictures. Any threads may use it.
class Transition {
public:
    /// The pictures have the same shapes. Throws Error (Usage).
    Transition(const std::string& name, const pybind11::object& first, const pybind11::object& second,
               const std::string& order);

    /// What is seen when it has come that far, from 0 to 1; in out, or new arrays. Throws Error.
    pybind11::object Draw(double progress, const pybind11::object& out) const;

private:
    void DrawMiddle(const adapters::HostPicture& drawn, double progress) const;

    std::string m_name, m_order;
    ArrayPicture m_first;
    bool m_anyOrder; ///< of a pixel's bytes
    WorkPicture m_from, m_to;
};

} // namespace aveffect::python
