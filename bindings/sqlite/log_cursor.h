#pragma once

#include <memory>
#include <vector>

#include "log_table.h"

namespace vek::sql {

/// Goes over rows of a log. The image that it began with stays what it goes over, whatever becomes
/// of the table meanwhile; rows that are inserted behind its end do not come into it.
class LogCursor : public sqlite3_vtab_cursor {
public:
    explicit LogCursor(LogTable& table)
        : sqlite3_vtab_cursor{}, table_(table), image_(table.openCursor()) {}
    ~LogCursor() { table_.closeCursor(); }
    LogCursor(const LogCursor&) = delete;
    LogCursor& operator=(const LogCursor&) = delete;

    void filter(const char* plan, int count, sqlite3_value** values);
    void next();
    bool isAtEnd() const { return at_ >= end_; }
    sqlite3_int64 rowid() const { return sqlite3_int64{row()} + 1; }
    void column(sqlite3_context* context, int column) const;

private:
    unsigned row() const { return isList_ ? rows_[at_] : at_; }
    void skip();
    const dbrecord& record() const;
    bool takes() const;

    LogTable& table_;
    std::shared_ptr<LogImage> image_;
    std::vector<RowFilter> filter_;  // one, or none
    std::vector<unsigned> rows_;     // that are gone over, where isList_
    bool isList_ = false;
    mutable const dbrecord* record_ = nullptr;  // of the row, once a cell of it was asked for
    unsigned at_ = 0;
    unsigned end_ = 0;
};

}  // namespace vek::sql
