#include "texts.h"
#include "arguments.h"

namespace vekpy {

namespace {

std::string_view viewOf(PyObject* bytes) {
    return {PyBytes_AS_STRING(bytes), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes))};
}

py::object encoded(py::handle text) {
    PyObject* bytes = PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape");
    if (bytes == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(bytes);
}

}  // namespace

py::str strOf(std::string_view bytes) {
    PyObject* text = PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()),
                                          "surrogateescape");
    if (text == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(text);
}

Text::Text(py::handle value, const char* what) : keeps_(py::reinterpret_borrow<py::object>(value)) {
    if (PyBytes_Check(value.ptr())) {
        view_ = viewOf(value.ptr());
        return;
    }
    if (!PyUnicode_Check(value.ptr())) {
        throw py::type_error(std::string(what) + " is a text, str or bytes, not " +
                             typeName(value));
    }
    Py_ssize_t size = 0;
    if (const char* bytes = PyUnicode_AsUTF8AndSize(value.ptr(), &size)) {
        view_ = {bytes, static_cast<std::size_t>(size)};
        return;
    }
    // Surrogates; those that escape bytes are these bytes.
    PyErr_Clear();
    keeps_ = encoded(value);
    view_ = viewOf(keeps_.ptr());
}

std::string pathOf(py::handle path) {
    PyObject* bytes = nullptr;
    if (PyUnicode_FSConverter(path.ptr(), &bytes) == 0) throw py::error_already_set();
    const py::object keeps = py::reinterpret_steal<py::object>(bytes);
    return std::string(viewOf(bytes));
}

}  // namespace vekpy
