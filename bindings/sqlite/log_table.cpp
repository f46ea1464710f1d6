#include "log_table.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <utility>

#include <vekdb/formats/timecode.h>
#include "formats/changing/file_names.h"

namespace vek::sql {

namespace {

std::string lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::string identifier(const std::string& name) {
    std::string out = "\"";
    for (char c : name) out += c == '"' ? "\"\"" : std::string(1, c);
    return out + '"';
}

bool isUtf8(sqlite3* db) {
    sqlite3_stmt* statement = nullptr;
    bool answer = false;
    if (sqlite3_prepare_v2(db, "PRAGMA encoding", -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        answer = text != nullptr && std::strcmp(text, "UTF-8") == 0;
    }
    sqlite3_finalize(statement);
    return answer;
}

}  // namespace

std::vector<std::string> TableColumns::namesOf(const Log& log) {
    std::vector<std::string> names;
    std::set<std::string> taken;
    for (Column column : log.columns()) {
        std::string name = column.name();
        if (name.empty()) name = "[]";
        if (taken.contains(lower(name))) name = column.address();
        while (!taken.insert(lower(name)).second) name += "#2";
        names.push_back(std::move(name));
    }
    return names;
}

TableColumns::TableColumns(const Log& log) : names(namesOf(log)) {
    for (unsigned i = 0; i < names.size() && !tagColumn; ++i) {
        if (lower(names[i]) == "tag") tagColumn = i;
    }
}

// SQLite knows names in any case. One of the log goes before one that is added.
std::string TableColumns::declaration() const {
    std::set<std::string> taken;
    std::string out = "CREATE TABLE x(";
    for (const std::string& name : names) {
        taken.insert(lower(name));
        out += identifier(name) + " TEXT, ";
    }
    const char* end = "";
    for (const char* wanted : {"_row INTEGER", "_line INTEGER", "_tagged INTEGER", "_fps TEXT"}) {
        std::string column = wanted;
        while (taken.contains(column.substr(0, column.find(' ')))) column.insert(0, 1, '_');
        out += end + column + " HIDDEN";
        end = ", ";
    }
    return out + ")";
}

std::shared_ptr<LogTable> LogTable::of(sqlite3* db, TableModule& module,
                                       const std::vector<std::string_view>& arguments) {
    std::string words;
    for (const std::string_view argument : arguments) (words += argument) += '\0';
    std::erase_if(module.tables, [](const auto& table) { return table.expired(); });
    for (const auto& known : module.tables) {
        const auto table = known.lock();
        if (table->isChanging_ && table->arguments_ == words) return table;
    }
    auto made = std::make_shared<LogTable>(db, module, module.source(module.context, arguments),
                                           std::move(words));
    module.tables.push_back(made);
    return made;
}

LogTable::LogTable(sqlite3* db, const TableModule& module, std::unique_ptr<LogSource> source,
                   std::string arguments)
    : db_(db),
      module_(module),
      source_(std::move(source)),
      arguments_(std::move(arguments)),
      isUtf8_(isUtf8(db)) {
    image_ = read(false);
    const int most = sqlite3_limit(db, SQLITE_LIMIT_COLUMN, -1) - TableColumns::hidden;
    const unsigned found = image_->log().columns().size();
    if (found > static_cast<unsigned>(std::max(most, 0))) {
        throw Refusal(source_->path() + ": has " + std::to_string(found) +
                      " columns, and SQLite has room for " + std::to_string(most) +
                      "; SELECT from vek_cells(path) instead");
    }
    columns_.emplace(image_->log());
}

TableFacts LogTable::facts() const {
    return {static_cast<int>(columns_->names.size()), columns_->number(), isUtf8_, rows_};
}

std::shared_ptr<LogImage> LogTable::read(bool isToChange) {
    const FileLook before = source_->stamp();
    Log log = isToChange ? source_->readToChange() : source_->read();
    std::vector<unsigned> places = columns_ ? placesIn(log) : std::vector<unsigned>();
    auto image = std::make_shared<LogImage>(std::move(log), std::move(places));
    stamp_ = before;
    rows_ = image->rowCount();
    hasOldNumbers_ = false;
    return image;
}

// In JSON the columns stand in the rows: where rows went, columns may have gone with them, or stand
// in another order.
std::vector<unsigned> LogTable::placesIn(Log& log) const {
    const std::vector<std::string> found = TableColumns::namesOf(log);
    if (found == columns_->names) return {};
    const bool isInRows = log.format() == Format::json || log.format() == Format::jsonl;
    std::map<std::string, unsigned> places;
    for (const std::string& name : found) places.emplace(name, places.size());
    std::vector<unsigned> out;
    for (const std::string& name : columns_->names) {
        const auto [place, isNew] = places.emplace(name, places.size());
        if (isNew && (!isInRows || !log.addColumn(name))) refuseColumns();
        out.push_back(place->second);
    }
    if (places.size() > out.size()) refuseColumns();
    return out;
}

void LogTable::refuseColumns() const {
    throw Refusal(SQLITE_ERROR, source_->path() +
                                    ": has other columns than when it was made a table; close "
                                    "the connection and open it anew, or DROP TABLE and create "
                                    "it again");
}

std::shared_ptr<LogImage> LogTable::openCursor() {
    tellWhatIsLost();
    const bool mayRead = cursors_ == 0 && !isChanging_;
    if (!image_ || (mayRead && (hasOldNumbers_ || source_->stamp() != stamp_))) {
        image_.reset();
        image_ = read(false);
    }
    wasReadInTransaction_ = sqlite3_get_autocommit(db_) == 0;
    ++cursors_;
    return image_;
}

std::string LogTable::rate(const LogImage& image) const {
    if (!source_->rate().empty()) return source_->rate();
    const std::optional<std::string> said = image.log().parameter("FPS");
    const std::optional<FrameRate> rate = said ? parseFrameRate(*said) : std::nullopt;
    return rate ? rateText(*rate) : std::string();
}

// A statement that goes on with rows of a file that is another one now would change other rows
// than it means.
void LogTable::refuseOldNumbers() {
    const bool isRead = cursors_ > 0 || wasReadInTransaction_;
    const bool isOther = hasOldNumbers_ || (image_ && source_->stamp() != stamp_);
    if (!isRead || !isOther) return;
    wasReadInTransaction_ = false;
    if (cursors_ == 0) image_.reset();
    throw Refusal(source_->path() +
                  ": was changed since it was read here, so its rows may have other numbers; "
                  "finish what reads it or ROLLBACK, and begin anew (a transaction around reading "
                  "and changing keeps the numbers of its own changes)");
}

void LogTable::requireFormat(const LogImage& image) const {
    if (image.log().canBeSaved()) return;
    throw Refusal(SQLITE_READONLY,
                  source_->path() + ": is " + std::string(nameOf(image.log().format())) +
                      ", which is not changed in place, expected a table file, CSV, TSV, JSON, "
                      "ALE or EDL; vek convert makes one of it");
}

// What is kept of the old file would take the place of a log that is a table, too.
void LogTable::requireFreeBackup() const {
    const std::string backup = source_->backup();
    if (backup.empty()) return;
    for (const auto& known : module_.tables) {
        const auto other = known.lock();
        if (!other || other.get() == this || !formats::isSameFile(other->path(), backup)) continue;
        throw Refusal(backup + ": is a log that is a table, too, and what is kept of " + path() +
                      " would take its place; DROP one of the tables, or make this one without "
                      "backup");
    }
}

// Where the connection came to it anew in the midst of a transaction, that goes on.
void LogTable::begin() {
    if (isChanging_) return;
    tellWhatIsLost();
    requireFreeBackup();
    refuseOldNumbers();
    if (image_) requireFormat(*image_);
    std::shared_ptr<LogImage> image = read(true);
    requireFormat(*image);
    image_ = std::move(image);
    isChanging_ = true;
    marks_.clear();
}

// All of a COMMIT that may fail: SQLite takes the transaction back in all tables then, or leaves it
// as it is where its own database is in use. In the second case this is called again.
void LogTable::sync() {
    if (!isChanging_ || image_->changes() == 0) return;
    if (image_->isBroken()) throw std::bad_alloc();
    requireFreeBackup();
    if (!isPrepared_) source_->prepare(image_->log(), image_->rowsThere());
    isPrepared_ = true;
    source_->requireReady();
}

// Behind a COMMIT that found the database in use the transaction may go on.
void LogTable::takeBackPrepared() noexcept {
    if (std::exchange(isPrepared_, false)) source_->giveUp();
}

// The new file is there, and takes the old one's place.
void LogTable::finish() {
    source_->commit();
    hasOldNumbers_ = image_->isRenumbered();
    stamp_ = source_->stamp();
    image_->forgetJournal();
}

void LogTable::endTransaction(bool isDone) noexcept {
    try {
        if (isDone && isPrepared_) finish();
    } catch (Refusal& refusal) {
        isLost_ = true;
        lost_ = std::move(refusal.text);
        // The connection may ask this log nothing more.
        sqlite3_log(SQLITE_IOERR, "a COMMIT did not save its changes: %s", lost_.c_str());
    } catch (...) {
        isLost_ = true;
        sqlite3_log(SQLITE_NOMEM, "%s: a COMMIT did not save its changes", source_->path().c_str());
    }
    source_->giveUp();
    if (isChanging_) {
        image_->log().letGo();
        const bool isKept = isDone && !isLost_ && (!isPrepared_ || cursors_ > 0);
        if (!isDone) image_->undoTo(0);
        if (!isKept) image_.reset();
    }
    isChanging_ = isPrepared_ = false;
    wasReadInTransaction_ = false;
    marks_.clear();
}

// SQLite asks no commit whether it could be.
void LogTable::tellWhatIsLost() {
    if (!std::exchange(isLost_, false)) return;
    throw Refusal(source_->path() + ": the last COMMIT did not save its changes: " +
                  std::exchange(lost_, std::string()));
}

// One that is set stays: SQLite sets it again for a table that it came to anew.
void LogTable::setMark(int savepoint) {
    if (marks_.size() > static_cast<std::size_t>(savepoint)) return;
    const std::size_t changes = isChanging_ ? image_->changes() : 0;
    marks_.resize(static_cast<std::size_t>(savepoint) + 1, changes);
}

void LogTable::releaseMark(int savepoint) noexcept {
    const std::size_t kept = static_cast<std::size_t>(savepoint);
    if (marks_.size() > kept) marks_.resize(kept);
}

// The savepoint that began the whole transaction is -1, and has no mark.
void LogTable::rollBackTo(int savepoint) noexcept {
    const std::size_t kept = static_cast<std::size_t>(savepoint + 1);
    if (!isChanging_ || kept > marks_.size()) return;
    takeBackPrepared();
    image_->undoTo(kept == 0 ? 0 : marks_[kept - 1]);
    marks_.resize(kept);
}

namespace {

bool isUnchanged(sqlite3_value* value) {
    return sqlite3_value_nochange(value) != 0;
}

// What a value is as the text of a cell.
std::string_view cellOf(sqlite3_value* value, const std::string& column) {
    const char* const what = sqlite3_value_type(value) == SQLITE_BLOB ? "a blob" : "a text";
    const std::string_view text = textOf(value);
    if (text.find('\0') == text.npos) return text;
    throw Refusal(SQLITE_MISMATCH, "column " + quoted(column) + ": found " + what +
                                       " with a zero byte, expected a text without, as no log "
                                       "holds one; hex() makes one");
}

}  // namespace

// SQLite begins nothing in a table that was made in the same transaction, and has none of its
// savepoints go back in it: what took the making back would leave the changes to the COMMIT.
LogImage& LogTable::changing() {
    if (!isChanging_) {
        throw Refusal(source_->path() +
                      ": was made a table in this transaction, which cannot change it; COMMIT, and "
                      "change it then");
    }
    takeBackPrepared();
    return *image_;
}

// The tag that a row had is looked at first: it may stand in a column that is stored, too.
void LogTable::store(LogImage& image, unsigned row, int count, sqlite3_value** values, bool isNew) {
    const int own = static_cast<int>(columns_->names.size());
    const bool wasTagged = image.isTagged(row);
    for (int i = 0; i < count && i < own; ++i) {
        if (isUnchanged(values[i])) continue;
        const unsigned column = static_cast<unsigned>(i);
        image.set(row, column, cellOf(values[i], columns_->names[column]));
    }
    for (int i = own; i < count; ++i) {
        const bool isNothing = isNew && sqlite3_value_type(values[i]) == SQLITE_NULL;
        if (isNothing || isUnchanged(values[i])) continue;
        if (i == columns_->tagged())
            setTagged(image, row, wasTagged, values[i]);
        else
            requireSame(image, row, i, values[i]);
    }
}

// Where a statement joins tables it says all values again.
void LogTable::requireSame(const LogImage& image, unsigned row, int column,
                           sqlite3_value* value) const {
    const sqlite3_int64 number = sqlite3_value_int64(value);
    if (column == columns_->number() && number == sqlite3_int64{row} + 1) return;
    if (column == columns_->line() && number == static_cast<sqlite3_int64>(image.lineOf(row))) {
        return;
    }
    if (column == columns_->rate() && textOf(value) == rate(image)) return;
    throw Refusal(SQLITE_MISMATCH, source_->path() +
                                       ": _row, _line and _fps say where a row stands and how it "
                                       "counts, and cannot be set; expected columns of the log, or "
                                       "_tagged");
}

// A tag as SQL has what is true: a number other than 0. A text that is none would count as 0, and
// take away the tags that it was to set.
bool LogTable::tagOf(sqlite3_value* value) const {
    switch (sqlite3_value_numeric_type(value)) {
        case SQLITE_NULL:
            return false;
        case SQLITE_INTEGER:
        case SQLITE_FLOAT:
            return sqlite3_value_double(value) != 0;
        default:
            throw Refusal(SQLITE_MISMATCH, source_->path() + ": _tagged is " +
                                               quoted(textOf(value)) + ", expected 1 or 0");
    }
}

void LogTable::setTagged(LogImage& image, unsigned row, bool wasTagged, sqlite3_value* value) {
    const bool isTagged = tagOf(value);
    if (isTagged == wasTagged) return;
    if (!columns_->tagColumn) {
        throw Refusal(source_->path() +
                      ": has no column Tag in which a tag could stand; vek column add makes one");
    }
    image.setTagged(row, *columns_->tagColumn, isTagged);
}

unsigned LogTable::rowOf(const LogImage& image, sqlite3_value* value) const {
    const sqlite3_int64 number = sqlite3_value_int64(value);
    if (number > 0 && number <= image.rowCount()) return static_cast<unsigned>(number - 1);
    throw Refusal(source_->path() + ": has no row " + std::to_string(number));
}

void LogTable::insert(LogImage& image, int count, sqlite3_value** values, sqlite3_int64* newRow) {
    if (sqlite3_value_type(values[1]) != SQLITE_NULL) {
        throw Refusal(SQLITE_MISMATCH, source_->path() +
                                           ": a row comes behind the last one and gets its number "
                                           "there, expected no rowid");
    }
    const unsigned row = image.addRow();
    store(image, row, count - 2, values + 2, true);
    *newRow = sqlite3_int64{row} + 1;
}

// SQLite has no savepoint to go back to around a statement that changes a single row.
void LogTable::update(int count, sqlite3_value** values, sqlite3_int64* newRow) {
    LogImage& image = changing();
    const std::size_t before = image.changes();
    try {
        change(image, count, values, newRow);
    } catch (...) {
        image.undoTo(before);
        throw;
    }
}

// `values`: the row as it was, none for one that is new; as it is to be, and its cells. One alone
// is to be deleted.
void LogTable::change(LogImage& image, int count, sqlite3_value** values, sqlite3_int64* newRow) {
    const bool isNew = sqlite3_value_type(values[0]) == SQLITE_NULL;
    if (isNew) return insert(image, count, values, newRow);
    const unsigned row = rowOf(image, values[0]);
    if (!image.isThere(row)) return;
    if (count == 1) return image.removeRow(row);
    if (sqlite3_value_int64(values[0]) != sqlite3_value_int64(values[1])) {
        throw Refusal(SQLITE_MISMATCH,
                      source_->path() + ": the number of a row is its place, and cannot be set");
    }
    store(image, row, count - 2, values + 2, false);
}

}  // namespace vek::sql
