#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "rows.h"
#include "texts.h"

/// Columns as Python holds them, and cells that are to be stored.
namespace vekpy {

/// A column of a log, or of the rows of a view. It keeps its column when others go.
struct Column {
    Shared log;
    unsigned index = 0;
    std::size_t seen = 0;  ///< removals of columns that the index knows of
    View view = {};        ///< none for all rows of the log
};

struct ColumnList {
    Shared log;
};

/// The column of a place in the table as it is now.
Column columnOf(const Shared& log, unsigned index, const Hold& hold, View view = {});

/// What `log.column(name)` gives for a name that an exception is raised for, and the like.
py::list textsOf(const Hold& hold, unsigned column, const std::vector<unsigned>& rows);
/// One tuple a row.
py::list tuplesOf(const Hold& hold, const std::vector<unsigned>& columns,
                  const std::vector<unsigned>& rows);
/// The columns of these names, all of them where there are none.
std::vector<unsigned> columnsNamed(const Hold& hold, const py::args& names);
/// The name of each column by which it is found.
py::list ownNames(const Hold& hold);

/// A text that is to be stored in a column.
struct Cell {
    unsigned column;
    Text text;
};

/// The cells of a mapping and of named arguments; nothing is changed.
std::vector<Cell> cellsOf(const Hold& hold, const py::dict& cells, const py::kwargs& more);
void storeCells(const Hold& hold, unsigned row, const std::vector<Cell>& cells);

void bindColumns(py::module_& module);

}  // namespace vekpy
