// SQLite in memory as a participant of bench/compare/run, through its C interface, every column
// as text. Reads the log as CSV. Ends with 3 for work that it does not do.

#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <string_view>

#include "measure.h"

using compare::Answer;
using compare::fail;
using compare::Request;
using compare::timed;

namespace {

class Statement {
public:
    Statement(sqlite3* database, const std::string& text) {
        if (sqlite3_prepare_v2(database, text.c_str(), -1, &statement_, nullptr) != SQLITE_OK) {
            fail(sqlite3_errmsg(database));
        }
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(statement_); }

    bool step() { return sqlite3_step(statement_) == SQLITE_ROW; }
    void reset() { sqlite3_reset(statement_); }
    int columns() const { return sqlite3_column_count(statement_); }
    std::string_view name(int column) const { return sqlite3_column_name(statement_, column); }
    std::int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }

    void bind(int place, std::string_view text) {
        sqlite3_bind_text(statement_, place, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
    }
    std::string_view text(int column) const {
        auto value = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
        auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
        return value ? std::string_view(value, length) : std::string_view();
    }

private:
    sqlite3_stmt* statement_ = nullptr;
};

std::string_view takeTo(std::string_view& text, char end) {
    std::size_t length = std::min(text.find(end), text.size());
    std::string_view taken = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return taken;
}

// One value a call; the log's CSV quotes nothing.
int bindLine(Statement& insert, std::string_view line) {
    int place = 0;
    while (!line.empty()) {
        insert.bind(++place, takeTo(line, ','));
    }
    return place;
}

class Database {
public:
    explicit Database(const std::string& path) {
        sqlite3_open(":memory:", &database_);
        run("PRAGMA journal_mode=OFF");
        run("PRAGMA synchronous=OFF");
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            fail("cannot read " + path);
        }
        text_.resize(static_cast<std::size_t>(file.seekg(0, std::ios::end).tellg()));
        file.seekg(0).read(text_.data(), static_cast<std::streamsize>(text_.size()));
        std::string_view rest = text_;
        create(takeTo(rest, '\n'));
        insertAll(rest);
        std::string().swap(text_);
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() { sqlite3_close(database_); }

    operator sqlite3*() const { return database_; }

    void run(const std::string& text) {
        Statement statement(database_, text);
        while (statement.step()) {
        }
    }

    std::uint64_t count(const std::string& table) {
        Statement statement(database_, "SELECT count(*) FROM " + table);
        statement.step();
        return static_cast<std::uint64_t>(statement.number(0));
    }

private:
    void create(std::string_view names) {
        std::string table = "CREATE TABLE log (";
        while (!names.empty()) {
            table += places_.empty() ? "\"" : ",\"";
            table += takeTo(names, ',');
            table += "\" TEXT";
            places_ += places_.empty() ? "?" : ",?";
        }
        run(table + ")");
    }

    void insertAll(std::string_view rest) {
        run("BEGIN");
        Statement insert(database_, "INSERT INTO log VALUES (" + places_ + ")");
        while (!rest.empty()) {
            bindLine(insert, takeTo(rest, '\n'));
            insert.step();
            insert.reset();
        }
        run("COMMIT");
    }

    sqlite3* database_ = nullptr;
    std::string text_;
    std::string places_;
};

void appendQuoted(std::string& out, std::string_view value) {
    out += '"';
    if (value.find('"') == value.npos) {
        out += value;
    } else {
        for (char c : value) {
            out.append(c == '"' ? 2 : 1, c);
        }
    }
    out += '"';
}

template <class Value>
void appendLine(std::string& out, int columns, Value value) {
    for (int i = 0; i < columns; ++i) {
        out += i > 0 ? "," : "";
        appendQuoted(out, value(i));
    }
    out += '\n';
}

std::uint64_t save(Database& database, const std::string& query, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    Statement rows(database, query);
    std::string out;
    std::uint64_t count = 0;
    appendLine(out, rows.columns(), [&](int i) { return rows.name(i); });
    for (; rows.step(); ++count) {
        appendLine(out, rows.columns(), [&](int i) { return rows.text(i); });
        if (out.size() > (1u << 20)) {
            file.write(out.data(), static_cast<std::streamsize>(out.size()));
            out.clear();
        }
    }
    file.write(out.data(), static_cast<std::streamsize>(out.size()));
    return count;
}

void keep(Database& database, const std::string& query, const Request& request) {
    if (!request.result.empty()) {
        save(database, query, request.result);
    }
}

Answer loadWork(const Request& request) {
    Answer answer;
    std::uint64_t before = compare::residentBytes();
    Database* database = nullptr;
    timed(answer, [&] { database = new Database(request.input); });
    answer.resident = compare::residentBytes() - before;
    answer.rows = database->count("log");
    keep(*database, "SELECT * FROM log", request);
    delete database;
    return answer;
}

Answer saveWork(const Request& request) {
    Answer answer;
    Database database(request.input);
    std::string path = request.result.empty() ? request.scratch : request.result;
    timed(answer, [&] { answer.rows = save(database, "SELECT * FROM log", path); });
    return answer;
}

// The answer is the list of the rows that match.
Answer queryWork(const Request& request, const std::string& where) {
    Answer answer;
    Database database(request.input);
    for (unsigned i = 0; i < request.repeat; ++i) {
        std::vector<std::int64_t> found;
        timed(answer, [&] {
            Statement rows(database, "SELECT rowid FROM log WHERE " + where);
            while (rows.step()) {
                found.push_back(rows.number(0));
            }
        });
        answer.rows = found.size();
    }
    keep(database, "SELECT * FROM log WHERE " + where, request);
    return answer;
}

Answer containsWork(const Request& request) {
    return queryWork(request, "Reel LIKE '%A1%' AND Description LIKE '%dolly%'");
}

Answer rangeWork(const Request& request) {
    return queryWork(request, "\"Start time\" <= '02:05:30:00' AND \"End time\" >= '02:05:30:00'");
}

Answer sortWork(const Request& request) {
    Answer answer;
    Database database(request.input);
    timed(answer, [&] {
        database.run("CREATE TABLE sorted AS SELECT * FROM log ORDER BY Scene, \"Start time\"");
    });
    answer.rows = database.count("sorted");
    keep(database, "SELECT * FROM sorted ORDER BY rowid", request);
    return answer;
}

Answer deleteWork(const Request& request) {
    Answer answer;
    Database database(request.input);
    timed(answer, [&] { database.run("DELETE FROM log WHERE rowid % 2 = 0"); });
    answer.rows = database.count("log");
    keep(database, "SELECT * FROM log ORDER BY rowid", request);
    return answer;
}

struct Work {
    std::string_view name;
    Answer (*run)(const Request&);
};

constexpr Work works[] = {
    {"load", loadWork},   {"save", saveWork}, {"contains", containsWork},
    {"range", rangeWork}, {"sort", sortWork}, {"delete", deleteWork},
};

}  // namespace

int main(int count, char** arguments) {
    Request request = compare::request(count, arguments);
    for (const Work& work : works) {
        if (work.name == request.work) {
            compare::print(work.run(request), sqlite3_libversion());
            return 0;
        }
    }
    return 3;
}
