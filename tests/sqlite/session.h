#pragma once

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <string>

extern "C" int sqlite3_vek_init(sqlite3*, char**, const struct sqlite3_api_routines*);

/// A connection that knows logs, of a database in memory or in a file.
class Session {
public:
    explicit Session(const std::string& database = ":memory:") {
        EXPECT_EQ(sqlite3_open(database.c_str(), &db_), SQLITE_OK);
        EXPECT_EQ(sqlite3_vek_init(db_, nullptr, nullptr), SQLITE_OK);
    }
    ~Session() { EXPECT_EQ(sqlite3_close(db_), SQLITE_OK); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    sqlite3* db() const { return db_; }

    /// The rows, cells with | between them and a line end behind each row; what went wrong behind
    /// the word "error: ".
    std::string ask(const std::string& sql) const {
        std::string out;
        char* message = nullptr;
        const int result = sqlite3_exec(db_, sql.c_str(), addRow, &out, &message);
        if (result != SQLITE_OK) out += std::string("error: ") + (message ? message : "?");
        sqlite3_free(message);
        return out;
    }

    std::string table(const std::string& name, const std::string& arguments) const {
        return ask("CREATE VIRTUAL TABLE " + name + " USING vek(" + arguments + ")");
    }

    static std::string inQuotes(const std::string& text) {
        std::string out = "'";
        for (char c : text) out += c == '\'' ? "''" : std::string(1, c);
        return out + "'";
    }

private:
    static int addRow(void* out, int count, char** cells, char**) {
        std::string& text = *static_cast<std::string*>(out);
        for (int i = 0; i < count; ++i) {
            text += (i == 0 ? "" : "|") + std::string(cells[i] == nullptr ? "NULL" : cells[i]);
        }
        text += '\n';
        return 0;
    }

    sqlite3* db_ = nullptr;
};

/// A statement that is gone through step by step.
class Steps {
public:
    Steps(const Session& session, const std::string& sql) {
        EXPECT_EQ(sqlite3_prepare_v2(session.db(), sql.c_str(), -1, &statement_, nullptr),
                  SQLITE_OK)
            << sqlite3_errmsg(session.db());
    }
    ~Steps() { sqlite3_finalize(statement_); }
    Steps(const Steps&) = delete;
    Steps& operator=(const Steps&) = delete;

    int next() { return sqlite3_step(statement_); }
    std::string text(int column = 0) {
        const auto* text = sqlite3_column_text(statement_, column);
        return text == nullptr ? "NULL" : reinterpret_cast<const char*>(text);
    }

private:
    sqlite3_stmt* statement_ = nullptr;
};
