#include "tools/vek/sql/rules.h"

#include <algorithm>
#include <string_view>

namespace vek::sql {

namespace {

std::string textOf(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

bool isTemporary(const char* database) {
    return textOf(database) == "temp";
}

// What they answer is in no file, and they change nothing.
bool isHarmlessPragma(const std::string& name) {
    constexpr std::string_view harmless[] = {"table_info",    "table_xinfo",    "table_list",
                                             "function_list", "collation_list", "compile_options"};
    return std::find(std::begin(harmless), std::end(harmless), name) != std::end(harmless);
}

}  // namespace

void Rules::holdFor(sqlite3* db) {
    sqlite3_set_authorizer(db, asked, this);
}

int Rules::asked(void* rules, int action, const char* a, const char* b, const char* database,
                 const char*) {
    return static_cast<Rules*>(rules)->decide(action, a, b, database);
}

int Rules::refuse(const std::string& reason) {
    if (reason_.empty()) reason_ = reason;
    return SQLITE_DENY;
}

int Rules::change(const char* table, const char* database) {
    if (isTemporary(database) || textOf(table).starts_with("sqlite_")) return SQLITE_OK;
    if (mayWrite_) return use(textOf(table), true);
    return refuse("it changes " + textOf(table) +
                  ", and logs are only read; with --write the log is saved, with --write --dry-run "
                  "it is not");
}

// Each name has rows of its own while they are changed.
int Rules::use(const std::string& table, bool isChanged) {
    if (std::find(twins_.begin(), twins_.end(), table) == twins_.end()) return SQLITE_OK;
    used_.insert(table);
    changesTwin_ = changesTwin_ || isChanged;
    if (used_.size() < 2 || !changesTwin_) return SQLITE_OK;
    return refuse("it changes a log that it calls both " + twins_[0] + " and " + twins_[1] +
                  "; call it by one of its names");
}

int Rules::decide(int action, const char* a, const char* b, const char* database) {
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_RECURSIVE:
        case SQLITE_CREATE_TEMP_TABLE:
        case SQLITE_CREATE_TEMP_INDEX:
        case SQLITE_CREATE_TEMP_VIEW:
        case SQLITE_DROP_TEMP_TABLE:
        case SQLITE_DROP_TEMP_INDEX:
        case SQLITE_DROP_TEMP_VIEW:
            return SQLITE_OK;
        case SQLITE_READ:
            return use(textOf(a), false);
        case SQLITE_FUNCTION:
            return textOf(b) == "load_extension" ? refuse("it loads an extension") : SQLITE_OK;
        case SQLITE_PRAGMA:
            return isHarmlessPragma(textOf(a)) ? SQLITE_OK
                                               : refuse("it sets or asks PRAGMA " + textOf(a));
        case SQLITE_INSERT:
        case SQLITE_UPDATE:
        case SQLITE_DELETE:
            return change(a, database);
        case SQLITE_ATTACH:
        case SQLITE_DETACH:
            return refuse("it opens another database; name all logs on the command line");
        case SQLITE_TRANSACTION:
        case SQLITE_SAVEPOINT:
            return refuse("all statements are one transaction, which ends with the last one");
        default:
            return refuse("it makes or changes what is no temporary table; CREATE TEMP TABLE does");
    }
}

}  // namespace vek::sql
