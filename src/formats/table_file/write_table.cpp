#include <algorithm>

#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include <vekdb/row_lines.h>
#include "formats/input/progress.h"
#include "formats/table_file/exact_cells.h"
#include "formats/table_file/table_rows.h"
#include "formats/text/text_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

constexpr std::size_t longestTableName = 250;

bool hasAny(std::string_view text, std::string_view bytes) {
    return text.find_first_of(bytes) != std::string_view::npos;
}

// The table itself where all columns are wanted, else a table of the wanted ones.
class TableToWrite {
public:
    explicit TableToWrite(const Sheet& sheet) : sheet_(sheet) {
        if (sheet.columns == allColumns(sheet.log)) return;
        std::vector<DBFieldDesc> fields;
        for (unsigned column : sheet.columns) {
            fields.push_back(
                {cellText(sheet.log.columnName(column)), sheet.log.table->get_field_type(column)});
        }
        narrowed_ = std::make_unique<vekdb>(fields);
        narrowed_->set_param_val("VEKDB", "Rev 1");
        // The field map names columns by position and means nothing for others.
        for (const ParameterText& parameter : ownParameters(sheet.log)) {
            narrowed_->set_param_val(parameter.name.c_str(), parameter.value.c_str());
        }
        for (unsigned row = 0; row < sheet.rowCount(); ++row) copyRow(row);
    }

    vekdb& table() const { return narrowed_ ? *narrowed_ : *sheet_.log.table; }

    const dbrecord& row(unsigned row) const {
        return *(narrowed_ ? narrowed_->get_record(row) : sheet_.view->get_record(row));
    }

private:
    void copyRow(unsigned row) {
        dbrecord* copy = narrowed_->get_record(narrowed_->add_records(1));
        for (unsigned short i = 0; i < sheet_.columns.size(); ++i) {
            std::string_view cell = sheet_.cell(row, i);
            if (!cell.empty()) copy->setField(i, cellText(cell));
        }
    }

    const Sheet& sheet_;
    std::unique_ptr<vekdb> narrowed_;
};

// The first value of a line as a reader will find it.
std::string readBack(const TextFile& file, unsigned line) {
    TextFile copy;
    copy.appendLine(file.line(line));
    dbrecord values(0);
    values.read(copy);
    return std::string(values.fieldView(0));
}

void addRecordLine(TextFile& file, const std::vector<std::string>& values) {
    dbrecord record(static_cast<unsigned short>(values.size()));
    for (unsigned short i = 0; i < values.size(); ++i) record.setField(i, cellText(values[i]));
    record.write(file);
}

// The lines in front of the rows. The library writes parameters and names as they are, so one
// with a quote or a line end in it would damage the file; here they are written as values are.
class HeaderWriter {
public:
    HeaderWriter(const Sheet& sheet, const vekdb& table, Losses& losses)
        : sheet_(sheet), losses_(losses) {
        for (unsigned i = 0; i < table.get_num_params(); ++i) {
            addParameter(table.get_param_name(i), table.get_param_text(i));
        }
        TextFile header;
        table.save_column_header(header, false);
        for (unsigned i = 0; i < 3; ++i) lines_.appendLine(header.line(i));
        if (areAllPlain())
            lines_.appendLine(header.line(3));
        else
            addNames();
        checkNames();
    }

    const TextFile& lines() const { return lines_; }

private:
    void addParameter(const std::string& name, const std::string& value) {
        addRecordLine(lines_, {name + ":" + value});
        bool isKept = readBack(lines_, lines_.size() - 1) == name + ":" + value &&
                      name.find(':') == std::string::npos && trimmed(name) == name &&
                      trimmed(value) == value;
        if (!isKept) losses_.add("parameters that read back as another text", inQuotes(name));
    }

    bool areAllPlain() const {
        for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
            if (hasAny(sheet_.name(i), "\"\n\r")) return false;
        }
        return true;
    }

    void addNames() {
        std::vector<std::string> names;
        for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
            names.push_back(sheet_.name(i).substr(0, longestTableName));
        }
        addRecordLine(lines_, names);
    }

    void checkNames() const {
        TextFile copy;
        copy.appendLine(lines_.line(lines_.size() - 1));
        dbrecord names(0);
        names.read(copy);
        for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
            if (names.fieldView(i) == sheet_.name(i)) continue;
            losses_.add("column names that read back as another text", inQuotes(sheet_.name(i)));
        }
    }

    const Sheet& sheet_;
    Losses& losses_;
    TextFile lines_;
};

// Finds what a later reader would find changed, and refuses what would damage the file.
class RowChecker {
public:
    RowChecker(const Sheet& sheet, const TableToWrite& source)
        : sheet_(sheet), source_(source), values_(sheet.columns.size()) {
        Progress progress(sheet.log.opening.watcher, "checking", sheet.rowCount());
        for (unsigned row = 0; row < sheet.rowCount(); ++row) {
            progress.reach(row);
            check(row);
        }
    }

