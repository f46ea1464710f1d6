#include "formats/reading/table_builder.h"

#include <algorithm>
#include <set>

#include <vekdb/formats/timecode.h>
#include <vekdb/host/text_util.h>
#include "formats/log/own_parameters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

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

}  // namespace

std::vector<std::string> asStrings(const std::vector<std::string_view>& texts) {
    return {texts.begin(), texts.end()};
}

std::vector<std::string> extraColumnNames(const std::vector<std::string>& declared,
                                          std::size_t count) {
    constexpr std::string_view start = "Extra ";
    std::set<std::string, std::less<>> taken;
    for (const std::string& name : declared) {
        if (!sameText(name.substr(0, start.size()), start)) continue;
        taken.insert(concat(start, name.substr(start.size())));
    }
    std::vector<std::string> names;
    for (std::size_t n = 1; names.size() < count; ++n) {
        std::string name = concat(start, std::to_string(n));
        if (!taken.contains(name)) names.push_back(std::move(name));
    }
    return names;
}

std::string numberedColumnName(std::size_t at) {
    return "Column " + std::to_string(at + 1);
}

void reportLength(Log& log, std::size_t line, std::size_t found, std::size_t expected) {
    const char* outcome = found < expected ? "the row is kept, the missing cells are empty"
                                           : "the row is kept, values behind the last column "
                                             "are in columns Extra 1, 2, ...";
    log.report([&]() -> Problem {
        return {line, "", counted(found, "value"), std::to_string(expected), outcome};
    });
}

TableBuilder::TableBuilder(Log& log, Quor::Ptr<TextBlock> text) : log_(log) {
    log.table = std::make_unique<vekdb>();
    log.table->set_param_val("VEKDB", "Rev 1");
    rows_.emplace(*log.table, std::move(text));
}

TableBuilder::TableBuilder(Log& log, const std::vector<std::string>& columns)
    : TableBuilder(log, TextBlock::create(0)) {
    setColumns(columns);
}

void TableBuilder::requireColumns(std::size_t count) const {
    if (count <= mostColumns) return;
    throw Failure{unreadable,
                  log_.name,
                  {0, "", std::to_string(count) + " columns, a table holds at most 65535", "", ""}};
}

void TableBuilder::setColumns(std::vector<std::string> columns) {
    requireColumns(columns.size());
    for (const std::string& name : columns) {
        if (name.find('\0') == std::string::npos) continue;
        log_.report([&]() -> Problem {
            return {0, "", "a zero byte in the column name " + inQuotes(name), "text",
                    "the name ends there"};
        });
    }
    columns_ = std::move(columns);
}

std::size_t TableBuilder::columnCount() const {
    return std::max<std::size_t>(columns_.size(), rows_->longest());
}

void TableBuilder::addRow(std::size_t line, const std::vector<std::string_view>& cells,
                          TextRows::Room room, std::size_t leftOut) {
    const std::size_t count = cells.size() - leftOut;
    if (count != columns_.size()) reportLength(log_, line, count, columns_.size());
    addWholeRow(line, cells.data(), count, room);
}

void TableBuilder::addWholeRow(std::size_t line, const std::string_view* cells, std::size_t count,
                               TextRows::Room room) {
    notePlace(room);
    lookForTimecodes(count, [cells](unsigned column) { return cells[column]; });
    if (!rows_->append(room, cells, count)) {
        throw Failure{unreadable, log_.name, {0, "", "more than 65535 columns", "", ""}};
    }
    noteRow(line);
}

void TableBuilder::noteQuotedRow(std::size_t line, std::size_t count, TextRows::Room room) {
    if (count != columns_.size()) reportLength(log_, line, count, columns_.size());
    notePlace(room);
    lookForTimecodes(count, [this](unsigned column) { return rows_->quotedValue(column); });
    noteRow(line);
}

void TableBuilder::noteRow(std::size_t line) {
    // Where nobody said how many there may be, only rows that stand on a text can be many for few
    // bytes of it.
    if (rows_->size() != 0 || log_.opening.limits.cells != 0) {
        requireCells(log_.name, rows_->count(), columnCount(), rows_->size(), log_.opening.limits,
                     *log_.opening.terms);
    }
    log_.lines.push_back(static_cast<std::uint32_t>(line));
}

// Before the cells are moved: they have just been looked at.
template <class CellAt>
void TableBuilder::lookForTimecodes(std::size_t count, CellAt cellAt) {
    for (; seen_ < count; ++seen_) timecodes_.push_back({static_cast<unsigned>(seen_)});
    auto kept = timecodes_.begin();
    auto one = kept;
    for (; one != timecodes_.end() && one->column < count; ++one) {
        const std::string_view cell = cellAt(one->column);
        if (!cell.empty() && !isPunctuatedTimecode(cell)) continue;
        *kept = {one->column, one->isFilled || !cell.empty()};
        ++kept;
    }
    timecodes_.erase(kept, one);
}

void TableBuilder::endHeading(const char* at) {
    if (log_.source) log_.source->places.beginAt(static_cast<std::uint64_t>(at - text()));
}

// The byte behind the text's end, which a row may use as well, is not one of the file.
void TableBuilder::notePlace(TextRows::Room room) {
    if (!log_.source || room.begin == nullptr) return;
    const auto begin = static_cast<std::uint64_t>(room.begin - text());
    const auto end = static_cast<std::uint64_t>(room.end - text());
    log_.source->places.add({begin, std::min<std::uint64_t>(end, textSize())});
}

void TableBuilder::addParameter(std::size_t line, std::string_view name, std::string_view value) {
    if (isTableFilesOwn(name)) {
        return log_.report([&]() -> Problem {
            return {line, "", "entry " + inQuotes(name),
                    "another name: a table file keeps its own "
                    "settings under this one",
                    "the entry is left out"};
        });
    }
    std::string old = log_.parameter(std::string(name).c_str());
    if (!old.empty() && old != value) {
        log_.report([&]() -> Problem {
            return {line, "", inQuotes(name) + " a second time", "once",
                    "the first value, " + inQuotes(old) + ", is replaced"};
        });
    }
    if (log_.setParameter(std::string(name), std::string(value))) return;
    log_.report([&]() -> Problem {
        return {line, "", "entry " + inQuotes(name), "at most 39 named entries",
                "the entry is left out"};
    });
}

void TableBuilder::finish() {
    const std::size_t declared = columns_.size();
    for (std::string& name : extraColumnNames(columns_, columnCount() - declared)) {
        log_.unnamed.insert(name);
        columns_.push_back(std::move(name));
    }
    if (log_.source && textSize() != 0) log_.source->places.endAt(textSize());
    rows_->finish(descriptors(columns_));
    rows_.reset();
    for (const TimecodeColumn& one : timecodes_) {
        if (one.isFilled) log_.table->set_fieldtype(one.column, DBFieldTypes::timecode);
    }
    log_.table->clear_changed();
}

}  // namespace vek::formats
