// The module of the package that is written in C++.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "cli/catalogue_json.h"
#include "cli/catalogue_text.h"
#include "host/settings/catalogue_lookup.h"
#include "python/core/chain.h"
#include "python/core/failures.h"
#include "python/core/job.h"
#include "python/core/made.h"
#include "python/core/sound.h"
#include "python/core/transition.h"
#include "python/core/unlocked.h"

namespace py = pybind11;

PYBIND11_MODULE(_core, module) {
    using namespace aveffect;
    using namespace aveffect::python;
    module.doc() = "The package's part in C++; what it offers stands in the package itself.";
    TranslateFailures();
    WaitForUnlockedAtExit();

    module.def("catalogue", [] { return CatalogueJson().dump(); });
    module.def("describe_text", [](const std::string& name) { return DescribeText(RequireEffect(name)); });
    module.def("run", &RunJob, py::arg("arguments"), py::arg("progress"), py::arg("warning"));

    py::class_<python::Chain>(module, "Chain")
        .def(py::init<std::vector<std::string>, std::optional<int64_t>, std::string>(), py::arg("effects"),
             py::arg("length"), py::arg("lacks_length"))
        .def("process", Method(&python::Chain::Process), py::arg("frame"), py::arg("time"), py::arg("order"),
             py::arg("out"), py::arg("inplace"), py::arg("right"))
        .def_property_readonly("texts", Method(&python::Chain::Texts))
        .def_property_readonly("length", Method(&python::Chain::Length));
    py::class_<python::Transition>(module, "Transition")
        .def(py::init<const std::string&, const py::object&, const py::object&, const std::string&>(),
             py::arg("name"), py::arg("first"), py::arg("second"), py::arg("order"))
        .def("draw", Method(&python::Transition::Draw), py::arg("progress"), py::arg("out"));
    py::class_<python::Sound>(module, "Sound")
        .def(py::init<const std::string&, std::optional<int64_t>>(), py::arg("effect"), py::arg("length"))
        .def("process", Method(&python::Sound::Process), py::arg("samples"), py::arg("rate"),
             py::arg("start"), py::arg("inplace"))
        .def_property_readonly("text", Method(&python::Sound::Text))
        .def_property_readonly("length", Method(&python::Sound::Length));
}
