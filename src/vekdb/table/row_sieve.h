#pragma once

#include <optional>

#include "vekdb/query/query.h"
#include "vekdb/query/query_pass.h"

class RowChoice;
class dbrecord;
class vekdb;
struct TableParts;

/// Lets through the rows of a file that a table takes: all where there is no choice.
class RowSieve {
public:
    RowSieve() = default;
    /// Begins the choice, if there is one; the table has its columns.
    RowSieve(RowChoice* choice, vekdb& table, const TableParts& parts);
    RowSieve(const RowSieve&) = delete;
    RowSieve& operator=(const RowSieve&) = delete;

    bool isOpen() const { return choice_ == nullptr; }
    bool takes(const dbrecord& record) const { return isOpen() || chooses(record); }

private:
    bool chooses(const dbrecord& record) const;

    RowChoice* choice_ = nullptr;
    Query query_;                    // of its own: the choice may set the table another one
    std::optional<QueryPass> pass_;  // reads the query
};
