#include "arrow_streams.h"
#include "choosing.h"
#include "columns.h"
#include "containers.h"
#include "log_binding.h"
#include "texts.h"
#include "times.h"

#include <vekdb/formats/format.h>
#include <vekdb/support/version.h>

namespace vekpy {

namespace {

constexpr vek::Format allFormats[] = {
    vek::Format::table, vek::Format::csv,     vek::Format::tsv,  vek::Format::plainCsv,
    vek::Format::json,  vek::Format::jsonl,   vek::Format::ale,  vek::Format::edl,
    vek::Format::otio,  vek::Format::fcpxml,  vek::Format::xlsx, vek::Format::markdown,
    vek::Format::html,  vek::Format::parquet, vek::Format::arrow};

py::list formats() {
    py::list list;
    for (vek::Format format : allFormats) {
        list.append(py::make_tuple(strOf(vek::nameOf(format)), vek::canRead(format),
                                   vek::canWrite(format)));
    }
    return list;
}

py::object formatOfPath(py::handle path) {
    const auto format = vek::formatOfPath(pathOf(path));
    return format ? py::object(strOf(vek::nameOf(*format))) : py::none();
}

// A value that is none of the type that it is asked for.
void translate(std::exception_ptr thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (const py::cast_error& error) {
        PyErr_SetString(PyExc_TypeError, error.what());
    }
}

}  // namespace

}  // namespace vekpy

PYBIND11_MODULE(_core, module) {
    pybind11::options options;
    options.disable_function_signatures();
    module.doc() = "The compiled part of vekdb.";
    pybind11::register_local_exception_translator(vekpy::translate);
    vekpy::bindColumns(module);
    vekpy::bindRow(module);
    vekpy::bindView(module);
    vekpy::bindLog(module);
    vekpy::bindArrow(module);
    vekpy::bindContainers(module);
    vekpy::bindTimes(module);
    module.def("version", &vekdbDllVersionStr);
    module.def("formats", &vekpy::formats);
    module.def("format_of_path", &vekpy::formatOfPath);
}
