#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/choice.h>
#include <vekdb/formats/format.h>
#include <vekdb/formats/problem.h>
#include <vekdb/formats/reason.h>
#include <vekdb/formats/row.h>
#include <vekdb/formats/saving.h>
#include <vekdb/formats/view.h>

class vekdb;

/// Logs of every format: opened, gone through, edited and saved. Start with `vek::open`.
///
///     auto log = vek::open("dailies.ale");
///     if (!log) return complain(log.reason().text());
///     for (vek::Row row : *log) use(row["Scene"]);
namespace vek {

/// How a log is read. What does not concern a format is not looked at.
struct OpenOptions {
    std::optional<Format> format = {};  ///< found out by the name and the content when not said
    std::size_t maxBytes = 0;           ///< refuse larger inputs; 0 is 16 GiB
    std::size_t maxCells = 0;  ///< refuse more rows times columns; 0 is in proportion to the bytes
    /// How a text is encoded: "utf-8", "utf-16", "windows-1252", "macroman" or what iconv knows; ""
    /// finds it out.
    std::string encoding = {};
    /// What separates the cells of CSV and TSV; '\0' finds it out. And how many lines stand in
    /// front of the heading, and whether there is none: columns are called Column 1, 2, ... then.
    char delimiter = '\0';
    std::size_t skippedLines = 0;
    bool hasNoHeading = false;
    /// The sheet of a workbook, by its name or its number from 1 on; "" is the first that is not
    /// hidden.
    std::string sheet = {};
};

/// A parameter of a log: an entry of its heading.
struct Parameter {
    std::string name;   ///< unique in a log, its case ignored
    std::string value;  ///< one line
};

/// A log in memory, whatever format it came from, and its rows as a range. A handle: copies are of
/// the same log, which ends with the last of them and of the views, rows and columns made of it.
/// A log and all that belongs to it is used by one thread at a time. Rows, columns and views of
/// another log, a copy included, are refused wherever they would say what is to be changed.
///
/// Texts are bytes that the log keeps as they were read. Texts that are handed in are copied.
class Log {
public:
    /// The path as it was named, for messages.
    std::string_view name() const noexcept;
    /// The format that it was read from.
    Format format() const noexcept;
    /// What was found wrong on the way and could be read all the same: the first thousand, and how
    /// many more there are. The list is the log's, ends with it, and does not change.
    const std::vector<Problem>& problems() const noexcept;
    std::size_t moreProblems() const noexcept;
    /// Why rows at the end of the file could not be read; "" where all are there. A log with such
    /// a reason is not saved in place, as the rows would be lost.
    std::string_view notRead() const noexcept;

    /// Rows and columns as they are now.
    unsigned size() const noexcept;
    Row at(unsigned place) const;
    /// The row that has this index in the table, and the place in which the log shows a row; none
    /// for one that was removed or is not there.
    Row row(unsigned index) const;
    std::optional<unsigned> placeOf(const Row& row) const noexcept;
    PlaceIterator<Log> begin() const { return {*this, 0}; }
    PlaceIterator<Log> end() const { return {*this, size()}; }
    Columns columns() const { return Columns(log_); }
    /// The column that has a name now, its case ignored; "Reel#2" is the second of a name, and
    /// "[c<d]" the column c<d, as in conditions. No value when there is none, or several and it
    /// does not say which.
    Result<Column> column(std::string_view name) const;

    /// The rows that are meant, in their order: `log.choose("Scene=12")`. No value for a condition
    /// that cannot be read or a column that is not there.
    Result<View> choose(const Choice& choice = {}) const;
    /// The same among rows that are named by their indexes: in their order where none is asked for,
    /// and those that compare equal in it, too. Rows that were removed are left out.
    Result<View> chooseAmong(const std::vector<unsigned>& rows, const Choice& choice = {}) const;

