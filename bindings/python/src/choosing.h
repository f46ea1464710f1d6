#pragma once

#include "rows.h"

namespace vekpy {

/// Conditions and an order as Python gives them. Columns are looked up when the choice is used.
vek::Choice choiceOf(const py::args& conditions, const py::kwargs& options);

/// A view of the rows that are meant, of the log or of another view.
View choose(const Shared& log, const View& among, vek::Choice choice);
/// The same from places of a slice.
View part(const Shared& log, const View& among, const py::slice& slice);
/// Makes a view's choice anew: rows that were added come in, those that it is not about go.
void refresh(const View& view);
/// Puts the rows of a view in another order.
void order(const View& view, const py::args& columns, bool reverse);

void bindView(py::module_& module);

}  // namespace vekpy
