#include "formats/comparing/timecode_marks.h"

#include "formats/timecode/timecode_form.h"

namespace vek::formats {

namespace {

enum class Form { none, colons, semicolon, digits };

Form formOf(std::string_view cell) {
    if (!parseTimecode(cell)) return Form::none;
    if (hasDropMark(cell)) return Form::semicolon;
    return cell.find_first_not_of("0123456789") == cell.npos ? Form::digits : Form::colons;
}

// The first cell that has a value tells for all.
unsigned firstFilled(const Log& log, unsigned column) {
    unsigned row = 0;
    while (row < log.rowCount() && log.cell(row, column).empty()) ++row;
    return row;
}

}  // namespace

std::optional<Problem> otherTimecodes(const Log& log, unsigned column, const Log& as,
                                      unsigned asColumn) {
    const unsigned row = firstFilled(log, column);
    if (row == log.rowCount() || formOf(log.cell(row, column)) == Form::none) return {};
    const unsigned asRow = firstFilled(as, asColumn);
    if (asRow == as.rowCount()) return {};
    const Form wanted = formOf(as.cell(asRow, asColumn));
    if (wanted == Form::none || wanted == formOf(log.cell(row, column))) return {};
    return Problem{
        log.lineOf(row), log.columnName(column), inQuotes(log.cell(row, column)),
        concat("timecodes as in ", as.name, ", such as ", inQuotes(as.cell(asRow, asColumn))),
        "the two are not taken for one"};
}

}  // namespace vek::formats
