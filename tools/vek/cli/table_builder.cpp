#include <algorithm>

#include <vekdb/host/text_util.h>
#include "tools/vek/cli/readers.h"
#include "tools/vek/cli/timecode.h"

namespace vek {

namespace {

constexpr std::size_t mostColumns = 65535;

std::vector<DBFieldDesc> descriptors(const std::vector<std::string>& names) {
    std::vector<DBFieldDesc> out;
    out.reserve(names.size());
    for (const std::string& name : names) out.push_back({cellText(name), DBFieldTypes::text});
    return out;
}

bool isPunctuatedTimecode(std::string_view text) {
    return text.size() == 11 && parseTimecode(text).has_value();
}

// Whether there are timecodes in a column, and nothing else.
bool holdsTimecodes(const Log& log, unsigned column) {
    bool any = false;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        std::string_view cell = log.cell(row, column);
        if (cell.empty()) continue;
        if (!isPunctuatedTimecode(cell)) return false;
        any = true;
    }
    return any;
}

}  // namespace

bool LineWalk::next(std::string_view& line) {
    if (rest_.empty()) return false;
    std::size_t end = std::min(rest_.find('\n'), rest_.size());
    line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
        sawCr_ = true;
    }
    ++number_;
    return true;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isAsciiSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isAsciiSpace(text.back())) text.remove_suffix(1);
    return text;
}

bool sameText(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return asciiLower(x) == asciiLower(y); });
}

void addExtraColumn(Log& log, std::size_t declared) {
    std::string name;
    for (std::size_t n = log.columnCount() - declared + 1; name.empty(); ++n) {
        name = "Extra " + std::to_string(n);
        if (log.findColumn(name) != noColumn) name.clear();
    }
    if (log.table->addField({cellText(name), DBFieldTypes::text}) == noColumn) {
        throw Failure{unreadable, log.name + ": more than 65535 columns"};
    }
}

void reportLength(Log& log, std::size_t line, std::size_t found, std::size_t expected) {
    log.problems.push_back({line, "", counted(found, "value"), std::to_string(expected),
                            found < expected ? "the row is kept, the missing cells are empty"
                                             : "the row is kept, values behind the last column "
                                               "are in columns Extra 1, 2, ..."});
}

TableBuilder::TableBuilder(Log& log, const std::vector<std::string>& columns)
    : log_(log), declared_(columns.size()) {
    if (columns.size() > mostColumns) {
        throw Failure{unreadable, log.name + ": " + std::to_string(columns.size()) +
                                      " columns, a table holds at most 65535"};
    }
    log.table = std::make_unique<vekdb>(descriptors(columns));
    log.table->set_param_val("VEKDB", "Rev 1");
}

void TableBuilder::addRow(std::size_t line, const std::vector<std::string_view>& cells) {
    if (cells.size() != declared_) reportLength(log_, line, cells.size(), declared_);
    addRowCells(cells);
    log_.lines.push_back(static_cast<std::uint32_t>(line));
}

void TableBuilder::addRowCells(const std::vector<std::string_view>& cells) {
    unsigned row = log_.table->add_records(1);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (cells[i].empty()) continue;
        while (i >= log_.columnCount()) addExtraColumn(log_, declared_);
        dbrecord* record = log_.table->get_record(row);
        record->setField(static_cast<unsigned short>(i), cellText(cells[i]));
    }
}

void TableBuilder::addParameter(std::size_t line, std::string_view name, std::string_view value) {
    std::string old = log_.parameter(std::string(name).c_str());
    if (!old.empty() && old != value) {
        log_.problems.push_back({line, "", inQuotes(name) + " a second time", "once",
                                 "the first value, " + inQuotes(old) + ", is replaced"});
    }
    if (log_.setParameter(std::string(name), std::string(value))) return;
    log_.problems.push_back(
        {line, "", "entry " + inQuotes(name), "at most 39 named entries", "the entry is left out"});
}

void TableBuilder::finish() {
    for (unsigned column = 0; column < log_.columnCount(); ++column) {
        if (holdsTimecodes(log_, column)) {
            log_.table->set_fieldtype(column, DBFieldTypes::timecode);
        }
    }
    log_.table->clear_changed();
}

}  // namespace vek
