#include "python/core/failures.h"

namespace aveffect::python {

namespace py = pybind11;

namespace {

const char* ClassOf(ErrorKind kind) {
    switch (kind) {
    case ErrorKind::Usage:
        return "UsageError";
    case ErrorKind::Input:
        return "InputError";
    case ErrorKind::Output:
        return "OutputError";
    case ErrorKind::Effect:
        return "EffectError";
    case ErrorKind::Interrupted:
        return "Cancelled";
    }
    return "Error";
}

} // namespace

void TranslateFailures() {
    py::register_exception_translator([](std::exception_ptr failure) {
        try {
            if (failure) std::rethrow_exception(failure);
        } catch (const Error& error) {
            const py::object type = py::module_::import("aveffect._errors").attr(ClassOf(error.Kind()));
            PyErr_SetString(type.ptr(), error.what());
        } catch (const std::bad_alloc& shortage) {
            PyErr_SetString(PyExc_MemoryError, shortage.what());
        }
    });
}

Error Wrong(const std::string& text) { return {ErrorKind::Usage, text}; }

} // namespace aveffect::python
