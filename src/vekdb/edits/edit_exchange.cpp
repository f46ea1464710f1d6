#include <utility>

#include <vekdb/edit_log.h>
#include <vekdb/table.h>
#include "vekdb/edits/edit.h"
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_inside.h"

EditLog::Late EditLog::exchange(Edit& edit) {
    switch (edit.kind) {
        case Edit::Kind::cell:
            exchangeCell(edit);
            return {};
        case Edit::Kind::tag:
            exchangeTag(edit);
            return {};
        case Edit::Kind::rows:
            if (!edit.isTakenOut) return takeRows(edit);
            bringRows(edit);
            return {};
        case Edit::Kind::columns:
            exchangeColumns(edit);
            return {};
    }
    return {};
}

void EditLog::exchangeCell(Edit& edit) {
    dbrecord& record = *table_.get_record(edit.row);
    LightweightString<char> former(record.fieldView(edit.column));
    record.setField(edit.column, edit.value);
    edit.value.swap(former);
    if (TableInside::of(table_).columns.find("cookie") == edit.column) forgetIdentities();
}

void EditLog::exchangeTag(Edit& edit) {
    const unsigned former = table_.get_tag(edit.row);
    table_.set_tag(edit.row, edit.column);
    edit.column = static_cast<unsigned short>(former);
}

// The table's own records stand there first, blank, and get the values that were kept.
void EditLog::bringRows(Edit& edit) {
    Edit::Bulk& bulk = *edit.bulk;
    table_.insert_records(edit.row, static_cast<int>(bulk.count));
    for (unsigned i = 0; i < bulk.count; ++i) {
        dbrecord& record = *table_.get_record(edit.row + i);
        RecordAccess::exchange(record, bulk.records[i]);
        RecordAccess::setTag(record, bulk.records[i].get_tag());
        RecordAccess::setChanged(record, true);
    }
    TableInside::of(table_).modified = true;
    bulk.records.clear();
    edit.isTakenOut = false;
}

EditLog::Late EditLog::takeRows(Edit& edit) {
    Edit::Bulk& bulk = *edit.bulk;
    bulk.records.clear();
    bulk.records.reserve(bulk.count);
    for (unsigned i = 0; i < bulk.count; ++i) {
        const dbrecord& record = *table_.get_record(edit.row + i);
        bulk.records.emplace_back(record);
        RecordAccess::setTag(bulk.records.back(), record.get_tag());
    }
    Late late;
    const unsigned before = table_.get_num_records();
    try {
        table_.delete_records(edit.row, static_cast<int>(bulk.count));
    } catch (...) {
        if (table_.get_num_records() == before) throw;
        late.thrown = std::current_exception();
    }
    edit.isTakenOut = true;
    return late;
}

void EditLog::exchangeColumns(Edit& edit) noexcept {
    Edit::Bulk& bulk = *edit.bulk;
    std::swap(TableInside::of(table_).columns, bulk.columns);
    const int unread = 0;
    const int count = static_cast<int>(table_.get_num_fields());
    for (unsigned row = 0; row < table_.get_num_records(); ++row) {
        dbrecord& record = *table_.get_record(row);
        bulk.hasRowsOfItsOwn ? RecordAccess::exchange(record, bulk.records[row])
                             : record.resizeRecord(count, &unread, false);
    }
    TableInside::of(table_).modified = true;
    forgetIdentities();
}

// Which row an identity stands in is looked up anew when it is next asked for.
void EditLog::forgetIdentities() {
    table_.insert_records(0, 0);
}
