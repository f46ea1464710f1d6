#include "formats/changing/merger.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <vekdb/formats/timecode.h>
#include <vekdb/host/timecode.h>
#include "formats/inform.h"
#include "formats/log/column_names.h"
#include "formats/table_file/exact_cells.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/counting.h"

namespace vek::formats {

namespace {

bool isTimecodeType(DBFieldTypes::eType type) {
    return type == DBFieldTypes::timecode || type == DBFieldTypes::timecode_s;
}

// A value of one timecode form in the form of another column; other values as they are.
std::string inForm(std::string_view value, DBFieldTypes::eType from, DBFieldTypes::eType to) {
    if (from == to || !isTimecodeType(from) || !isTimecodeType(to)) return std::string(value);
    char buffer[time_def::maxForm];
    return std::string(to == DBFieldTypes::timecode ? time_def::punctuatedForm(value, buffer)
                                                    : time_def::databaseForm(value, buffer));
}

// What "FPS" says, where it says a frame rate.
std::optional<FrameRate> rateOf(const Log& log) {
    return parseFrameRate(log.parameter("FPS"));
}

// Timecodes of two rates count differently, and nothing in a joined log tells which is which.
void refuseOtherRate(const Log& into, const Log& from) {
    std::optional<FrameRate> ours = rateOf(into);
    std::optional<FrameRate> theirs = rateOf(from);
    if (!ours || !theirs || ours->isAsFastAs(*theirs)) return;
    throw Failure{found, from.name + ": FPS is " + from.parameter("FPS") + ", expected " +
                             into.parameter("FPS") + " as in " + into.name +
                             "; nothing is written, --yes joins the logs all the same"};
}

std::string counts(const Log& log) {
    const bool drops = LogCounting(log).countingOfAll() == Counting::dropFrame;
    return concat(log.name, drops ? " counts drop-frame" : " counts non-drop");
}

// Nor does anything tell which rows count drop-frame where colons stand before the frames.
void refuseOtherCounting(const Log& into, const Log& from) {
    const Counting ours = LogCounting(into).countingOfAll();
    const Counting theirs = LogCounting(from).countingOfAll();
    if (ours == Counting::unsaid || theirs == Counting::unsaid || ours == theirs) return;
    throw Failure{found, concat(counts(from), " by its FPS or FCM, and ", counts(into),
                                "; nothing is written, --yes joins the logs all the same")};
}

}  // namespace

std::string worded(const MergeConflict& conflict) {
    Problem problem{conflict.line, conflict.column, inQuotes(conflict.value), {}, {}};
    if (conflict.kind == MergeConflict::key) {
        problem.found += " a second time";
        problem.expected = "each key once";
        problem.outcome = "both rows are kept";
    } else {
        problem.expected =
            concat(inQuotes(conflict.kept), ", as row ", std::to_string(conflict.row), " has");
        problem.outcome = "the first is kept";
    }
    return worded(conflict.file, problem);
}

void requireSameCounting(const Log& into, const Log& from) {
    refuseOtherRate(into, from);
    refuseOtherCounting(into, from);
}

Merger::Merger(Log& into, Prefer prefer, Teller tell)
    : into_(into), prefer_(prefer), tell_(std::move(tell)) {}

void Merger::useKey(const std::string& name) {
    key_ = into_.requireColumn(name);
    for (unsigned row = 0; row < into_.rowCount(); ++row) {
        std::string value(into_.cell(row, key_));
        if (value.empty()) continue;
        std::vector<unsigned>& rows = rows_[value];
        if (!rows.empty()) tellRepeated(into_, row, key_, value);
        rows.push_back(row);
    }
}

void Merger::add(const Log& from) {
    addColumns(from);
    addParameters(from);
    if (key_ == noColumn)
        append(from);
    else
        join(from);
}

void Merger::addColumns(const Log& from) {
    columns_ = sameColumns(from, into_);
    for (unsigned i = 0; i < columns_.size(); ++i) {
        // Nothing tells that two columns without a name are one.
        const bool isNew = columns_[i] == noColumn || from.columnName(i).empty();
        if (isNew) columns_[i] = addColumn(from, i);
    }
}

// Two columns of one name would end up in one, and a cell of them be lost.
unsigned Merger::addColumn(const Log& from, unsigned column) {
    const std::string name = from.columnName(column);
    if (const RepeatedName* repeated = repeatedNameOf(from, column)) {
        throw Failure{wrongUsage, from.name + ": column " +
                                      inQuotes(from.columnName(repeated->columns.front())) +
                                      " is there twice, expected names that differ; give one of "
                                      "them another name"};
    }
    const unsigned added =
        into_.table->addField({cellText(name), from.table->get_field_type(column)});
    if (added != noColumn) return added;
    throw Failure{unwritable, from.name + ": no room for column " + inQuotes(name) +
                                  ", a log holds at most 65535"};
}

void Merger::addParameters(const Log& from) {
    for (unsigned i = 0; i < from.table->get_num_params(); ++i) {
        std::string name = from.table->get_param_name(i);
        std::string value = from.table->get_param_text(i);
        bool isOwn = sameText(name, "VEKDB") || sameText(name, "V5_FIELD_MAP") || isExactNote(name);
        if (isOwn || into_.parameter(name.c_str()) == value) continue;
        if (into_.table->get_param_val(name.c_str()) != nullptr) {
            inform(from.name + ": parameter " + inQuotes(name) + " is " + inQuotes(value) + ", " +
                   inQuotes(into_.parameter(name.c_str())) + " in " + into_.name +
                   "; the first is kept");
        } else if (!into_.setParameter(name, value)) {
            inform(from.name + ": parameter " + inQuotes(name) + " has no room, 40 are there");
        }
    }
}

void Merger::append(const Log& from) {
    unsigned first = addRows(from, 0, from.rowCount());
    for (unsigned row = 0; row < from.rowCount(); ++row) fill(from, row, first + row);
}

// Rows for so many of the log's from one on; the first of them.
unsigned Merger::addRows(const Log& from, unsigned row, unsigned count) {
    unsigned first = into_.rowCount();
    into_.table->add_records(static_cast<int>(count));
    for (unsigned i = 0; i < count; ++i) {
        into_.lines.push_back(static_cast<std::uint32_t>(from.lineOf(row + i)));
    }
    return first;
}

// Puts what a row has into the empty cells of ours.
void Merger::fill(const Log& from, unsigned row, unsigned target) {
    for (unsigned i = 0; i < columns_.size(); ++i) {
        if (from.cell(row, i).empty() || !into_.cell(target, columns_[i]).empty()) continue;
        store(target, columns_[i], inOurForm(from, row, i));
    }
}

void Merger::join(const Log& from) {
    unsigned key = from.requireColumn(into_.columnName(key_));
    std::unordered_map<std::string, Turns, Quor::KeyedHash> turns;
    for (unsigned row = 0; row < from.rowCount(); ++row) {
        std::string value = inOurForm(from, row, key);
        bool isRepeated = turns[value].count++ > 0 && !value.empty();
        if (isRepeated) tellRepeated(from, row, key, value);
    }
    taken_.clear();
    for (unsigned row = 0; row < from.rowCount(); ++row) {
        std::string value = inOurForm(from, row, key);
        joinRow(from, row, value, turns[value]);
    }
}

void Merger::joinRow(const Log& from, unsigned row, const std::string& key, Turns& turns) {
    auto known = key.empty() ? rows_.end() : rows_.find(key);
    if (known == rows_.end()) return addRow(from, row, key);
    if (turns.count == 1 && known->second.size() == 1) {
        return settleRow(from, row, known->second.front());
    }
    // A key that one of the logs has twice names no single row, so nothing is replaced.
    unsigned target = agreeingRow(from, row, known->second, turns.done++);
    if (target == noRow) return addRow(from, row, key);
    taken_.insert(target);
    fill(from, row, target);
}

void Merger::addRow(const Log& from, unsigned row, const std::string& key) {
    unsigned target = addRows(from, row, 1);
    fill(from, row, target);
    if (key.empty()) return;
    rows_[key].push_back(target);
    taken_.insert(target);
}

// Of some rows one that no other row of this log went to and no cell speaks against. The one
// whose turn it is comes first; that there is an end to the looking keeps the time in
// proportion to the logs.
unsigned Merger::agreeingRow(const Log& from, unsigned row, const std::vector<unsigned>& targets,
                             std::size_t turn) const {
    constexpr std::size_t mostLooks = 100;
    for (std::size_t i = 0; i < std::min(targets.size(), mostLooks); ++i) {
        unsigned target = targets[(turn + i) % targets.size()];
        if (!taken_.contains(target) && agrees(from, row, target)) return target;
    }
    return noRow;
}

bool Merger::agrees(const Log& from, unsigned row, unsigned target) const {
    for (unsigned i = 0; i < columns_.size(); ++i) {
        std::string_view old = into_.cell(target, columns_[i]);
        if (old.empty() || from.cell(row, i).empty()) continue;
        if (old != inOurForm(from, row, i)) return false;
    }
    return true;
}

std::string Merger::inOurForm(const Log& from, unsigned row, unsigned column) const {
    return inForm(from.cell(row, column), from.table->get_field_type(column),
                  into_.table->get_field_type(columns_[column]));
}

void Merger::settleRow(const Log& from, unsigned row, unsigned target) {
    for (unsigned i = 0; i < columns_.size(); ++i) {
        unsigned column = columns_[i];
        std::string value = inOurForm(from, row, i);
        std::string_view old = into_.cell(target, column);
        if (value == old) continue;
        if (old.empty())
            store(target, column, value);
        else if (!value.empty())
            settle(from, row, target, column, value);
        else if (prefer_ == Prefer::last)
            store(target, column, value);
    }
}

// Two values for one cell: the choice is told unless the person made it.
void Merger::settle(const Log& from, unsigned row, unsigned target, unsigned column,
                    const std::string& value) {
    bool takesLast = prefer_ == Prefer::last || prefer_ == Prefer::filled;
    if (takesLast) return store(target, column, value);
    if (prefer_ == Prefer::first) return;
    ++conflicts_;
    tell_({MergeConflict::cell, from.name, from.lineOf(row), into_.columnName(column), value,
           std::string(into_.cell(target, column)), target + std::size_t{1}});
}

void Merger::tellRepeated(const Log& log, unsigned row, unsigned column, const std::string& value) {
    ++repeatedKeys_;
    tell_({MergeConflict::key, log.name, log.lineOf(row), log.columnName(column), value, {}, 0});
}

void Merger::store(unsigned row, unsigned column, std::string_view value) {
    into_.table->get_record(row)->setField(static_cast<unsigned short>(column), cellText(value));
}

}  // namespace vek::formats
