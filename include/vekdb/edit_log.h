#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include <vekdb/field_types.h>
#include <vekdb/host/visibility.h>

class Cookie;
class vekdb;

/// Edits a table and remembers how each edit is taken back: undo and redo without limit, several
/// edits as one step, and whether anything was changed since the last save.
///
/// Models a line of edits and a place on it. What stands before the place has been done, what
/// stands behind it has been taken back and can be done again; a new edit drops what stands
/// behind. An edit that changes nothing is none. Each goes through the table's own operations, so
/// listeners and views are told what those tell them: of deletions, and of nothing else. Undoing
/// an insertion deletes rows and is told; undoing a deletion inserts and is not.
///
/// Everything comes back: values byte for byte, tags, columns with names, types and places, the
/// row of each identity, and names by which columns are found no more. What is not kept: changed
/// flags, the table's modified flag, the addresses of rows that were deleted, parameters.
///
/// Ownership: the table is the caller's and outlives the log. The log keeps what edits replaced
/// (a cell's former text, rows that were deleted, the rows as they stood before a column went,
/// which share their text with the table's), so its memory grows with the edits alone.
/// Failure: false or 0 where there is no such row or column, while only tagged rows are shown, or
/// where the table has no room. Only exhausted memory throws, or what a listener throws: then
/// either nothing happened or all of it did, and the log says which. An undo or redo of several
/// edits may stop between two of them: the next one goes on from there.
/// What ends it: a table that is loaded, sorted, freed or edited past the log stands otherwise than
/// the log remembers; call `forget` then. Listeners must not edit the table. Not locked.
class VEKDB_PUBLIC EditLog {
public:
    static constexpr unsigned none = 0xFFFFFFFF;  ///< no row, no column

    /// What an undo or redo did, for whoever shows the table.
    struct Outcome {
        std::size_t edits = 0;         ///< how many were taken back or done again; 0: none was left
        unsigned row = none;           ///< of the one that was last, where it was about a row
        unsigned column = none;        ///< of the same
        bool hasMovedRows = false;     ///< rows came or went
        bool hasOtherColumns = false;  ///< columns came, went, or changed their names
        bool isStepOver = true;        ///< false where edits of the step are left
    };

    /// Is told of each change that the log makes, whether an edit is done, taken back or done
    /// again: for whoever keeps something of its own for each row, or writes down what was changed.
    /// It is called when the table has changed already, and must not edit it; what it throws leaves
    /// the edit done.
    class VEKDB_PUBLIC Follower {
    public:
        virtual ~Follower() = default;
        /// `edit` is the edit's place in the log: the same one for doing it and taking it back,
        /// and given anew once the edit was dropped.
        virtual void rowsInserted(std::size_t edit, unsigned first, unsigned count) = 0;
        virtual void rowsDeleted(std::size_t edit, unsigned first, unsigned count) = 0;
        virtual void cellChanged(unsigned row, unsigned column);
        virtual void tagChanged(unsigned row);
        virtual void columnsChanged();
    };

    /// The table as it is now counts as saved.
    explicit EditLog(vekdb& table);
    ~EditLog();
    EditLog(const EditLog&) = delete;
    EditLog& operator=(const EditLog&) = delete;

    /// The table that is edited.
    vekdb& table() const { return table_; }
    /// Null for none. It outlives the log, or is taken off before.
    void follow(Follower* follower) { follower_ = follower; }

    // --- edits
    /// Stores a value as it is, white space and NULs included.
    bool set(unsigned row, unsigned column, std::string_view text);
    /// Stores an identity in the column "cookie", where there is one.
    bool setCookie(unsigned row, const Cookie& cookie);
    /// Keeps the low eight bits.
    bool setTag(unsigned row, int value);
    /// Inserts blank rows before a row, or at the end for the number of rows.
    bool insertRows(unsigned at, unsigned count);
    /// Inserts a row of these values; those that the table has no columns for are left out.
    bool insertRow(unsigned at, const std::string_view* values, std::size_t count);
    /// Deletes up to so many rows; how many.
    unsigned deleteRows(unsigned first, unsigned count);
    /// The new column's position, behind the others; `none` where one has, or had, the name.
    unsigned addColumn(const DBFieldDesc& field);
    /// Renames as the table does: the former name still finds the column, until this is undone.
    bool renameColumn(unsigned column, const char* name);
    bool setColumnType(unsigned column, DBFieldTypes::eType type);
    bool removeColumn(unsigned column);

    // --- steps
    /// Makes one step of the edits made while it lives; those in others that live in it, too.
    class VEKDB_PUBLIC Step {
    public:
        /// The log outlives the step.
        explicit Step(EditLog& log) : log_(log) { log_.beginStep(); }
        ~Step() { log_.endStep(); }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

    private:
        EditLog& log_;
    };
    /// The same by hand: each `beginStep` has its `endStep`.
    void beginStep() noexcept;
    void endStep() noexcept;

    // --- undo and redo
    /// Takes the last step back, or does the one again that was taken back last; what that did.
    /// Nothing while a step is open, and where there is no such step.
    Outcome undo() { return undo(everyEdit); }
    Outcome redo() { return redo(everyEdit); }
    /// The same with at most so many edits of the step, for whoever has other things to do
    /// between: the next call goes on from there.
    Outcome undo(std::size_t atMost);
    Outcome redo(std::size_t atMost);
    /// How many edits that step has, which are counted.
    std::size_t editsToUndo() const;
    std::size_t editsToRedo() const;
    bool canUndo() const { return depth_ == 0 && done_ > 0; }
    bool canRedo() const;

    // --- saving
    /// The table as it is now counts as saved.
    void markSaved() noexcept { saved_ = done_; }
    /// Undoing back to what was saved, or redoing up to it, makes it false again.
    bool hasUnsavedEdits() const { return saved_ != done_; }

    /// Drops every edit: nothing can be undone. Whether there is something to save stays.
    void forget() noexcept;
    /// How many edits have been done and can be taken back.
    std::size_t editCount() const { return done_; }

private:
    struct Edit;
    struct Late;
    class Line;
    static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);
    static constexpr std::size_t everyEdit = static_cast<std::size_t>(-1);

    bool isEditable() const;
    bool isCell(unsigned row, unsigned column) const;
    void make(Edit edit);
    void enter(Edit edit) noexcept;
    bool insert(unsigned at, Edit edit);
    template <class Change>
    bool changeColumns(Edit edit, Change change);
    void stepOver(Edit& edit, bool isUndo, Outcome& outcome);
    void tell(const Edit& edit, std::size_t place, Late& late) const;
    Late exchange(Edit& edit);
    void exchangeCell(Edit& edit);
    void exchangeTag(Edit& edit);
    void bringRows(Edit& edit);
    Late takeRows(Edit& edit);
    void exchangeColumns(Edit& edit) noexcept;
    void forgetIdentities();

    vekdb& table_;
    Follower* follower_ = nullptr;
    std::unique_ptr<Line> edits_;
    std::size_t done_ = 0;
    std::size_t saved_ = 0;
    unsigned depth_ = 0;
    bool isStepBegun_ = false;
};
