#include "errors.h"

#include <cerrno>

#include <vekdb/host/file_look.h>
#include "texts.h"

namespace vekpy {

namespace {

const char* classOf(vek::Reason::Kind kind) {
    switch (kind) {
        case vek::Reason::unreadable:
            return "ReadError";
        case vek::Reason::unwritable:
            return "WriteError";
        case vek::Reason::wrongUsage:
            return "UsageError";
        case vek::Reason::contradiction:
            return "ConflictError";
        default:
            return "Error";
    }
}

bool isMissing(const std::string& path) {
    return FileLook::at(path.c_str()).error == ENOENT;
}

}  // namespace

void raiseNamed(const char* name, const vek::Reason& reason) {
    using namespace py::literals;
    const py::object type = py::module_::import("vekdb._errors").attr(name);
    const py::object error =
        type(strOf(reason.text()), "file"_a = strOf(reason.file), "line"_a = reason.line,
             "column"_a = strOf(reason.column), "found"_a = strOf(reason.found),
             "expected"_a = strOf(reason.expected), "advice"_a = strOf(reason.advice));
    PyErr_SetObject(type.ptr(), error.ptr());
    throw py::error_already_set();
}

void raise(const vek::Reason& reason) {
    if (reason.kind == vek::Reason::outOfMemory) {
        PyErr_NoMemory();
        throw py::error_already_set();
    }
    raiseNamed(reason.noColumn.empty() ? classOf(reason.kind) : "ColumnError", reason);
}

void raiseReading(const vek::Reason& reason, const std::string& path) {
    if (reason.kind != vek::Reason::unreadable || !isMissing(path)) raise(reason);
    raiseNamed("NotFoundError", reason);
}

}  // namespace vekpy
