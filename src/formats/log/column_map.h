#pragma once

#include <string>
#include <vector>

#include <vekdb/views/field_map.h>
#include "formats/log/log.h"

namespace vek::formats {

/// The parameter that a log keeps its map in.
constexpr const char* columnMapName = "V5_FIELD_MAP";

/// The field map of a log, by columns. The library's map goes by names, which several columns of a
/// log may share and some have not: it is read over a table without rows, in which each column is
/// called by a number of its own, and the log itself is left alone.
class ColumnMap {
public:
    explicit ColumnMap(const Log& log);
    ColumnMap(const ColumnMap&) = delete;
    ColumnMap& operator=(const ColumnMap&) = delete;

    /// The columns that are shown, in their order.
    std::vector<unsigned> shown() const;
    /// These are shown from now on, in this order, and the others hidden behind them.
    void show(const std::vector<unsigned>& columns);
    /// To be told of a column that came behind all others, which is shown, and of one that went.
    void added();
    void removed(unsigned column);

    /// The value of the parameter.
    LightweightString<char> text() const { return map_.asString(); }

private:
    void append(unsigned column, bool isShown);

    vekdb columns_;
    unsigned nextName_ = 0;
    FieldMap map_;
};

}  // namespace vek::formats
