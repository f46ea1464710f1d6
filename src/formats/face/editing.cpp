#include <algorithm>

#include <vekdb/row_copies.h>
#include "formats/face/guarded.h"
#include "formats/face/inside.h"
#include "formats/log/column_edits.h"
#include "formats/text/text_lines.h"
#include "formats/writing/sheet_facts.h"

namespace vek {

namespace {

using formats::Failure;
using formats::wrongUsage;

void requireCell(const LogInside& inside, unsigned row, unsigned column) {
    if (inside.isRow(row) && column < inside.log.columnCount()) return;
    throw Failure{wrongUsage, inside.log.name, {0, "", "no such cell", "a row and a column", ""}};
}

// A log without rows has columns, too.
void requireColumn(const LogInside& inside, unsigned column) {
    if (column < inside.log.columnCount()) return;
    throw Failure{wrongUsage, inside.log.name, {0, "", "no such column", "a column", ""}};
}

void store(LogInside& inside, unsigned row, unsigned column, std::string_view text) {
    requireCell(inside, row, column);
    dbrecord& record = *inside.log.table->get_record(row);
    if (record.fieldView(column) == text) return;
    // A text goes into the one that is there where it can, and needs no string of its own then.
    if (record.set_field(static_cast<int>(column), text, false)) return;
    record.setField(static_cast<unsigned short>(column), formats::cellText(text));
}

std::string replaced(std::string_view cell, std::string_view text, std::string_view by) {
    std::string out;
    for (std::size_t at = cell.find(text); at != cell.npos; at = cell.find(text)) {
        out.append(cell.substr(0, at)).append(by);
        cell.remove_prefix(at + text.size());
    }
    return out.append(cell);
}

std::vector<unsigned> columnsNamed(const formats::Log& log, std::string_view column) {
    if (column.empty()) return formats::allColumns(log);
    return {log.requireColumn(column)};
}

}  // namespace

Result<void> Log::set(const Row& row, const Column& column, std::string_view text) {
    return guarded([&]() -> Result<void> {
        log_->requireOwn(row);
        log_->requireOwn(column);
        store(*log_, row.index(), column.index(), text);
        return {};
    });
}

Result<void> Log::set(const Row& row, std::string_view column, std::string_view text) {
    return guarded([&]() -> Result<void> {
        log_->requireOwn(row);
        store(*log_, row.index(), log_->log.requireColumn(column), text);
        return {};
    });
}

Result<std::size_t> Log::replaceText(const View& rows, std::string_view column,
                                     std::string_view text, std::string_view by) {
    return guarded([&]() -> Result<std::size_t> {
        log_->requireOwn(rows);
        const std::vector<unsigned> columns = columnsNamed(log_->log, column);
        std::size_t changed = 0;
        for (unsigned i = 0; i < rows.size() && !text.empty(); ++i) {
            const unsigned row = rows.at(i).index();
            for (unsigned at : columns) {
                if (log_->cell(row, at).find(text) == std::string_view::npos) continue;
                store(*log_, row, at, replaced(log_->cell(row, at), text, by));
                ++changed;
            }
        }
        return changed;
    });
}

Result<void> Log::setTagged(const Row& row, bool isTagged) {
    return guarded([&]() -> Result<void> {
        log_->requireOwn(row);
        requireCell(*log_, row.index(), 0);
        formats::Log& log = log_->log;
        unsigned column = log.findColumn("Tag");
        if (column == formats::noColumn && !isTagged) return {};
        if (column == formats::noColumn) {
            formats::ColumnEdits(log).add("Tag", DBFieldTypes::text);
            column = log.findColumn("Tag");
        }
        if (formats::isTag(log.cell(row.index(), column)) == isTagged) return {};
        store(*log_, row.index(), column, isTagged ? "1" : "0");
        return {};
    });
}

Result<Row> Log::addRow() {
    return guarded([&]() -> Result<Row> {
        const unsigned row = log_->log.rowCount();
        if (log_->kept) log_->kept->reserve(log_->kept->size() + 1);
        log_->log.table->add_records(1);
        if (log_->log.rowCount() == row) {
            return Reason{Reason::unwritable, log_->log.name, 0, {}, "no room for another row"};
        }
        if (log_->kept) log_->kept->push_back(row);
        return LogInside::rowOf(log_, row);
    });
}

Result<void> Log::removeRows(const View& rows) {
    return guarded([&]() -> Result<void> {
        log_->requireOwn(rows);
        std::vector<unsigned> places(rows.size());
        for (unsigned i = 0; i < rows.size(); ++i) places[i] = rows.at(i).index();
        return removeRows(places);
    });
}

Result<void> Log::removeRows(const std::vector<unsigned>& places) {
    return guarded([&]() -> Result<void> {
        std::vector<char> goes(log_->log.rowCount());
        for (unsigned place : places) {
            if (place < goes.size()) goes[place] = 1;
        }
        std::vector<unsigned> kept = log_->rows();
        std::erase_if(kept, [&](unsigned row) { return goes[row] != 0; });
        log_->kept = std::move(kept);
        return {};
    });
}

Result<Column> Log::addColumn(std::string_view name) {
    return guarded([&]() -> Result<Column> {
        formats::Log& log = log_->log;
        const unsigned column = log.columnCount();
        formats::ColumnEdits(log).add(std::string(name), DBFieldTypes::text);
        if (log.columnCount() == column) {
            return Reason{Reason::unwritable, log.name, 0, std::string(name),
                          "no room for another column"};
        }
        return LogInside::columnOf(log_, column);
    });
}

Result<void> Log::removeColumn(const Column& column) {
    return guarded([&]() -> Result<void> {
        log_->requireOwn(column);
        requireColumn(*log_, column.index());
        formats::ColumnEdits(log_->log).remove(column.index());
        return {};
    });
}

Result<void> Log::renameColumn(const Column& column, std::string_view name) {
    return guarded([&]() -> Result<void> {
        formats::Log& log = log_->log;
        log_->requireOwn(column);
        requireColumn(*log_, column.index());
        const std::string was = log.columnName(column.index());
        formats::ColumnEdits(log).rename(column.index(), was, std::string(name));
        return {};
    });
}

namespace {

void noteBare(const formats::Log& log, unsigned row, formats::Log& copied) {
    const auto target = static_cast<unsigned>(copied.lines.size());
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        copied.bare.note(target, column, log.bare.of(row, column));
    }
}

// Columns and parameters of a log with the rows that it shows; they share their text.
std::unique_ptr<vekdb> tableOf(const LogInside& inside) {
    auto table = std::make_unique<vekdb>(*inside.log.table, 0);
    RowCopies copies(*table);
    for (unsigned row : inside.rows()) copies.append(*inside.log.table->get_record(row));
    return table;
}

}  // namespace

