#include "formats/comparing/timecode_forms.h"

#include <algorithm>
#include <bit>

#include <vekdb/formats/timecode.h>

namespace vek::formats {

namespace {

// Bits, as a column may have several, and 10:00:00:00 is written as both 01 and 1 would be.
enum Form : unsigned {
    longColons = 1,
    shortColons = 2,
    longSemicolon = 4,
    shortSemicolon = 8,
    longPoints = 16,
    shortPoints = 32,
    digits = 64,
    digitsAndSemicolon = 128,
    frames = 256,
};

// How a column is written shows in its first rows. Looking at all of a large log takes as long as
// joining it does.
constexpr unsigned mostLookedAt = 10000;

constexpr unsigned withMarks[] = {longColons | shortColons, longSemicolon | shortSemicolon,
                                  longPoints | shortPoints};

unsigned markedForm(std::string_view cell) {
    const char beforeFrames = cell[cell.size() - 3];
    const bool hasColons = cell[cell.size() - 6] == ':' && cell[cell.size() - 9] == ':';
    const unsigned both = beforeFrames == ';'                ? withMarks[1]
                          : hasColons && beforeFrames == ':' ? withMarks[0]
                                                             : withMarks[2];
    if (cell.size() == 10) return both & (shortColons | shortSemicolon | shortPoints);
    return cell[0] != '0' ? both : both & (longColons | longSemicolon | longPoints);
}

unsigned formOf(std::string_view cell) {
    const bool isNumber = cell.find_first_not_of("0123456789") == cell.npos;
    if (!parseTimecode(cell)) return isNumber && !cell.empty() ? unsigned{frames} : 0;
    if (isNumber) return digits;
    return cell.size() == 9 ? digitsAndSemicolon : markedForm(cell);
}

bool hasMarks(unsigned forms) {
    return (forms & (withMarks[0] | withMarks[1] | withMarks[2])) != 0;
}

// Numbers are frames only where they stand for timecodes that nobody takes for a number.
bool areOfOneKind(unsigned a, unsigned b) {
    if (a == 0 || b == 0) return false;
    const bool mayBeNumbers = !hasMarks(a) && !hasMarks(b);
    return !(mayBeNumbers && ((a | b) & frames) != 0);
}

unsigned firstFilled(const Log& log, unsigned column) {
    unsigned row = 0;
    while (row < log.rowCount() && log.cell(row, column).empty()) ++row;
    return row;
}

unsigned lastLookedAt(const Log& log, unsigned first) {
    return std::min(log.rowCount(), first + mostLookedAt);
}

// Of both forms that two digits may be, the one that others of the column say.
unsigned settled(unsigned certain, unsigned all) {
    for (const unsigned both : withMarks) {
        if ((certain & both) != 0) all &= ~both | certain;
    }
    return all;
}

}  // namespace

TimecodeForms::TimecodeForms(const Log& log, unsigned column) {
    unsigned row = firstFilled(log, column);
    if (row == log.rowCount()) return;
    first_ = log.cell(row, column);
    if (formOf(first_) == 0) return;
    unsigned certain = 0;
    for (const unsigned end = lastLookedAt(log, row); row < end; ++row) {
        const unsigned form = formOf(log.cell(row, column));
        forms_ |= form;
        if (std::has_single_bit(form)) certain |= form;
    }
    forms_ = settled(certain, forms_);
}

std::optional<Problem> TimecodeForms::others(const Log& log, unsigned column,
                                             const std::string& as) const {
    unsigned row = forms_ == 0 ? log.rowCount() : firstFilled(log, column);
    if (row == log.rowCount() || !areOfOneKind(forms_, formOf(log.cell(row, column)))) return {};
    unsigned first = row;
    std::size_t count = 0;
    const unsigned end = lastLookedAt(log, row);
    for (; row < end; ++row) {
        const unsigned form = formOf(log.cell(row, column));
        if (!areOfOneKind(forms_, form) || (form & forms_) != 0) continue;
        if (count++ == 0) first = row;
    }
    if (count == 0) return {};
    const std::string where =
        end == log.rowCount() ? ""
                              : concat(" among the ", std::to_string(mostLookedAt), " looked at");
    const char* const what = (forms_ & ~unsigned{frames}) == 0 ? "frames" : "timecodes";
    return Problem{
        log.lineOf(first), log.columnName(column), inQuotes(log.cell(first, column)),
        concat(what, " as in ", as, ", such as ", inQuotes(first_)),
        concat("the two are not taken for one",
               count == 1 ? "" : concat("; ", std::to_string(count - 1), " more like it", where))};
}

}  // namespace vek::formats
