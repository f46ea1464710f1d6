#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <vekdb/edit_log.h>
#include "formats/event_speeds.h"
#include "tools/vek/browse/recovery.h"
#include "tools/vek/browse/row_stack.h"

namespace vek::browse {

/// A log that is looked at and edited: its rows as the stack shows them, its columns as they are
/// laid out, where the cursor is, and all edits. Knows nothing of keys and screens. Nothing is
/// written to the log's file but by `save`; edits go to the recovery file as they are made.
class Sheet : private EditLog::Follower {
public:
    struct Column {
        unsigned column = 0;
        std::size_t width = 0;  ///< that somebody gave it; 0 for the one that fits
        bool isHidden = false;
    };
    /// Rows of the table, none twice.
    using Rows = std::vector<unsigned>;
    static constexpr unsigned nowhere = RowStack::nowhere;

    /// `mark` is that of the log's file before it was read, so what happened meanwhile is noticed.
    Sheet(Log log, Opening opening, const std::optional<FileMark>& mark);
    ~Sheet() override;
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;

    const Log& log() const { return log_; }
    const Opening& opening() const { return opening_; }
    EditLog& edits() { return edits_; }
    RowStack& rows() { return rows_; }
    const RowStack& rows() const { return rows_; }
    Recovery& recovery() { return recovery_; }

    // --- where one is
    unsigned place() const { return place_; }
    /// The table's row under the cursor; `nowhere` in a log that shows none.
    unsigned row() const { return place_ < rows_.size() ? rows_.rowAt(place_) : nowhere; }
    /// The column of the table under the cursor.
    unsigned column() const { return columns_.empty() ? nowhere : columns_[at_].column; }
    std::size_t columnPlace() const { return at_; }
    const std::vector<Column>& columns() const { return columns_; }
    void moveTo(unsigned place);
    void moveBy(long long rows);
    void moveToColumn(std::size_t at);
    /// To the next column that is not hidden.
    void moveColumns(int by);
    /// False when the row is not shown.
    bool moveToRow(unsigned row);
    /// The rows from the mark to the cursor, or the cursor's alone.
    Rows chosenRows() const;
    void mark() { marked_ = place_; }
    void unmark() { marked_ = nowhere; }
    bool isMarked(unsigned place) const;
    bool hasMark() const { return marked_ != nowhere; }
    /// How many rows `chosenRows` has.
    unsigned chosenCount() const;

    // --- columns
    void widen(int by, std::size_t shownWidth);
    void hide();
    void showAllColumns();
    void moveColumn(int by);
    /// So many at the left stay while the others are scrolled.
    std::size_t kept() const { return kept_; }
    void keep(std::size_t columns) { kept_ = std::min(columns, columns_.size()); }

    // --- what is shown
    void filter(const std::string& name, const Selection& selection);
    bool unfilter();
    void sort(std::vector<unsigned> columns, bool isReversed);
    void refresh();
    Rows shownRows() const;
    /// Those of them that are chosen, in the order of the table.
    Rows shownRows(const Selection& selection) const { return rows_.chosenRows(selection); }

    // --- tags, in the column "Tag"
    bool isTagged(unsigned row) const;
    enum class Tagging { tag, untag, invert };
    void tag(const Rows& rows, Tagging how);
    /// Whether there is anything to tag so: no tag is taken off where the log has no column of
    /// them. One that is needed comes with the first row.
    bool canTag(const Rows& rows, Tagging how) const;
    void tagRow(unsigned row, Tagging how);
    /// Those of the whole log.
    Rows taggedRows() const;
    /// Appends those from a row up to another.
    void addTagged(unsigned from, unsigned to, Rows& rows) const;
    std::vector<EventSpeeds::Note> movedSpeeds(unsigned row, unsigned column,
                                               std::string_view text) const;

    // --- edits
    /// The notes of an event that name its reel and its source go along with them.
    void setCell(unsigned row, unsigned column, const std::string& text);
    /// Behind the cursor's row, or before it. The cursor goes there.
    void insertRow(bool isBehind);
    void deleteRows(const Rows& rows);
    void renameColumn(unsigned column, const std::string& name);
    /// What is done a little at a time, as one step of the edits, where it may take long: each
    /// call of `step` answers how much it did, 0 when nothing is left. `settle` comes behind, also
    /// where it is left undone.
    class Deleting;
    class Undoing;
    class Appending;
    bool isUnsaved() const { return edits_.hasUnsavedEdits(); }
    /// To be called when edits were made by `edits` or `tagRow`, once for all of them.
    void settle();

