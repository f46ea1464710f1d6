#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <string_view>

/// Texts between Python and the library. Cells are bytes; what is no UTF-8 stands in a str as
/// surrogates that escape it, and goes back as the bytes that it was.
namespace vekpy {

namespace py = pybind11;

/// A str of the bytes.
py::str strOf(std::string_view bytes);

/// The bytes of a str or of a bytes object; a TypeError for anything else. Valid as long as it
/// lives.
class Text {
public:
    Text(py::handle value, const char* what);
    std::string_view view() const { return view_; }
    std::string string() const { return std::string(view_); }

private:
    py::object keeps_;
    std::string_view view_;
};

/// The bytes of a path: a str, bytes or what os.fspath takes.
std::string pathOf(py::handle path);

}  // namespace vekpy
