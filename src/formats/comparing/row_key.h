#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

/// What says which rows are one: the cells of some columns. Of one column that is its cell as it
/// stands; of several they are put behind each other, each with its length, so that none runs into
/// the next.
class RowKey {
public:
    explicit RowKey(std::vector<unsigned> columns = {}) : columns_(std::move(columns)) {}

    bool isThere() const { return !columns_.empty(); }

    /// "" where all cells are empty. `cellOf` gives the cell of a column, and may reuse what it was
    /// made in; what comes back lives as long as the cell and the room.
    template <class CellOf>
    std::string_view of(CellOf cellOf, std::string& room) const {
        if (columns_.size() == 1) return cellOf(columns_.front());
        room.clear();
        bool isEmpty = true;
        for (unsigned column : columns_) {
            const std::string_view cell = cellOf(column);
            const std::size_t size = cell.size();
            isEmpty = isEmpty && cell.empty();
            room.append(reinterpret_cast<const char*>(&size), sizeof size).append(cell);
        }
        return isEmpty ? std::string_view() : std::string_view(room);
    }
    std::string_view of(const Log& log, unsigned row, std::string& room) const {
        return of([&](unsigned column) { return log.cell(row, column); }, room);
    }

    /// The cells and the names of the columns, as people read them.
    template <class CellOf>
    std::string text(CellOf cellOf) const {
        std::string list;
        for (const unsigned& column : columns_) {
            list += &column == &columns_.front() ? "" : ", ";
            list += cellOf(column);
        }
        return list;
    }
    std::string text(const Log& log, unsigned row) const {
        return text([&](unsigned column) { return log.cell(row, column); });
    }
    std::string name(const Log& log) const {
        return text([&](unsigned column) { return log.columnName(column); });
    }

private:
    std::vector<unsigned> columns_;
};

}  // namespace vek::formats
