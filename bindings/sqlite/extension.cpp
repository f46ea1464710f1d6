#include "extension.h"

#include "collations.h"
#include "file_functions.h"
#include "guard.h"
#include "log_table.h"
#include "timecode_functions.h"

#ifndef SQLITE_CORE
SQLITE_EXTENSION_INIT1
#endif

namespace vek::sql {

namespace {

std::unique_ptr<LogSource> fileOf(void*, const std::vector<std::string_view>& arguments) {
    return std::make_unique<FileSource>(wishesOf(arguments));
}

void endModule(void* module) {
    delete static_cast<TableModule*>(module);
}

// Functions that the planning asks for came with this one.
constexpr int oldest = 3038000;

}  // namespace

int addWords(sqlite3* db) {
    const int result = addCollations(db);
    return result != SQLITE_OK ? result : addTimecodeFunctions(db);
}

int addAll(sqlite3* db) {
    int result = addWords(db);
    if (result == SQLITE_OK) result = addFileFunctions(db);
    if (result != SQLITE_OK) return result;
    auto* const module = new (std::nothrow) TableModule{fileOf};
    return module == nullptr ? SQLITE_NOMEM : addTableModule(db, "vek", module, endModule);
}

}  // namespace vek::sql

extern "C" int sqlite3_vek_init(sqlite3* db, char** message, const sqlite3_api_routines* api) {
#ifndef SQLITE_CORE
    SQLITE_EXTENSION_INIT2(api);
#else
    (void)api;
#endif
    if (sqlite3_libversion_number() < vek::sql::oldest) {
        if (message != nullptr) {
            *message = sqlite3_mprintf("vek: found SQLite %s, expected 3.38 or a newer one",
                                       sqlite3_libversion());
        }
        return SQLITE_ERROR;
    }
    return vek::sql::addAll(db);
}
