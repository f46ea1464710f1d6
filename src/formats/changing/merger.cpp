#include "formats/changing/merger.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <vekdb/formats/timecode.h>
#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/text_util.h>
#include <vekdb/host/timecode.h>
#include "formats/choosing/select.h"
#include "formats/input/limits.h"
#include "formats/log/column_edits.h"
#include "formats/log/column_names.h"
#include "formats/log/own_parameters.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"

namespace vek::formats {

namespace {

using Quor::keyedHash;

constexpr unsigned noRow = 0xFFFFFFFF;

bool isTimecodeType(DBFieldTypes::eType type) {
    return type == DBFieldTypes::timecode || type == DBFieldTypes::timecode_s;
}

bool differInForm(DBFieldTypes::eType from, DBFieldTypes::eType to) {
    return from != to && isTimecodeType(from) && isTimecodeType(to);
}

// Who asks for one of two new columns would not know which one is meant. Those without a name had
// none to go by.
void refuseRepeated(const Log& from, unsigned column) {
    const RepeatedName* repeated = repeatedNameOf(from, column);
    if (repeated == nullptr || from.columnName(column).empty()) return;
    throw Failure{wrongUsage, from.name + ": column " +
                                  inQuotes(from.columnName(repeated->columns.front())) +
                                  " is there twice, expected names that differ; give one of "
                                  "them another name"};
}

// What "FPS" says, where it says a frame rate.
std::optional<FrameRate> rateOf(const Log& log) {
    return parseFrameRate(log.parameter("FPS"));
}

std::string joinedAllTheSame(const Log& into) {
    return concat("; nothing is written, ", into.opening.terms->joining,
                  " joins the logs all the same");
}

// Timecodes of two rates count differently, and nothing in a joined log tells which is which.
void refuseOtherRate(const Log& into, const Log& from) {
    std::optional<FrameRate> ours = rateOf(into);
    std::optional<FrameRate> theirs = rateOf(from);
    if (!ours || !theirs || ours->isAsFastAs(*theirs)) return;
    throw Failure{contradiction, from.name + ": FPS is " + from.parameter("FPS") + ", expected " +
                                     into.parameter("FPS") + " as in " + into.name +
                                     joinedAllTheSame(into)};
}

std::string counts(const Log& log) {
    const bool drops = LogCounting(log).countingOfAll() == Counting::dropFrame;
    return concat(log.name, drops ? " counts drop-frame" : " counts non-drop");
}

// A rate without a word on it counts every frame.
Counting saidCounting(const Log& log) {
    const Counting said = LogCounting(log).countingOfAll();
    return said == Counting::unsaid && rateOf(log) ? Counting::nonDrop : said;
}

// Nor does anything tell which rows count drop-frame where colons stand before the frames.
void refuseOtherCounting(const Log& into, const Log& from) {
    const Counting ours = saidCounting(into);
    const Counting theirs = saidCounting(from);
    if (ours == Counting::unsaid || theirs == Counting::unsaid || ours == theirs) return;
    throw Failure{contradiction, concat(counts(from), " by its FPS or FCM, and ", counts(into),
                                        joinedAllTheSame(into))};
}

bool areEventsOfLists(const Log& into, const Log& from) {
    return into.format == Format::edl && from.format == Format::edl && into.rowCount() > 0 &&
           from.rowCount() > 0;
}

bool saysInRows(const Log& log) {
    const unsigned column = log.findColumn("FCM");
    for (unsigned row = 0; column != noColumn && row < log.rowCount(); ++row) {
        if (!log.cell(row, column).empty()) return true;
    }
    return false;
}

// How an edit list counts that does not say so: as its first times are written.
const char* usualCounting(const Log& list) {
    const unsigned column = recordColumns(list).start;
    const std::optional<Timecode> code =
        column == noColumn ? std::nullopt : parseTimecode(trimmed(list.cell(0, column)));
    return code && code->dropFrame ? "DROP FRAME" : "NON-DROP FRAME";
}

}  // namespace

std::string worded(const Merger::Conflict& conflict) {
    Problem problem{conflict.line, conflict.column, inQuotes(conflict.value), {}, {}};
    if (conflict.kind == Merger::Conflict::key) {
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

Merger::Merger(Log& into, Prefer prefer, Teller tell, NoteTaker note)
    : into_(into),
      prefer_(prefer),
      tell_(std::move(tell)),
      note_(std::move(note)),
      copies_(*into.table),
      speeds_(into) {
    tellOddRate(into_);
}

void Merger::useKey(const std::string& name, const std::vector<unsigned>* rows) {
    std::vector<char> isMeant(into_.rowCount(), rows == nullptr);
    for (std::size_t i = 0; rows != nullptr && i < rows->size(); ++i) isMeant[(*rows)[i]] = 1;
    key_ = RowKey(columnList(into_, name));
    keyName_ = name;
    rows_ = RowGroups(into_.rowCount());
    const auto hashOf = [&](unsigned row) { return keyedHash(key_.of(into_, row, wanted_)); };
    forEachHashed(rows_, into_.rowCount(), hashOf, [&](unsigned row, std::uint64_t hash) {
        const std::string_view key = key_.of(into_, row, wanted_);
        if (key.empty() || isMeant[row] == 0) return;
        const bool isRepeated =
            rows_.add(hash, row, [&](unsigned other) { return hasKey(other, key); }) > 1;
        if (isRepeated) tellRepeated(into_, row, key_);
    });
}

void Merger::add(const Log& from) {
    tellOddRate(from);
    otherCounting_ = countingOfEvents(from);
    doRowsCount_ = doRowsCount_ || !otherCounting_.empty();
    addColumns(from);
    addParameters(from);
    into_.lines.resize(into_.rowCount());  // rows that were added have none
    if (key_.isThere())
        join(from);
    else
        append(from);
}

// What is to be said of events that come behind others, as an edit list says it in front of any: an
// event counts as the line says that stands in front of it, however far. "" where nothing is.
std::string Merger::countingOfEvents(const Log& from) {
    if (!areEventsOfLists(into_, from)) return {};
    const std::string ours = into_.parameter("FCM");
    const std::string said = from.parameter("FCM");
    const std::string theirs = said.empty() ? usualCounting(from) : said;
    const bool areAlike =
        countingOfFcm(ours) != Counting::unsaid && countingOfFcm(ours) == countingOfFcm(theirs);
    if (areAlike || theirs == ours) return {};
    const bool mayStayUnsaid = said.empty() && ours.empty();
    if (mayStayUnsaid && !doRowsCount_ && !(doRowsCount_ = saysInRows(into_))) return {};
    if (said.empty()) {
        note_(concat(from.name, ": does not say how its events count (FCM), and events of ",
                     into_.name, " do; they are said to count ", theirs));
    }
    return theirs;
}

// Nothing tells whether its timecodes count as those of the other logs.
void Merger::tellOddRate(const Log& log) const {
    const std::string odd = LogCounting(log).oddRate();
    if (odd.empty()) return;
    note_(concat(log.name, ": FPS ", inQuotes(odd),
                 " is no frame rate, expected one such as 24 or 29.97df; it is compared with no "
                 "other one"));
}

void Merger::addColumns(const Log& from) {
    const std::vector<unsigned> places = placesOf(from);
    if (!otherCounting_.empty()) countingColumn_ = countingColumn(from);
    into_.bytesRead += from.bytesRead;
    requireCells(into_.name + " and " + from.name, std::size_t{into_.rowCount()} + from.rowCount(),
                 into_.columnCount(), into_.bytesRead, into_.opening.limits, *into_.opening.terms);
    columns_.clear();
    standTogether_ = otherCounting_.empty();
    for (unsigned i = 0; i < places.size(); ++i) {
        const auto type = into_.table->get_field_type(places[i]);
        const bool isConverted = differInForm(from.table->get_field_type(i), type);
        columns_.push_back({places[i], type, isConverted, {}});
        standTogether_ = standTogether_ && places[i] == i && !isConverted;
        if (!isConverted) tellOtherForms(from, i, places[i]);
    }
    theirs_.assign(columns_.size(), {});
    ours_.assign(into_.columnCount(), {});
    values_.assign(into_.columnCount(), {});
}

// Ours are looked at once, whatever comes behind them.
void Merger::tellOtherForms(const Log& from, unsigned column, unsigned to) {
    for (auto i = static_cast<unsigned>(forms_.size()); i < into_.columnCount(); ++i) {
        forms_.emplace_back(into_, i);
    }
    if (!forms_[to].isKnown()) {
        forms_[to] = TimecodeForms(from, column);
        return;
    }
    if (const auto other = forms_[to].others(from, column, into_.name)) {
        note_(worded(from.name, *other));
    }
}

// Columns that are new to us come at once.
std::vector<unsigned> Merger::placesOf(const Log& from) {
    for (const Problem& alike : namesAlmostAs(from, into_)) note_(worded(from.name, alike));
    std::vector<unsigned> places = sameColumns(from, into_);
    std::vector<unsigned> added;
    std::vector<DBFieldDesc> fields;
    for (unsigned i = 0; i < places.size(); ++i) {
        if (places[i] != noColumn) continue;
        refuseRepeated(from, i);
        added.push_back(i);
        fields.push_back({cellText(from.columnName(i)), from.table->get_field_type(i)});
    }
    const std::vector<unsigned> theirs = formats::addColumns(into_, fields);
    for (std::size_t i = 0; i < added.size(); ++i) {
        places[added[i]] = theirs[i];
        if (theirs[i] == noColumn) refuseFurtherColumn(from.name, from.columnName(added[i]));
    }
    if (!added.empty()) keepRepeatedNames(into_);
    return places;
}

unsigned Merger::countingColumn(const Log& from) {
    const unsigned known = into_.findColumn("FCM");
    if (known != noColumn) return known;
    const unsigned added = formats::addColumns(into_, {{"FCM", DBFieldTypes::text}}).front();
    if (added == noColumn) refuseFurtherColumn(from.name, "FCM");
    return added;
}

void Merger::addParameters(const Log& from) {
    for (unsigned i = 0; i < from.table->get_num_params(); ++i) {
        std::string name = from.table->get_param_name(i);
        std::string value = from.table->get_param_text(i);
        if (isSaidByRows(name) || isTableFilesOwn(name) || into_.parameter(name.c_str()) == value)
            continue;
        if (into_.table->get_param_val(name.c_str()) != nullptr) {
            note_(from.name + ": parameter " + inQuotes(name) + " is " + inQuotes(value) + ", " +
                  inQuotes(into_.parameter(name.c_str())) + " in " + into_.name +
                  "; the first is kept");
        } else if (!into_.setParameter(name, value)) {
            note_(from.name + ": parameter " + inQuotes(name) + " has no room, 40 are there");
        }
    }
}

// Rows that are joined to one of ours count as that one does.
bool Merger::isSaidByRows(const std::string& parameter) const {
    if (otherCounting_.empty() || !sameText(parameter, "FCM")) return false;
    return !key_.isThere() || into_.parameter("FCM").empty();
}

void Merger::append(const Log& from) {
    const unsigned count = from.rowCount();
    for (unsigned row = 0; row < count; ++row) appendRow(from, row);
}

void Merger::appendRow(const Log& from, unsigned row) {
    into_.lines.push_back(static_cast<std::uint32_t>(from.lineOf(row)));
    if (from.bare.areAny()) noteBare(from, row);
    const dbrecord& record = recordOf(from, row);
    if (standTogether_) {
        copies_.append(record);
        return;
    }
    std::fill(values_.begin(), values_.end(), std::string_view());
    fetch(record);
    for (unsigned i = 0; i < columns_.size(); ++i) {
        std::string_view& value = values_[columns_[i].to];
        if (value.empty()) value = inOurForm(theirs_[i], i, columns_[i].form);
    }
    if (!otherCounting_.empty() && values_[countingColumn_].empty())
        values_[countingColumn_] = otherCounting_;
    copies_.append(values_.data(), values_.size());
}

void Merger::noteBare(const Log& from, unsigned row) {
    const unsigned target = into_.rowCount();
    for (unsigned i = 0; i < columns_.size(); ++i) {
        into_.bare.note(target, columns_[i].to, from.bare.of(row, i));
    }
}

// A value of JSON is as it was there. What comes from another format leaves ours as it was: a
// number stays one where the new value is one, too.
void Merger::takeBare(const Log& from, unsigned row, unsigned column, unsigned target) {
    const Bare bare = from.bare.of(row, column);
    const bool isOfJson = from.format == Format::json || from.format == Format::jsonl;
    if (isOfJson) into_.bare.replace(target, columns_[column].to, bare);
}

void Merger::join(const Log& from) {
    const RowKey key(columnList(from, keyName_));
    noteTurns(from, key);
    taken_.assign(into_.rowCount(), false);
    const auto hashOf = [&](unsigned row) {
        return keyedHash(keyOf(recordOf(from, row), key, wanted_));
    };
    forEachHashed(rows_, from.rowCount(), hashOf,
                  [&](unsigned row, std::uint64_t hash) { joinRow(from, row, key, hash); });
}

// Which rows of the log that is being added have one key. The form of a timecode is made in one
// place, so that of two keys one is copied.
void Merger::noteTurns(const Log& from, const RowKey& key) {
    RowGroups groups(from.rowCount());
    std::string value;
    const auto hashOf = [&](unsigned row) {
        return keyedHash(keyOf(recordOf(from, row), key, wanted_));
    };
    forEachHashed(groups, from.rowCount(), hashOf, [&](unsigned row, std::uint64_t hash) {
        value = keyOf(recordOf(from, row), key, wanted_);
        if (value.empty()) return;
        const bool isRepeated = groups.add(hash, row, [&](unsigned other) {
            return keyOf(recordOf(from, other), key, other_) == value;
        }) > 1;
        if (isRepeated) tellRepeated(from, row, key);
    });
    turns_.assign(groups.repeated().size(), 0);
    turnOf_.assign(turns_.empty() ? 0 : from.rowCount(), noRow);
    for (std::size_t i = 0; i < turns_.size(); ++i) {
        for (unsigned row : groups.repeated()[i]) turnOf_[row] = static_cast<std::uint32_t>(i);
    }
}

void Merger::joinRow(const Log& from, unsigned row, const RowKey& key, std::uint64_t hash) {
    const dbrecord& record = recordOf(from, row);
    const std::string_view value = keyOf(record, key, wanted_);
    if (value.empty()) return appendRow(from, row);
    const auto known = rows_.find(hash, [&](unsigned other) { return hasKey(other, value); });
    if (known.empty()) return addKeyed(from, row, value, hash);
    const bool isRepeated = !turns_.empty() && turnOf_[row] != noRow;
    if (!isRepeated && known.size() == 1) return settle(from, row, known.front());
    // A key that one of the logs has twice names no single row, so nothing is replaced.
    const unsigned target =
        agreeingRow(record, known, isRepeated ? turns_[turnOf_[row]]++ : std::size_t{0});
    if (target == noRow) return addKeyed(from, row, value, hash);
    taken_[target] = true;
    fill(from, row, target);
}

void Merger::addKeyed(const Log& from, unsigned row, std::string_view key, std::uint64_t hash) {
    const unsigned target = into_.rowCount();
    appendRow(from, row);
    rows_.add(hash, target, [&](unsigned other) { return hasKey(other, key); });
    taken_.resize(target + 1, false);
    taken_[target] = true;
}

// Of some rows one that no other row of this log went to and no cell speaks against. The one
// whose turn it is comes first; that there is an end to the looking keeps the time in proportion
// to the logs.
unsigned Merger::agreeingRow(const dbrecord& row, std::span<const unsigned> targets,
                             std::size_t turn) {
    constexpr std::size_t mostLooks = 100;
    for (std::size_t i = 0; i < std::min(targets.size(), mostLooks); ++i) {
        const unsigned target = targets[(turn + i) % targets.size()];
        if (!taken_[target] && agrees(row, target)) return target;
    }
    return noRow;
}

bool Merger::agrees(const dbrecord& row, unsigned target) {
    const dbrecord& ours = recordOf(into_, target);
    for (unsigned i = 0; i < columns_.size(); ++i) {
        const std::string_view old = ours.fieldView(columns_[i].to);
        if (old.empty() || row.fieldView(i).empty()) continue;
        if (old != inOurForm(row, i)) return false;
    }
    return true;
}

// Puts what a row has into the empty cells of ours.
void Merger::fill(const Log& from, unsigned row, unsigned target) {
    const dbrecord& ours = recordOf(into_, target);
    const dbrecord& theirs = recordOf(from, row);
    for (unsigned i = 0; i < columns_.size(); ++i) {
        const unsigned column = columns_[i].to;
        if (!ours.fieldView(column).empty() || theirs.fieldView(i).empty()) continue;
        change(target, column, inOurForm(theirs, i));
        takeBare(from, row, i, target);
    }
    storeChanges(target);
}

void Merger::settle(const Log& from, unsigned row, unsigned target) {
    fetch(recordOf(from, row));
    into_.cells(target, ours_);
    for (unsigned i = 0; i < columns_.size(); ++i) {
        const unsigned column = columns_[i].to;
        const std::string_view value = inOurForm(theirs_[i], i, columns_[i].form);
        const std::string_view old = ours_[column];
        if (value == old) continue;
        if (takes(value, old)) {
            change(target, column, value);
            takeBare(from, row, i, target);
        } else if (!value.empty() && prefer_ == Prefer::report) {
            tellConflict(from, row, target, column, value);
        }
    }
    storeChanges(target);
}

// Whether a value takes the place of another one.
bool Merger::takes(std::string_view value, std::string_view old) const {
    if (old.empty() || prefer_ == Prefer::last) return true;
    return !value.empty() && prefer_ == Prefer::filled;
}

// The choice between two values for one cell.
void Merger::tellConflict(const Log& from, unsigned row, unsigned target, unsigned column,
                          std::string_view value) {
    ++conflicts_;
    tell_({Merger::Conflict::cell, from.name, from.lineOf(row), into_.columnName(column),
           std::string(value), std::string(into_.cell(target, column)), target + std::size_t{1}});
}

void Merger::tellRepeated(const Log& log, unsigned row, const RowKey& key) {
    ++repeatedKeys_;
    std::string text = &log == &into_ ? key.text(log, row) : key.text([&](unsigned column) {
        return inOurForm(recordOf(log, row), column);
    });
    tell_(
        {Merger::Conflict::key, log.name, log.lineOf(row), key.name(log), std::move(text), {}, 0});
}

std::string_view Merger::converted(std::string_view value, unsigned column, Form& form) const {
    const bool isPunctuated = columns_[column].toType == DBFieldTypes::timecode;
    return isPunctuated ? time_def::punctuatedForm(value, form)
                        : time_def::databaseForm(value, form);
}

void Merger::fetch(const dbrecord& row) {
    row.fieldViews(theirs_.data(), static_cast<unsigned>(theirs_.size()));
}

// Notes a value for a row of ours, whose others are there until the changes are stored.
void Merger::change(unsigned target, unsigned column, std::string_view value) {
    if (!hasChanges_) {
        const dbrecord& ours = recordOf(into_, target);
        ours.fieldViews(values_.data(), static_cast<unsigned>(values_.size()));
    }
    hasChanges_ = true;
    values_[column] = value;
}

void Merger::storeChanges(unsigned target) {
    if (!std::exchange(hasChanges_, false)) return;
    moveSpeeds(target);
    copies_.replace(target, values_.data(), values_.size());
}

void Merger::moveSpeeds(unsigned target) {
    const dbrecord& ours = recordOf(into_, target);
    notes_ = speeds_.moved([&](unsigned column) { return ours.fieldView(column); },
                           [&](unsigned column) { return values_[column]; });
    for (const EventSpeeds::Note& note : notes_) values_[note.column] = note.text;
}

}  // namespace vek::formats