    const std::vector<ExactCell>& changed() const { return changed_; }

private:
    void check(unsigned row) {
        const dbrecord& record = source_.row(row);
        if (RowLines::isAsRead(record)) return refuseHeaderLike(row, record.fieldView(0));
        record.fieldViews(values_.data(), static_cast<unsigned>(values_.size()));
        if (areSurelyKept(values_.data(), values_.size())) {
            return refuseHeaderLike(row, values_.front());
        }
        readBack(record);
        refuseHeaderLike(row, readBack_.fieldView(0));
        for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
            const std::string_view cell = sheet_.cell(row, i);
            if (readBack_.fieldView(i) == cell) continue;
            refuseLong(row);
            changed_.push_back({row, i, std::string(cell)});
        }
    }

    // Reads the record's line as a later reader will.
    void readBack(const dbrecord& record) {
        TextFile line;
        RowLines::append(record, line);
        readBack_.read(line);
    }

    // A reader of the file would skip the lines behind such a row.
    void refuseHeaderLike(unsigned row, std::string_view first) const {
        if (!sameText(first, "VEKDB")) return;
        throw Failure{unwritable, place(sheet_, row, 0) + ": " + inQuotes(sheet_.cell(row, 0)) +
                                      ", expected another value in a table file's first column, "
                                      "where it begins a header; put another column first"};
    }

    // A longer value would spill over and damage its line.
    void refuseLong(unsigned row) const {
        for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
            std::size_t size = sheet_.cell(row, i).size();
            if (size <= longestTableValue) continue;
            throw Failure{unwritable,
                          sheet_.source(row),
                          {sheet_.line(row), sheet_.name(i),
                           concat("a value of ", std::to_string(size), " bytes"),
                           "at most 4094 in a table file", "shorten it, or choose another format"}};
        }
    }

    const Sheet& sheet_;
    const TableToWrite& source_;
    std::vector<std::string_view> values_;
    dbrecord readBack_{0};
    std::vector<ExactCell> changed_;
};

// In pieces, so that no more of the file than that is held beside its rows.
void writeRows(const Sheet& sheet, const TableToWrite& source, Output& out) {
    constexpr std::size_t piece = 1 << 18;
    Progress progress(sheet.log.opening.watcher, "writing", sheet.rowCount());
    for (unsigned row = 0; row < sheet.rowCount();) {
        TextFile lines;
        for (; row < sheet.rowCount() && lines.textSize() < piece; ++row) {
            source.row(row).write(lines);
        }
        out.write({lines.block()->data(), lines.textSize()});
        progress.reach(row);
    }
}

void writeLines(const TextFile& lines, Output& out) {
    for (unsigned i = 0; i < lines.size(); ++i) out.line(lines.line(i));
}

}  // namespace

std::vector<ExactCell> writeTableRows(const Sheet& sheet, TextFile& lines) {
    const TableToWrite source(sheet);
    const RowChecker rows(sheet, source);
    for (unsigned row = 0; row < sheet.rowCount(); ++row) RowLines::append(source.row(row), lines);
    return rows.changed();
}

std::vector<std::string> tableHeading(const Log& log, Losses& losses) {
    const Sheet sheet{log, {}, allColumns(log)};
    const HeaderWriter writer(sheet, *log.table, losses);
    std::vector<std::string> lines;
    for (unsigned i = 0; i < writer.lines().size(); ++i) lines.emplace_back(writer.lines().line(i));
    return lines;
}

void tellExactCell(const ExactCell& cell, const std::string& place, bool isNoted, Losses& losses) {
    losses.add(std::string(lossOfCells(tableFileLoss(cell.value))) +
                   (isNoted ? "; vek reads them back as they are, other programs do not"
                            : "; there is no room to note them"),
               place);
}

const char* lossOfCells(TableLoss loss) {
    switch (loss) {
        case TableLoss::blanks:
            return "cells that lose the blanks at their ends";
        case TableLoss::carriageReturns:
            return "cells that lose their carriage returns";
        case TableLoss::backslash:
            return "cells whose backslash before n or a line end reads back as another text";
        default:
            return "cells that read back as another text";
    }
}

void writeTable(const Sheet& sheet, Output& out, Losses& losses) {
    if (sheet.columns.empty()) {
        throw Failure{unwritable, out.name() + ": a table file needs a column, " + sheet.log.name +
                                      " has none"};
    }
    const TableToWrite source(sheet);
    const RowChecker rows(sheet, source);
    const std::size_t noted = noteExactCells(source.table(), rows.changed());
    for (std::size_t i = 0; i < rows.changed().size(); ++i) {
        const ExactCell& cell = rows.changed()[i];
        tellExactCell(cell, place(sheet, cell.row, cell.column), i < noted, losses);
    }
    writeLines(HeaderWriter(sheet, source.table(), losses).lines(), out);
    writeRows(sheet, source, out);
}

}  // namespace vek::formats
