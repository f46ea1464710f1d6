#include "log_cursor.h"

/// The functions by which SQLite asks a table that is a log.
namespace vek::sql {

namespace {

// What SQLite has of a table, which may outlive that.
struct Handle : sqlite3_vtab {
    explicit Handle(std::shared_ptr<LogTable> log) : sqlite3_vtab{}, log(std::move(log)) {}

    std::shared_ptr<LogTable> log;
};

LogTable& tableOf(sqlite3_vtab* table) {
    return *static_cast<Handle*>(table)->log;
}

LogCursor& cursorOf(sqlite3_vtab_cursor* cursor) {
    return static_cast<LogCursor&>(*cursor);
}

template <class Work>
int asking(sqlite3_vtab* table, Work work) noexcept {
    return guarded(table->zErrMsg, [&] { work(tableOf(table)); });
}

template <class Work>
int going(sqlite3_vtab_cursor* cursor, Work work) noexcept {
    return guarded(cursor->pVtab->zErrMsg, [&] { work(cursorOf(cursor)); });
}

void declare(sqlite3* db, const LogTable& table) {
    const int result = sqlite3_declare_vtab(db, table.columns().declaration().c_str());
    if (result != SQLITE_OK) throw Refusal(result, sqlite3_errmsg(db));
    // A schema may come from a stranger: its views and triggers must not reach files.
    sqlite3_vtab_config(db, SQLITE_VTAB_DIRECTONLY);
}

int connect(sqlite3* db, void* data, int count, const char* const* words, sqlite3_vtab** table,
            char** message) {
    return guarded(*message, [&] {
        const std::vector<std::string_view> arguments(words + 3, words + count);
        auto made =
            std::make_unique<Handle>(LogTable::of(db, *static_cast<TableModule*>(data), arguments));
        declare(db, *made->log);
        *table = made.release();
    });
}

int disconnect(sqlite3_vtab* table) {
    delete static_cast<Handle*>(table);
    return SQLITE_OK;
}

// Nobody could save them any more. SQLite says to this what it says of all codes of the kind.
int destroy(sqlite3_vtab* table) {
    const LogTable& log = tableOf(table);
    if (!log.isUnsaved()) return disconnect(table);
    sqlite3_log(SQLITE_LOCKED,
                "%s: has changes that are not saved, so its table stays; COMMIT or "
                "ROLLBACK, and DROP it then",
                log.path().c_str());
    return SQLITE_LOCKED;
}

int bestIndex(sqlite3_vtab* table, sqlite3_index_info* info) {
    return guarded(table->zErrMsg, [&] {
        if (planQuery(tableOf(table).facts(), info) != SQLITE_OK) throw std::bad_alloc();
    });
}

int open(sqlite3_vtab* table, sqlite3_vtab_cursor** cursor) {
    return asking(table, [&](LogTable& log) { *cursor = new LogCursor(log); });
}

int close(sqlite3_vtab_cursor* cursor) {
    delete &cursorOf(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* cursor, int, const char* plan, int count, sqlite3_value** values) {
    return going(cursor, [&](LogCursor& rows) { rows.filter(plan, count, values); });
}

int next(sqlite3_vtab_cursor* cursor) {
    return going(cursor, [](LogCursor& rows) { rows.next(); });
}

int isAtEnd(sqlite3_vtab_cursor* cursor) {
    return cursorOf(cursor).isAtEnd() ? 1 : 0;
}

int column(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int number) {
    answering(context, [&] { cursorOf(cursor).column(context, number); });
    return SQLITE_OK;
}

int rowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* row) {
    *row = cursorOf(cursor).rowid();
    return SQLITE_OK;
}

int update(sqlite3_vtab* table, int count, sqlite3_value** values, sqlite3_int64* row) {
    return asking(table, [&](LogTable& log) { log.update(count, values, row); });
}

int begin(sqlite3_vtab* table) {
    return asking(table, [](LogTable& log) { log.begin(); });
}

int sync(sqlite3_vtab* table) {
    return asking(table, [](LogTable& log) { log.sync(); });
}

int commit(sqlite3_vtab* table) {
    tableOf(table).endTransaction(true);
    return SQLITE_OK;
}

int rollBack(sqlite3_vtab* table) {
    tableOf(table).endTransaction(false);
    return SQLITE_OK;
}

int rename(sqlite3_vtab*, const char*) {
    return SQLITE_OK;
}

int setMark(sqlite3_vtab* table, int number) {
    return asking(table, [&](LogTable& log) { log.setMark(number); });
}

int releaseMark(sqlite3_vtab* table, int number) {
    tableOf(table).releaseMark(number);
    return SQLITE_OK;
}

int rollBackTo(sqlite3_vtab* table, int number) {
    tableOf(table).rollBackTo(number);
    return SQLITE_OK;
}

const sqlite3_module& functions() {
    static const sqlite3_module all = [] {
        sqlite3_module module = {};
        module.iVersion = 2;
        module.xCreate = connect;
        module.xConnect = connect;
        module.xBestIndex = bestIndex;
        module.xDisconnect = disconnect;
        module.xDestroy = destroy;
        module.xOpen = open;
        module.xClose = close;
        module.xFilter = filter;
        module.xNext = next;
        module.xEof = isAtEnd;
        module.xColumn = column;
        module.xRowid = rowid;
        module.xUpdate = update;
        module.xBegin = begin;
        module.xSync = sync;
        module.xCommit = commit;
        module.xRollback = rollBack;
        module.xRename = rename;
        module.xSavepoint = setMark;
        module.xRelease = releaseMark;
        module.xRollbackTo = rollBackTo;
        return module;
    }();
    return all;
}

}  // namespace

int addTableModule(sqlite3* db, const char* name, TableModule* module, void (*end)(void*)) {
    return sqlite3_create_module_v2(db, name, &functions(), module, end);
}

}  // namespace vek::sql
