#pragma once

#include <exception>
#include <memory>
#include <utility>
#include <vector>

#include <vekdb/edit_log.h>
#include <vekdb/record.h>
#include "vekdb/columns/column_list.h"

/// One edit, and what the table does not have at the moment because of it: doing it and taking it
/// back are the same exchange. A changed cell takes no more than this and its text.
struct EditLog::Edit {
    enum class Kind : unsigned char { cell, tag, rows, columns };

    /// What whole rows and columns take.
    struct Bulk {
        std::vector<dbrecord> records;  // with their tags
        unsigned count = 0;             // of the rows
        ColumnList columns;
        bool hasRowsOfItsOwn = false;  // each row's values are exchanged with the columns
    };

    void tell(Follower& follower, std::size_t place) const;

    Kind kind;
    bool beginsStep = false;
    bool isTakenOut = false;    // rows that the table does not have now
    unsigned short column = 0;  // or the tag
    unsigned row = 0;
    LightweightString<char> value = {};
    std::unique_ptr<Bulk> bulk = nullptr;
};

/// What was thrown behind a change that stands.
struct EditLog::Late {
    std::exception_ptr thrown;

    void rethrow() const {
        if (thrown) std::rethrow_exception(thrown);
    }
};
