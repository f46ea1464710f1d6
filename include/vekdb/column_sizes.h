#pragma once

#include <vector>

#include <vekdb/host/visibility.h>

class vekdb;
struct TableParts;

/// The longest value of each column of a table, found in one pass over its rows. While this lives
/// the table answers `get_fieldsize` by it, and `save_column_header` looks at no row: for whoever
/// writes many headers of one table.
class VEKDB_PUBLIC ColumnSizes {
public:
    /// The table outlives this; its rows, values and columns stay as they are meanwhile. Of several
    /// for one table those made later end first, and the first one counts. Throws bad_alloc.
    explicit ColumnSizes(const vekdb& table);
    ~ColumnSizes();
    ColumnSizes(const ColumnSizes&) = delete;
    ColumnSizes& operator=(const ColumnSizes&) = delete;

private:
    TableParts& parts_;
    bool isFirst_;
    std::vector<unsigned> sizes_;
};