    /// Puts a text in a cell. No value when there is no such row or column.
    Result<void> set(const Row& row, const Column& column, std::string_view text);
    Result<void> set(const Row& row, std::string_view column, std::string_view text);
    /// Puts another text in the place of each occurrence of one in the cells of these rows, byte by
    /// byte, in one column or, for "", in all; answers how many cells it changed. Where memory
    /// ends on the way, the rows up to some row are changed and the others are as they were.
    Result<std::size_t> replaceText(const View& rows, std::string_view column,
                                    std::string_view text, std::string_view by);
    /// Marks a row in the column "Tag", which is made where there is none. Where memory ends, the
    /// column may be there and empty.
    Result<void> setTagged(const Row& row, bool isTagged);
    /// A row without text behind all others.
    Result<Row> addRow();
    /// Takes rows out of the log. Handles of them and views that show them go on doing so, and
    /// the table keeps them; the log does not show or save them any more.
    Result<void> removeRows(const View& rows);
    /// The same by the places of the rows in the table, as Row::index says them; in any order, and
    /// passing over those that are not there.
    Result<void> removeRows(const std::vector<unsigned>& places);
    /// A column behind all others. No value when there is one of the name already; a name that a
    /// column had before is free. Where memory ends in this or the next two, a log that keeps a
    /// field map may have its column changed and the map not, and one whose name another column had
    /// before may be there without it; otherwise the log is as it was.
    Result<Column> addColumn(std::string_view name);
    Result<void> removeColumn(const Column& column);
    Result<void> renameColumn(const Column& column, std::string_view name);

    /// The entries of the heading, but for those that the library keeps for itself, by value.
    std::vector<Parameter> parameters() const;
    std::optional<std::string> parameter(std::string_view name) const;
    /// Adds one or gives it another value. No value when a file could not hold it: 40 have room,
    /// each has a name, and none holds a quote, a line end, a tab, blanks at its ends or, in its
    /// name, a colon; nor for "VEKDB", which is the library's own.
    /// Where memory ends, one that got another value may be empty, a new one without its name.
    Result<void> setParameter(std::string_view name, std::string_view value);

    /// Writes the log back into the file that it was read from with `openToChange`, in its format
    /// and by the rules of FileReplacement: whole or not at all, owner and rights kept where the
    /// system lets. `keepsOld` leaves the old file beside it as "NAME.bak". Says what the format
    /// and the new file did not hold. A file that would be the same is not touched, and gets none
    /// beside it.
    ///
    /// Saving lets go of the file: who wants to go on changing it opens it anew. No value, and the
    /// file as it was and still held, where it cannot be written or somebody else changed it; no
    /// value either for a log that is not open to be changed, that was saved or let go of, and for
    /// a copy.
    Result<Saved> save(bool keepsOld = false);
    /// Whether the log came in a format that is written back in place; others are only saved as
    /// another file.
    bool canBeSaved() const noexcept;
    /// Lets go of the file of a log that was opened to be changed and is not to be saved, so that
    /// others may change it. The log stays as it is.
    void letGo() noexcept;
    /// A log of its own with the rows and columns that this one shows: it shares their text, and
    /// is none that can be saved in place.
    Result<Log> copy() const;
    /// These write all rows and columns as a View does.
    Result<Saved> saveAs(std::string_view path, const SaveOptions& options = {}) const;
    Result<Saved> saveAs(std::string_view path, Format format,
                         const SaveOptions& options = {}) const;
    /// The same into a text, which is put in the place of what `text` held, and into a sink; and
    /// what they would say, with nothing written.
    Result<Saved> write(std::string& text, Format format, const SaveOptions& options = {}) const;
    Result<Saved> write(Sink& sink, Format format, const SaveOptions& options = {}) const;
    Result<Saved> wouldLose(Format format, const SaveOptions& options = {}) const;

    /// The exact core, which does all of this; who uses it includes <vekdb/table.h>. The table is
    /// the log's. Cells, parameters and the query may be changed there; rows must not be moved or
    /// deleted, nor columns removed.
    vekdb& table() const noexcept;

private:
    friend struct LogInside;
    explicit Log(std::shared_ptr<LogInside> log) : log_(std::move(log)) {}

    std::shared_ptr<LogInside> log_;
};

/// Reads the log in a file of any format. No value when it cannot be read, or holds no log.
Result<Log> open(std::string_view path, const OpenOptions& options = {});
/// The same for a log that is to be saved in place: from before it is read until the log is gone
/// nobody who asks the same way changes the file. No value when somebody else changes it, and for a
/// format that is only saved as another file.
Result<Log> openToChange(std::string_view path, const OpenOptions& options = {});
/// Reads what an open file descriptor gives, from where it stands up to its end; it stays the
/// caller's and open, but not where it stood. `name` is for messages, and its ending tells the
/// format where the content does not.
Result<Log> openDescriptor(int descriptor, std::string_view name, const OpenOptions& options = {});
/// Reads a text in memory, which is copied.
Result<Log> openText(std::string_view text, std::string_view name = {},
                     const OpenOptions& options = {});
/// A log of a table that an application made, its type that of the library's own files; who calls
/// this includes <vekdb/table.h>. No value for none, for one without columns and for one that shows
/// its tagged rows alone.
Result<Log> adopt(std::unique_ptr<vekdb> table, std::string_view name = {});

}  // namespace vek