    // --- the file
    /// Whether the file on the disk is another one than was read.
    bool isChangedOnDisk() const;
    /// Takes the edits over that a recovery file holds, a little at a time, as `Deleting` has it:
    /// `step` answers how many bytes of the file it did.
    class Recovering;
    /// Writes all into the log's file; what was not edited stays as it came. A Failure where the
    /// file is another one than was read, unless that may be overwritten. What the file could not
    /// hold.
    std::vector<std::string> save(bool overwrites = false);
    /// Writes all, or what is shown as it is shown, into another file.
    std::vector<std::string> saveAs(const std::string& path, bool asShown);
    /// Writes the rows shown, with all columns, into another file.
    void writeRows(const std::string& path);
    /// Forgets the edits that are not saved.
    void discard() { recovery_.remove(); }

private:
    void rowsInserted(std::size_t edit, unsigned first, unsigned count) override;
    void rowsDeleted(std::size_t edit, unsigned first, unsigned count) override;
    void cellChanged(unsigned row, unsigned column) override;
    void columnsChanged() override;
    void follow(const EditLog::Outcome& outcome);
    unsigned tagColumn();
    void fitColumns();
    void clampPlace();
    void requireUnchanged() const;
    Log fresh(std::vector<unsigned>& order, bool holds) const;
    unsigned originOf(unsigned row) const { return origins_.empty() ? row : origins_[row]; }
    void touch(unsigned row);
    bool isTouched(unsigned origin) const;
    void forgetOrigins();
    void renameIn(Log& to) const;
    void copyRow(unsigned row, Log& to, unsigned toRow) const;

    Log log_;
    Opening opening_;
    EditLog edits_;
    RowStack rows_;
    Recovery recovery_;
    std::optional<FileMark> mark_;
    std::vector<Column> columns_;
    unsigned knownColumns_ = 0;
    std::size_t kept_ = 1;
    unsigned place_ = 0;
    std::size_t at_ = 0;
    unsigned marked_ = nowhere;
    // For each row of the table the one of the file that it was; empty while all stand as there.
    RowList origins_;
    std::map<std::size_t, std::vector<unsigned>> gone_;
    // Rows of the file in which a cell was changed since; all of them where a column was.
    std::vector<bool> touched_;
    bool areAllTouched_ = false;
    EditLog::Outcome last_;  // where the cursor is to go
};

/// Deletes rows from the last on, so that the numbers of the others stay; neighbours go together.
class Sheet::Deleting {
public:
    Deleting(Sheet& sheet, const Rows& rows);
    std::size_t step();

private:
    Sheet& sheet_;
    EditLog::Step step_;
    std::vector<char> goes_;
    unsigned at_;
};

/// Takes the last step back, or does the one again that was taken back last. The cursor goes where
/// something changed.
class Sheet::Undoing {
public:
    Undoing(Sheet& sheet, bool isRedo);
    ~Undoing();
    Undoing(const Undoing&) = delete;
    Undoing& operator=(const Undoing&) = delete;
    std::size_t step();
    /// All that there is to do, in what `step` counts.
    std::size_t count() const { return count_; }

private:
    Sheet& sheet_;
    bool isRedo_;
    std::size_t count_;
    EditLog::Outcome last_;
};

/// The edits are written down anew as they are made; the old file stays until they all are.
class Sheet::Recovering {
public:
    Recovering(Sheet& sheet, const std::string& path);
    std::size_t step();
    std::size_t edits() const { return replay_.edits(); }

private:
    Sheet& sheet_;
    Recovery::Replay replay_;
};

/// Appends rows of another sheet: columns by their names.
class Sheet::Appending {
public:
    Appending(Sheet& to, const Sheet& from, Rows rows);
    std::size_t step();
    /// How many columns find no place.
    std::size_t lost() const;

private:
    Sheet& to_;
    const Sheet& from_;
    EditLog::Step step_;
    Rows rows_;
    std::size_t done_ = 0;
    std::vector<unsigned> places_;
    std::vector<std::string_view> values_;
};

}  // namespace vek::browse
