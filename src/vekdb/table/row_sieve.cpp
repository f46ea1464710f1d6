#include "vekdb/table/row_sieve.h"

#include <vekdb/row_choice.h>
#include <vekdb/table.h>
#include "vekdb/table/column_finder.h"
#include "vekdb/table/table_parts.h"

RowSieve::RowSieve(RowChoice* choice, vekdb& table, const TableParts& parts) : choice_(choice) {
    if (choice_ == nullptr) return;
    choice_->begin(table);
    query_ = parts.query;
    if (query_.isSet()) pass_.emplace(query_, parts.columns, columnFinder(table));
}

bool RowSieve::chooses(const dbrecord& record) const {
    return choice_->takes(record, !pass_ || pass_->matches(record));
}
