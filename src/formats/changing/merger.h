#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/host/timecode.h>
#include <vekdb/row_copies.h>
#include "formats/comparing/row_groups.h"
#include "formats/comparing/row_key.h"
#include "formats/comparing/timecode_forms.h"
#include "formats/event_speeds.h"
#include "formats/log/log.h"

namespace vek::formats {

/// Joins further logs to a first one, which must outlive it. Cells are not copied where rows can
/// share their text.
class Merger {
public:
    /// Two values for one cell, or a key that one log has twice.
    struct Conflict {
        enum Kind { cell, key };
        Kind kind = cell;
        std::string file;  ///< and line, of the value not taken or of the key's further row
        std::size_t line = 0;
        std::string column;
        std::string value;
        std::string kept;     ///< the other value, for a cell
        std::size_t row = 0;  ///< where that one is in the joined log, from 1 on
    };
    /// Which of two values a cell gets.
    enum class Prefer { report, first, last, filled };
    using Teller = std::function<void(const Conflict&)>;
    using NoteTaker = std::function<void(const std::string&)>;

    /// Conflicts go to `tell`, and to `note` what of a log has no place.
    Merger(Log& into, Prefer prefer, Teller tell, NoteTaker note);

    /// From now on rows go together that have the same value here, where one of the two logs has
    /// it once. Of the first log some rows may be meant alone; none for all.
    void useKey(const std::string& name, const std::vector<unsigned>* rows = nullptr);
    /// Columns that have one name go by their turn: the second to the second.
    void add(const Log& from);

    std::size_t conflicts() const { return conflicts_; }
    std::size_t repeatedKeys() const { return repeatedKeys_; }

private:
    using Form = char[time_def::maxForm];

    // A column of the log that is being added, and the place in ours.
    struct Column {
        unsigned to = 0;
        DBFieldTypes::eType toType = DBFieldTypes::text;
        bool isConverted = false;  // timecodes are in the other form
        Form form = {};            // a timecode as ours are written
    };

    void tellOddRate(const Log& log) const;
    void addColumns(const Log& from);
    void tellOtherForms(const Log& from, unsigned column, unsigned to);
    std::vector<unsigned> placesOf(const Log& from);
    unsigned countingColumn(const Log& from);
    void addParameters(const Log& from);
    bool isSaidByRows(const std::string& parameter) const;
    std::string countingOfEvents(const Log& from);
    void append(const Log& from);
    void appendRow(const Log& from, unsigned row);
    void noteBare(const Log& from, unsigned row);
    void takeBare(const Log& from, unsigned row, unsigned column, unsigned target);
    void join(const Log& from);
    void noteTurns(const Log& from, const RowKey& key);
    void joinRow(const Log& from, unsigned row, const RowKey& key, std::uint64_t hash);
    void addKeyed(const Log& from, unsigned row, std::string_view key, std::uint64_t hash);
    unsigned agreeingRow(const dbrecord& row, std::span<const unsigned> targets, std::size_t turn);
    bool agrees(const dbrecord& row, unsigned target);
    void fill(const Log& from, unsigned row, unsigned target);
    void settle(const Log& from, unsigned row, unsigned target);
    bool takes(std::string_view value, std::string_view old) const;
    void tellConflict(const Log& from, unsigned row, unsigned target, unsigned column,
                      std::string_view value);
    void tellRepeated(const Log& log, unsigned row, const RowKey& key);
    std::string_view converted(std::string_view value, unsigned column, Form& form) const;
    // A value of one timecode form in the form of our column; other values as they are. Ends with
    // the next value that is written to the form.
    std::string_view inOurForm(std::string_view value, unsigned column, Form& form) const {
        return columns_[column].isConverted ? converted(value, column, form) : value;
    }
    std::string_view inOurForm(const dbrecord& row, unsigned column) {
        return inOurForm(row.fieldView(column), column, columns_[column].form);
    }
    // A key of the log that is being added, as ours are written.
    std::string_view keyOf(const dbrecord& row, const RowKey& key, std::string& room) {
        return key.of([&](unsigned column) { return inOurForm(row, column); }, room);
    }
    void fetch(const dbrecord& row);
    bool hasKey(unsigned row, std::string_view key) { return key_.of(into_, row, other_) == key; }
    void change(unsigned target, unsigned column, std::string_view value);
    void storeChanges(unsigned target);
    void moveSpeeds(unsigned target);

    Log& into_;
    Prefer prefer_;
    Teller tell_;
    NoteTaker note_;
    RowCopies copies_;
    RowKey key_;
    std::string keyName_;  // as it was asked for
    std::string wanted_;   // what keys of several columns are made in
    std::string other_;
    RowGroups rows_;                        // ours, by their keys
    std::vector<TimecodeForms> forms_;      // of our columns
    EventSpeeds speeds_;                    // of ours
    std::vector<EventSpeeds::Note> notes_;  // of a row that is being changed
    std::vector<Column> columns_;           // of the log that is being added
    std::string otherCounting_;             // which all rows of it have, "" for that of ours
    bool doRowsCount_ = false;              // some of ours say themselves how they count
    unsigned countingColumn_ = 0;           // where they say so
    bool standTogether_ = false;            // they are our first ones, in their order and form
    std::vector<std::string_view> theirs_;  // of a row of the log that is being added
    std::vector<std::string_view> ours_;
    std::vector<std::string_view> values_;  // of a row that is being made
    bool hasChanges_ = false;
    std::vector<std::uint32_t> turnOf_;  // for rows with repeated keys, which of `turns_` is theirs
    std::vector<std::size_t> turns_;     // how many rows of a key had their turn
    std::vector<bool> taken_;            // ours that a row of this log went to
    std::size_t conflicts_ = 0;
    std::size_t repeatedKeys_ = 0;
};

std::string worded(const Merger::Conflict& conflict);

/// A Failure where two logs count their frames differently, by their rates (FPS) or by dropping
/// them (FPS or FCM): nothing in a joined log would tell which rows are which.
void requireSameCounting(const Log& into, const Log& from);

}  // namespace vek::formats
