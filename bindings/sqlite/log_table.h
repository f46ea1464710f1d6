#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "guard.h"
#include "log_image.h"
#include "log_source.h"
#include "plan.h"

namespace vek::sql {

/// The columns of a table: those of the log by names that differ, and behind them some that a
/// SELECT * does not show.
struct TableColumns {
    explicit TableColumns(const Log& log);

    std::vector<std::string> names;  ///< of the log's columns
    /// Where the others stand: the number of the row, the line of the file on which it begins,
    /// whether it is tagged, and the frame rate that the log says.
    int number() const { return static_cast<int>(names.size()); }
    int line() const { return number() + 1; }
    int tagged() const { return number() + 2; }
    int rate() const { return number() + 3; }
    static constexpr int hidden = 4;
    std::optional<unsigned> tagColumn;

    /// CREATE TABLE x(...), as SQLite is told.
    std::string declaration() const;
    /// Names of the log's columns, each of which only one has.
    static std::vector<std::string> namesOf(const Log& log);
};

struct TableModule;

/// A log as a table of SQL: read when it was changed since, written at the end of a transaction.
class LogTable {
public:
    /// `arguments` tells it from the module's other tables.
    LogTable(sqlite3* db, const TableModule& module, std::unique_ptr<LogSource> source,
             std::string arguments);

    /// The table of these arguments in whose transaction the connection is, or a new one: SQLite
    /// may forget a table and connect to it anew while there are changes, as where ROLLBACK TO
    /// takes back what a database holds, and those who ask for it then are to see them.
    static std::shared_ptr<LogTable> of(sqlite3* db, TableModule& module,
                                        const std::vector<std::string_view>& arguments);

    const TableColumns& columns() const { return *columns_; }
    TableFacts facts() const;

    /// The rows as they are now. The file is looked at only where no cursor is open, so that all
    /// parts of a statement see the same.
    std::shared_ptr<LogImage> openCursor();
    void closeCursor() { --cursors_; }
    /// The frame rate of the log, "" where it says none.
    std::string rate(const LogImage& image) const;

    void begin();
    void sync();
    void endTransaction(bool isDone) noexcept;
    void setMark(int savepoint);
    void releaseMark(int savepoint) noexcept;
    void rollBackTo(int savepoint) noexcept;

    void update(int count, sqlite3_value** values, sqlite3_int64* newRow);
    /// Whether there are changes that no COMMIT saved yet.
    bool isUnsaved() const { return isChanging_ && image_->changes() > 0; }
    /// The path of the file, for messages.
    const std::string& path() const { return source_->path(); }

private:
    LogImage& changing();
    void takeBackPrepared() noexcept;
    void finish();
    void tellWhatIsLost();
    std::shared_ptr<LogImage> read(bool isToChange);
    std::vector<unsigned> placesIn(Log& log) const;
    [[noreturn]] void refuseColumns() const;
    void requireFormat(const LogImage& image) const;
    void refuseOldNumbers();
    void requireFreeBackup() const;
    void store(LogImage& image, unsigned row, int count, sqlite3_value** values, bool isNew);
    void requireSame(const LogImage& image, unsigned row, int column, sqlite3_value* value) const;
    bool tagOf(sqlite3_value* value) const;
    void setTagged(LogImage& image, unsigned row, bool wasTagged, sqlite3_value* value);
    unsigned rowOf(const LogImage& image, sqlite3_value* value) const;
    void change(LogImage& image, int count, sqlite3_value** values, sqlite3_int64* newRow);
    void insert(LogImage& image, int count, sqlite3_value** values, sqlite3_int64* newRow);

    sqlite3* db_;
    const TableModule& module_;
    std::unique_ptr<LogSource> source_;
    std::string arguments_;
    bool isUtf8_ = true;
    std::optional<TableColumns> columns_;
    std::shared_ptr<LogImage> image_;  // null where the file is to be read anew
    FileLook stamp_;                   // of the file that the image was read from
    unsigned rows_ = 0;
    unsigned cursors_ = 0;
    bool isChanging_ = false;
    bool isPrepared_ = false;  // changes stand beside the file, and wait for the others of a COMMIT
    bool isLost_ = false;      // SQLite was promised a commit that could not be
    std::string lost_;         // why
    bool wasReadInTransaction_ = false;
    bool hasOldNumbers_ = false;      // cursors go over rows that the file numbers in another way
    std::vector<std::size_t> marks_;  // changes at each savepoint
};

/// Makes tables of what `source` gives for the arguments of a CREATE VIRTUAL TABLE.
using SourceMaker = std::unique_ptr<LogSource> (*)(void* context,
                                                   const std::vector<std::string_view>& arguments);
struct TableModule {
    SourceMaker source;
    void* context = nullptr;
    std::vector<std::weak_ptr<LogTable>> tables = {};  ///< of the connection
};

/// `module` belongs to this connection alone, and must outlive it where nothing ends it with it.
int addTableModule(sqlite3* db, const char* name, TableModule* module,
                   void (*end)(void* module) = nullptr);

}  // namespace vek::sql
