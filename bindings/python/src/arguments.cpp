#include "arguments.h"

namespace vekpy {

std::string typeName(py::handle value) {
    return py::str(py::type::of(value).attr("__name__"));
}

py::ssize_t indexIn(py::handle value) {
    const py::ssize_t index = PyNumber_AsSsize_t(value.ptr(), PyExc_IndexError);
    if (index == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
    return index;
}

bool truthIn(py::handle value) {
    const int truth = PyObject_IsTrue(value.ptr());
    if (truth < 0) throw py::error_already_set();
    return truth != 0;
}

std::size_t countIn(py::handle value, const std::string& what) {
    if (PyIndex_Check(value.ptr()) == 0) {
        throw py::type_error(what + " is a whole number, not " + typeName(value));
    }
    const py::object number = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
    if (!number) throw py::error_already_set();
    const std::size_t count = PyLong_AsSize_t(number.ptr());
    if (PyErr_Occurred() == nullptr) return count;
    PyErr_Clear();
    throw py::value_error(what + " is a whole number from 0 on that a machine can count, not " +
                          std::string(py::str(number)).substr(0, 40));
}

py::dict dictIn(py::handle value, const std::string& what) {
    if (value.is_none()) throw py::type_error(what + " is a mapping, not None");
    return py::dict(py::reinterpret_borrow<py::object>(value));
}

void neverPickled(py::handle type) {
    const auto refuse = [](py::handle self, const py::args&) -> py::object {
        throw py::type_error(typeName(self) +
                             " objects are neither pickled nor copied by the "
                             "module copy; a Log has a method copy");
    };
    for (const char* name : {"__reduce__", "__reduce_ex__"}) {
        type.attr(name) = py::cpp_function(refuse, py::name(name), py::is_method(type));
    }
}

void neverMadeByHand(py::handle type) {
    neverPickled(type);
    auto* const made = reinterpret_cast<PyTypeObject*>(type.ptr());
    made->tp_new = [](PyTypeObject* asked, PyObject*, PyObject*) -> PyObject* {
        PyErr_Format(PyExc_TypeError, "%s is made by a log, a view or a container alone",
                     asked->tp_name);
        return nullptr;
    };
}

}  // namespace vekpy
