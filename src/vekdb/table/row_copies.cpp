#include <vekdb/row_copies.h>

#include <algorithm>

#include <vekdb/table.h>
#include "vekdb/record/record_access.h"
#include "vekdb/record/value_copies.h"
#include "vekdb/table/table_parts.h"

RowCopies::RowCopies(vekdb& table) : table_(table), copies_(std::make_unique<ValueCopies>()) {}

RowCopies::~RowCopies() = default;

// The row is the table's before it has values, so that it is nobody's loss where memory ends.
dbrecord* RowCopies::newRow() {
    Rows& rows = table_.parts().rows;
    if (rows.tagsOnly() != 0) return nullptr;
    rows.cover(std::uint64_t{rows.count()} + 1);
    dbrecord* record = table_.newRow();
    rows.append(record);
    return record;
}

bool RowCopies::append(const dbrecord& row, unsigned most) {
    dbrecord* record = newRow();
    if (record == nullptr) return false;
    const unsigned columns = table_.parts().columns.count();
    most = std::min(most, columns);
    if (RecordAccess::share(*record, row, most)) {
        RecordAccess::widen(*record, static_cast<unsigned short>(columns));
        return true;
    }
    values_.resize(std::min(most, RecordAccess::storedCount(row)));
    for (unsigned i = 0; i < values_.size(); ++i) values_[i] = RecordAccess::view(row, i);
    give(*record, values_.data(), values_.size());
    return true;
}

bool RowCopies::append(const std::string_view* values, std::size_t count) {
    dbrecord* record = newRow();
    if (record == nullptr) return false;
    give(*record, values, count);
    return true;
}

bool RowCopies::replace(unsigned row, const std::string_view* values, std::size_t count) {
    dbrecord* record = table_.get_record(row);
    if (record == nullptr) return false;
    give(*record, values, count);
    RecordAccess::setChanged(*record, true);
    table_.parts().modified = true;
    return true;
}

// Empty values at the end cost nothing.
void RowCopies::give(dbrecord& record, const std::string_view* values, std::size_t count) {
    const auto columns = static_cast<unsigned short>(table_.parts().columns.count());
    count = std::min<std::size_t>(count, columns);
    while (count > 0 && values[count - 1].empty()) --count;
    copies_->give(record, values, static_cast<unsigned>(count));
    RecordAccess::widen(record, columns);
}
