#include <cstring>

#include "host/text_file.h"
#include "host/text_util.h"
#include "tools/vek/cli/exact_cells.h"
#include "tools/vek/cli/progress.h"
#include "tools/vek/cli/readers.h"
#include "tools/vek/cli/write_formats.h"

namespace vek {

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
        for (const Parameter& parameter : ownParameters(sheet.log)) {
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

void checkNames(const Sheet& sheet, Losses& losses) {
    for (unsigned i = 0; i < sheet.columns.size(); ++i) {
        std::string name = sheet.name(i);
        if (name.size() > longestTableName) {
            losses.add("column names cut to 250 bytes", inQuotes(name));
        }
        if (hasAny(name, "\"\n\r") || trimmed(name) != name) {
            losses.add(
                "column names with quotes, line ends or blanks at their ends change when "
                "the file is read",
                inQuotes(name));
        }
    }
}

void checkParameters(const Sheet& sheet, Losses& losses) {
    for (const Parameter& parameter : ownParameters(sheet.log)) {
        if (hasAny(parameter.value, "\"\n\r") || hasAny(parameter.name, "\"\n\r:") ||
            trimmed(parameter.value) != parameter.value) {
            losses.add(
                "parameters with quotes, line ends or blanks at their ends change when "
                "the file is read",
                inQuotes(parameter.name));
        }
    }
}

// Writes the rows, reads each line back as a later reader will, and notes what came back changed.
class RowWriter {
public:
    RowWriter(const Sheet& sheet, const TableToWrite& source) : sheet_(sheet), source_(source) {
        Progress progress("writing", sheet.rowCount());
        for (unsigned row = 0; row < sheet.rowCount(); ++row) {
            progress.reach(row);
            write(row);
        }
    }

    const TextFile& lines() const { return lines_; }
    const std::vector<ExactCell>& changed() const { return changed_; }

private:
    void write(unsigned row) {
        source_.row(row).write(lines_);
        readBack_.read(lines_);
        for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
            std::string_view cell = sheet_.cell(row, i);
            if (readBack_.fieldView(i) == cell) continue;
            refuseLong(row);
            changed_.push_back({row, i, std::string(cell)});
        }
    }

    // A longer value would spill over and damage its line.
    void refuseLong(unsigned row) const {
        for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
            std::size_t size = sheet_.cell(row, i).size();
            if (size <= longestTableValue) continue;
            throw Failure{unwritable, place(sheet_, row, i) + ": a value of " +
                                          std::to_string(size) +
                                          " bytes, expected at most 4094 "
                                          "in a table file; shorten it, or choose another format"};
        }
    }

    const Sheet& sheet_;
    const TableToWrite& source_;
    TextFile lines_;
    dbrecord readBack_{0};
    std::vector<ExactCell> changed_;
};

void tellChanged(const Sheet& sheet, const std::vector<ExactCell>& changed, std::size_t noted,
                 Losses& losses) {
    for (std::size_t i = 0; i < changed.size(); ++i) {
        losses.add(std::string(lossOfCells(tableFileLoss(changed[i].value))) +
                       (i < noted ? "; vek reads them back as they are, other programs do not"
                                  : "; there is no room to note them"),
                   place(sheet, changed[i].row, changed[i].column));
    }
}

void writeLines(const TextFile& lines, Output& out) {
    for (unsigned i = 0; i < lines.size(); ++i) out.line(lines.line(i));
}

}  // namespace

TableLoss tableFileLoss(std::string_view value) {
    bool mayChange =
        !value.empty() && (isAsciiSpace(value.front()) || isAsciiSpace(value.back()) ||
                           value.find('\0') != std::string_view::npos || hasAny(value, "\r\\"));
    if (!mayChange || afterTableFile(value) == value) return TableLoss::none;
    if (trimmed(value) != value) return TableLoss::blanks;
    if (hasAny(value, "\r")) return TableLoss::carriageReturns;
    return hasAny(value, "\\") ? TableLoss::backslash : TableLoss::other;
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
    checkNames(sheet, losses);
    checkParameters(sheet, losses);
    TableToWrite source(sheet);
    RowWriter rows(sheet, source);
    tellChanged(sheet, rows.changed(), noteExactCells(source.table(), rows.changed()), losses);
    TextFile header;
    source.table().save_params(header);
    source.table().save_column_header(header, false);
    writeLines(header, out);
    writeLines(rows.lines(), out);
}

}  // namespace vek
