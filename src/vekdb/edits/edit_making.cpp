#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

#include <vekdb/edit_log.h>
#include <vekdb/host/cookie.h>
#include <vekdb/table.h>
#include "vekdb/edits/edit_line.h"
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_inside.h"

namespace {

using Text = LightweightString<char>;

// One that finds no column.
Text unusedName(const vekdb& table) {
    Text name = "removed";
    while (table.get_fieldnum(name) != EditLog::none) name += "-";
    return name;
}

}  // namespace

bool EditLog::isEditable() const {
    return table_.get_show_tags_only() == 0;
}

bool EditLog::isCell(unsigned row, unsigned column) const {
    if (!isEditable() || row >= table_.get_num_records()) return false;
    return column < table_.get_record(row)->get_num_fields();
}

bool EditLog::set(unsigned row, unsigned column, std::string_view text) {
    if (!isCell(row, column)) return false;
    if (table_.get_record(row)->fieldView(column) == text) return true;
    Edit edit{.kind = Edit::Kind::cell, .column = static_cast<unsigned short>(column), .row = row};
    edit.value = Text(text);
    make(std::move(edit));
    return true;
}

bool EditLog::setCookie(unsigned row, const Cookie& cookie) {
    return set(row, table_.get_fieldnum("cookie"), cookie.asString(false).view());
}

bool EditLog::setTag(unsigned row, int value) {
    if (!isEditable() || row >= table_.get_num_records()) return false;
    const auto tag = static_cast<std::uint8_t>(value);
    if (table_.get_tag(row) == tag) return true;
    make({.kind = Edit::Kind::tag, .column = tag, .row = row});
    return true;
}

bool EditLog::insert(unsigned at, Edit edit) {
    edit.row = at;
    edit.isTakenOut = true;
    make(std::move(edit));
    return true;
}

bool EditLog::insertRows(unsigned at, unsigned count) {
    const unsigned rows = table_.get_num_records();
    if (!isEditable() || at > rows || count > INT_MAX - std::min<unsigned>(rows, INT_MAX)) {
        return false;
    }
    if (count == 0) return true;
    Edit edit{.kind = Edit::Kind::rows, .bulk = std::make_unique<Edit::Bulk>()};
    edit.bulk->count = count;
    const dbrecord blank(static_cast<unsigned short>(table_.get_num_fields()));
    edit.bulk->records.assign(count, blank);
    return insert(at, std::move(edit));
}

bool EditLog::insertRow(unsigned at, const std::string_view* values, std::size_t count) {
    if (!isEditable() || at > table_.get_num_records()) return false;
    Edit edit{.kind = Edit::Kind::rows, .bulk = std::make_unique<Edit::Bulk>()};
    edit.bulk->count = 1;
    edit.bulk->records.emplace_back(static_cast<unsigned short>(table_.get_num_fields()));
    const auto most = static_cast<unsigned>(std::min<std::size_t>(count, table_.get_num_fields()));
    for (unsigned i = 0; i < most; ++i) {
        RecordAccess::place(edit.bulk->records.front(), i, Text(values[i]));
    }
    return insert(at, std::move(edit));
}

unsigned EditLog::deleteRows(unsigned first, unsigned count) {
    const unsigned rows = table_.get_num_records();
    if (!isEditable() || first >= rows || count == 0) return 0;
    count = std::min({count, rows - first, static_cast<unsigned>(INT_MAX)});
    Edit edit{.kind = Edit::Kind::rows, .row = first, .bulk = std::make_unique<Edit::Bulk>()};
    edit.bulk->count = count;
    make(std::move(edit));
    return count;
}

// The columns as they stand are what undo exchanges; where memory ends, they are put back.
template <class Change>
bool EditLog::changeColumns(Edit edit, Change change) {
    edits_->makeRoom();
    edit.bulk->columns = TableInside::of(table_).columns;
    bool isDone = false;
    Late late;
    try {
        isDone = change();
    } catch (...) {
        if (edit.bulk->columns.count() == table_.get_num_fields()) {
            std::swap(TableInside::of(table_).columns, edit.bulk->columns);
            throw;
        }
        late.thrown = std::current_exception();
    }
    if (!isDone && !late.thrown) return false;
    TableInside::of(table_).modified = true;
    forgetIdentities();
    enter(std::move(edit));
    tell((*edits_)[done_ - 1], done_ - 1, late);
    late.rethrow();
    return true;
}

unsigned EditLog::addColumn(const DBFieldDesc& field) {
    const unsigned column = table_.get_num_fields();
    if (!isEditable() || column >= ColumnList::most) return none;
    Edit edit{.kind = Edit::Kind::columns,
              .column = static_cast<unsigned short>(column),
              .bulk = std::make_unique<Edit::Bulk>()};
    const auto add = [&] { return table_.addField(field) == column; };
    return changeColumns(std::move(edit), add) ? column : none;
}

bool EditLog::renameColumn(unsigned column, const char* name) {
    if (!isEditable() || column >= table_.get_num_fields() || name == nullptr) return false;
    if (std::strcmp(table_.get_fieldname(column), name) == 0) return true;
    Edit edit{.kind = Edit::Kind::columns,
              .column = static_cast<unsigned short>(column),
              .bulk = std::make_unique<Edit::Bulk>()};
    return changeColumns(std::move(edit), [&] { return table_.set_fieldname(column, name); });
}

bool EditLog::setColumnType(unsigned column, DBFieldTypes::eType type) {
    if (!isEditable() || column >= table_.get_num_fields() || type == DBFieldTypes::none) {
        return false;
    }
    if (table_.get_field_type(column) == type) return true;
    Edit edit{.kind = Edit::Kind::columns,
              .column = static_cast<unsigned short>(column),
              .bulk = std::make_unique<Edit::Bulk>()};
    return changeColumns(std::move(edit), [&] { return table_.set_fieldtype(column, type); });
}

// A table removes columns by name, which may be that of another column, too.
bool EditLog::removeColumn(unsigned column) {
    if (!isEditable() || column >= table_.get_num_fields()) return false;
    Edit edit{.kind = Edit::Kind::columns,
              .column = static_cast<unsigned short>(column),
              .bulk = std::make_unique<Edit::Bulk>()};
    edit.bulk->hasRowsOfItsOwn = true;
    const unsigned rows = table_.get_num_records();
    edit.bulk->records.reserve(rows);
    for (unsigned row = 0; row < rows; ++row) {
        edit.bulk->records.emplace_back(*table_.get_record(row));
    }
    return changeColumns(std::move(edit), [&] {
        Text name = table_.get_fieldname(column);
        if (name.empty() || table_.get_fieldnum(name) != column) {
            name = unusedName(table_);
            table_.set_fieldname(column, name.c_str());
        }
        table_.removeField(name);
        return true;
    });
}
