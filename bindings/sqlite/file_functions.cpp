#include "file_functions.h"

#include <array>
#include <memory>

#include "guard.h"
#include "log_image.h"
#include "log_source.h"
#include "log_table.h"

namespace vek::sql {

namespace {

// What may stand between the brackets, in this order: hidden columns behind those that are shown.
constexpr std::array arguments = {"path",  "from",       "encoding", "delimiter",
                                  "sheet", "skip_lines", "no_header"};

struct Kind {
    const char* declaration;
    int shown;  ///< columns in front of the arguments
    bool isByCell;
};
constexpr Kind byRow = {
    "CREATE TABLE x(row INTEGER, line INTEGER, tagged INTEGER, cells TEXT, path TEXT HIDDEN, "
    "\"from\" TEXT HIDDEN, encoding TEXT HIDDEN, delimiter TEXT HIDDEN, sheet TEXT HIDDEN, "
    "skip_lines TEXT HIDDEN, no_header TEXT HIDDEN)",
    4, false};
constexpr Kind byCell = {
    "CREATE TABLE x(row INTEGER, line INTEGER, col INTEGER, name TEXT, value TEXT, path TEXT "
    "HIDDEN, \"from\" TEXT HIDDEN, encoding TEXT HIDDEN, delimiter TEXT HIDDEN, sheet TEXT "
    "HIDDEN, skip_lines TEXT HIDDEN, no_header TEXT HIDDEN)",
    5, true};

void addJsonText(std::string& out, std::string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    out += '"';
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            (out += '\\') += c;
        } else if (byte < ' ') {
            ((out += "\\u00") += digits[byte >> 4]) += digits[byte & 15];
        } else {
            out += c;
        }
    }
    out += '"';
}

// A log that was read for a statement, and what it was read by.
struct FileImage {
    std::vector<std::string> arguments;
    FileLook stamp;
    LogImage image;
    std::vector<std::string> names = {};
    std::vector<std::string> keys = {};  // as JSON has them, with the colon

    FileImage(std::vector<std::string> words, const FileLook& stamp, Log log)
        : arguments(std::move(words)), stamp(stamp), image(std::move(log)) {
        names = TableColumns::namesOf(image.log());
        for (const std::string& name : names) {
            keys.emplace_back(keys.empty() ? "" : ",");
            addJsonText(keys.back(), name);
            keys.back() += ':';
        }
    }

    unsigned columns() const { return static_cast<unsigned>(names.size()); }
};

struct FileTable : sqlite3_vtab {
    explicit FileTable(const Kind& kind) : sqlite3_vtab{}, kind(kind) {}

    std::shared_ptr<FileImage> read(const std::vector<std::string>& words);

    const Kind& kind;
    std::shared_ptr<FileImage> last;  // the next statement may ask for it again
};

std::shared_ptr<FileImage> FileTable::read(const std::vector<std::string>& words) {
    FileWishes wishes;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!words[i].empty()) wishes.take(arguments[i], words[i]);
    }
    FileSource source(std::move(wishes));
    const FileLook stamp = source.stamp();
    if (last && last->arguments == words && last->stamp == stamp) return last;
    last.reset();
    return last = std::make_shared<FileImage>(words, stamp, source.read());
}

struct FileCursor : sqlite3_vtab_cursor {
    explicit FileCursor(FileTable& table) : sqlite3_vtab_cursor{}, table(table) {}

    void filter(int given, int count, sqlite3_value** values);
    void next();
    bool isAtEnd() const { return !file || row >= end; }
    sqlite3_int64 rowid() const;
    void answer(sqlite3_context* context, int number);
    void answerCells(sqlite3_context* context);

    FileTable& table;
    std::shared_ptr<FileImage> file;
    unsigned row = 0;
    unsigned end = 0;
    unsigned column = 0;
    std::string cells;
};

void FileCursor::filter(int given, int count, sqlite3_value** values) {
    file.reset();
    std::vector<std::string> words(arguments.size());
    for (int i = 0, at = 0; i < static_cast<int>(words.size()) && at < count; ++i) {
        if ((given & (1 << i)) == 0) continue;
        if (i == 0 && sqlite3_value_type(values[at]) == SQLITE_NULL) return;
        words[static_cast<std::size_t>(i)] = textOf(values[at++]);
    }
    if (words[0].empty()) throw Refusal("vek: found no file, expected vek_file('dailies.vek')");
    file = table.read(words);
    row = column = 0;
    end = table.kind.isByCell && file->columns() == 0 ? 0 : file->image.rowCount();
}

void FileCursor::next() {
    if (table.kind.isByCell && ++column < file->columns()) return;
    column = 0;
    ++row;
}

sqlite3_int64 FileCursor::rowid() const {
    const sqlite3_int64 width = table.kind.isByCell ? file->columns() : 1;
    return row * width + column + 1;
}