std::shared_ptr<LogInside> LogInside::copy() const {
    auto inside = std::make_shared<LogInside>();
    formats::Log& copied = inside->log;
    copied.name = log.name;
    copied.format = log.format;
    copied.table = tableOf(*this);
    for (unsigned row : rows()) {
        if (log.bare.areAny()) noteBare(log, row, copied);
        copied.lines.push_back(static_cast<std::uint32_t>(log.lineOf(row)));
    }
    copied.repeatedNames = log.repeatedNames;
    copied.repeatedAt = log.repeatedAt;
    copied.unnamed = log.unnamed;
    copied.lineEnd = log.lineEnd;
    copied.bytesRead = log.bytesRead;
    return inside;
}

Result<Log> Log::copy() const {
    return guarded([&]() -> Result<Log> { return LogInside::logOf(log_->copy()); });
}

namespace {

void requireParameter(const formats::Log& log, std::string_view name, std::string_view value) {
    if (formats::canBeParameter(name, value)) return;
    Problem problem;
    if (name.empty()) {
        problem.found = "a parameter without a name";
        problem.expected = "a name";
    } else if (formats::sameText(name, "VEKDB")) {
        problem.found = "parameter " + formats::inQuotes(name) + " is the library's own";
        problem.expected = "another name";
    } else {
        problem.found = "parameter " + formats::inQuotes(name);
        problem.expected =
            "no quotes, tabs, line ends or blanks at the ends, and no colon in the name";
    }
    throw Failure{wrongUsage, log.name, problem};
}

}  // namespace

std::vector<Parameter> Log::parameters() const {
    std::vector<Parameter> parameters;
    for (formats::ParameterText& own : formats::ownParameters(log_->log)) {
        parameters.push_back({std::move(own.name), std::move(own.value)});
    }
    return parameters;
}

std::optional<std::string> Log::parameter(std::string_view name) const {
    const std::string wanted(name);
    if (log_->log.table->get_param_val(wanted.c_str()) == nullptr) return {};
    return log_->log.parameter(wanted.c_str());
}

Result<void> Log::setParameter(std::string_view name, std::string_view value) {
    return guarded([&]() -> Result<void> {
        formats::Log& log = log_->log;
        requireParameter(log, name, value);
        if (log.setParameter(std::string(name), std::string(value))) return {};
        return Reason{Reason::unwritable,
                      log.name,
                      0,
                      {},
                      "no room for parameter " + formats::inQuotes(name),
                      "40 parameters at most"};
    });
}

}  // namespace vek
