#pragma once
/// Methods that look first whether their object was ever made.
#include <string>
#include <utility>

#include <pybind11/pybind11.h>

namespace aveffect::python {

/// Python lets people go past __init__ (Class.__new__(Class)), and pybind11 then hands methods memory that
/// nothing was made in. Throws py::type_error.
template <class Class>
Class& Made(const pybind11::object& self) {
    namespace py = pybind11;
    const auto wrong = [](const std::string& before, const char* after) {
        return py::type_error(before + std::string(py::str(py::type::of<Class>().attr("__name__"))) + after);
    };
    if (!py::isinstance<Class>(self)) throw wrong("this is no ", "");
    auto* const instance = reinterpret_cast<py::detail::instance*>(self.ptr());
    if (!instance->get_value_and_holder(py::detail::get_type_info(typeid(Class))).holder_constructed())
        throw wrong("", ".__init__() was never called on this object");
    return self.cast<Class&>();
}

template <class Class, class Result, class... Arguments>
auto Method(Result (Class::*method)(Arguments...)) {
    return [method](const pybind11::object& self, Arguments... arguments) -> Result {
        return (Made<Class>(self).*method)(std::forward<Arguments>(arguments)...);
    };
}

template <class Class, class Result, class... Arguments>
auto Method(Result (Class::*method)(Arguments...) const) {
    return [method](const pybind11::object& self, Arguments... arguments) -> Result {
        return (Made<Class>(self).*method)(std::forward<Arguments>(arguments)...);
    };
}

} // namespace aveffect::python