void FileCursor::answerCells(sqlite3_context* context) {
    cells = "{";
    for (unsigned i = 0; i < file->columns(); ++i) {
        cells += file->keys[i];
        addJsonText(cells, file->image.cell(row, i));
    }
    answerText(context, cells += '}');
    constexpr unsigned json = 'J';  // what JSON functions of SQLite know each other's answers by
    sqlite3_result_subtype(context, json);
}

void FileCursor::answer(sqlite3_context* context, int number) {
    const std::size_t argument = static_cast<std::size_t>(number - table.kind.shown);
    if (number >= table.kind.shown) return answerText(context, file->arguments[argument]);
    if (number == 0) return sqlite3_result_int64(context, sqlite3_int64{row} + 1);
    if (number == 1) {
        return sqlite3_result_int64(context, static_cast<sqlite3_int64>(file->image.lineOf(row)));
    }
    if (!table.kind.isByCell) {
        if (number == 3) return answerCells(context);
        return sqlite3_result_int(context, file->image.isTagged(row) ? 1 : 0);
    }
    if (number == 2) return sqlite3_result_int64(context, sqlite3_int64{column} + 1);
    answerText(context,
               number == 3 ? std::string_view(file->names[column]) : file->image.cell(row, column));
}

FileCursor& cursorOf(sqlite3_vtab_cursor* cursor) {
    return static_cast<FileCursor&>(*cursor);
}

int connect(sqlite3* db, void* kind, int, const char* const*, sqlite3_vtab** table,
            char** message) {
    return guarded(*message, [&] {
        auto made = std::make_unique<FileTable>(*static_cast<const Kind*>(kind));
        const int result = sqlite3_declare_vtab(db, made->kind.declaration);
        if (result != SQLITE_OK) throw Refusal(result, sqlite3_errmsg(db));
        // A schema may come from a stranger: its views and triggers must not reach files.
        sqlite3_vtab_config(db, SQLITE_VTAB_DIRECTONLY);
        *table = made.release();
    });
}

int disconnect(sqlite3_vtab* table) {
    delete static_cast<FileTable*>(table);
    return SQLITE_OK;
}

// Which arguments are given, as bits; where one is only known later another plan is asked for.
int bestIndex(sqlite3_vtab* table, sqlite3_index_info* info) {
    const int shown = static_cast<FileTable*>(table)->kind.shown;
    std::array<int, arguments.size()> places;
    places.fill(-1);
    for (int i = 0; i < info->nConstraint; ++i) {
        const auto& constraint = info->aConstraint[i];
        const int argument = constraint.iColumn - shown;
        if (argument < 0 || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
        if (constraint.usable == 0) return SQLITE_CONSTRAINT;
        places[static_cast<std::size_t>(argument)] = i;
    }
    int taken = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i] < 0) continue;
        info->aConstraintUsage[places[i]] = {++taken, 1};
        info->idxNum |= 1 << i;
    }
    info->estimatedCost = 100000;
    info->estimatedRows = 1000;
    return SQLITE_OK;
}

int open(sqlite3_vtab* table, sqlite3_vtab_cursor** cursor) {
    return guarded(table->zErrMsg,
                   [&] { *cursor = new FileCursor(*static_cast<FileTable*>(table)); });
}

int close(sqlite3_vtab_cursor* cursor) {
    delete &cursorOf(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* cursor, int given, const char*, int count, sqlite3_value** values) {
    return guarded(cursor->pVtab->zErrMsg, [&] { cursorOf(cursor).filter(given, count, values); });
}

int next(sqlite3_vtab_cursor* cursor) {
    cursorOf(cursor).next();
    return SQLITE_OK;
}

int isAtEnd(sqlite3_vtab_cursor* cursor) {
    return cursorOf(cursor).isAtEnd() ? 1 : 0;
}

int column(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int number) {
    answering(context, [&] { cursorOf(cursor).answer(context, number); });
    return SQLITE_OK;
}

int rowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* row) {
    *row = cursorOf(cursor).rowid();
    return SQLITE_OK;
}

// Without a way to create one it is a function alone.
const sqlite3_module& functions() {
    static const sqlite3_module all = [] {
        sqlite3_module module = {};
        module.xConnect = connect;
        module.xBestIndex = bestIndex;
        module.xDisconnect = disconnect;
        module.xOpen = open;
        module.xClose = close;
        module.xFilter = filter;
        module.xNext = next;
        module.xEof = isAtEnd;
        module.xColumn = column;
        module.xRowid = rowid;
        return module;
    }();
    return all;
}

int addFunction(sqlite3* db, const char* name, const Kind& kind) {
    return sqlite3_create_module_v2(db, name, &functions(), const_cast<Kind*>(&kind), nullptr);
}

}  // namespace

int addFileFunctions(sqlite3* db) {
    const int result = addFunction(db, "vek_file", byRow);
    return result != SQLITE_OK ? result : addFunction(db, "vek_cells", byCell);
}

}  // namespace vek::sql
