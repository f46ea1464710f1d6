#pragma once

#include <vekdb/arrow/arrow.h>
#include "rows.h"

namespace vekpy {

/// Rows of a view, or all rows, with how they are to be handed over. A stream of it is a picture of
/// the rows as they are when it is asked for.
struct ArrowRows {
    Shared log;
    View view;
    ArrowExport how;
};

inline ArrowRows arrowRowsOf(const Shared& log) {
    return {log, nullptr, {}};
}
inline ArrowRows arrowRowsOf(const View& view) {
    return {view->log(), view, {}};
}
/// The same rows handed over as options say; a TypeError for an option that is none.
ArrowRows withOptions(ArrowRows rows, const py::kwargs& options);

/// A stream in a capsule, which releases it unless somebody moved it out.
py::capsule streamOf(const ArrowRows& rows);

/// A log of the stream that an object gives, or of a capsule that holds one: it is moved out.
Shared fromArrow(const py::object& source, py::handle name);

void bindArrow(py::module_& module);

inline constexpr const char* streamHelp =
    "The rows as a stream of Arrow, in a capsule: what other libraries ask for. It is a picture "
    "of the rows as they are now.\n\nrequested_schema is not looked at: all columns are texts.";
inline constexpr const char* toArrowHelp =
    "The rows for libraries that read Arrow, with options: pyarrow.table(log.to_arrow(tags=True))."
    "\n\nOptions: tags (adds a column of booleans: whether a row is tagged), bytes (what becomes "
    "of\nbytes that are no UTF-8: 'refuse' with an error, 'replace' by U+FFFD, or 'binary', which "
    "makes\nall columns binary), rows_per_batch and bytes_per_batch (the most of a batch).";

/// Gives logs and views the methods that hand their rows over.
template <class Owner, class Class>
void bindHandingOver(Class& type) {
    type.def(
        "__arrow_c_stream__",
        [](const Owner& self, const py::object&) { return streamOf(arrowRowsOf(self)); },
        py::arg("requested_schema") = py::none(), streamHelp);
    type.def(
        "to_arrow",
        [](const Owner& self, const py::kwargs& options) {
            return withOptions(arrowRowsOf(self), options);
        },
        toArrowHelp);
}

}  // namespace vekpy
