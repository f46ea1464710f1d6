#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/log.h>
#include "formats/choosing/select.h"
#include "formats/formats.h"
#include "formats/log/log.h"
#include "formats/writing/writers.h"

namespace vek {

/// What the handles of one log share.
struct LogInside {
    formats::Log log;
    bool isToChange = false;
    /// Rows of the table in its order; all as long as none went.
    std::optional<std::vector<unsigned>> kept;

    unsigned rowCount() const;
    /// The table's row in a place of the log.
    unsigned rowAt(unsigned place) const;
    std::vector<unsigned> rows() const;
    /// The place in which the log shows a row of the table; nothing for one that it does not.
    std::optional<unsigned> placeOf(unsigned row) const;
    bool shows(unsigned row) const { return placeOf(row).has_value(); }
    formats::Selection selectionOf(const Choice& choice) const;
    bool isRow(unsigned row) const { return row < log.rowCount(); }
    /// The cell of a table's row, "" where there is none.
    std::string_view cell(unsigned row, unsigned column) const;
    bool showsAll() const { return !kept || kept->size() == log.rowCount(); }
    /// A log of its own with the rows that are shown.
    std::shared_ptr<LogInside> copy() const;

    /// A Failure for a handle of another log, whose numbers say nothing of this one.
    void requireOwn(const Row& row) const;
    void requireOwn(const Column& column) const;
    void requireOwn(const View& view) const;

    static Column columnOf(std::shared_ptr<const LogInside> log, unsigned column);
    static Row rowOf(std::shared_ptr<const LogInside> log, unsigned row);
    static Log logOf(std::shared_ptr<LogInside> log) { return Log(std::move(log)); }
    static const LogInside& of(const Log& log) { return *log.log_; }
    static LogInside& of(Log& log) { return *log.log_; }
};

/// The rows that a log shows and no others, for what goes by the table's rows: the log itself, or a
/// copy where rows were removed from it.
class ShownRows {
public:
    explicit ShownRows(const LogInside& inside)
        : inside_(inside), copy_(inside.showsAll() ? nullptr : inside.copy()) {}

    const formats::Log& log() const { return copy_ ? copy_->log : inside_.log; }
    /// The index in the log of one of these rows.
    unsigned indexOf(unsigned row) const { return copy_ ? inside_.rowAt(row) : row; }

private:
    const LogInside& inside_;
    std::shared_ptr<const LogInside> copy_;
};

/// The file of a path that an application gives: "-" is one like others, and a name ends where the
/// system's names end. A Failure of this kind for a path with a zero byte.
std::string fileOf(std::string_view path, Reason::Kind kind);

/// Rows of a log as they are to be written.
struct Written {
    formats::Sheet sheet;
    const SaveOptions& options;
};

Result<Saved> saveSheet(const Written& written, std::string_view path,
                        std::optional<Format> format);
Result<Saved> writeSheet(const Written& written, std::string& text, Format format);
Result<Saved> writeSheet(const Written& written, Sink& sink, Format format);
Result<Saved> lossesOf(const Written& written, Format format);
/// The columns that the options name. A Failure for one that is not there.
std::vector<unsigned> writtenColumns(const formats::Log& log, const SaveOptions& options);
/// What is said of a log that was written, and of the file that it went to.
Saved savedWith(const formats::Losses& losses, std::vector<std::string> notes);

}  // namespace vek
