#include "tools/vek/sql/engine.h"

#include <string_view>

#include "bindings/sqlite/extension.h"
#include "bindings/sqlite/log_table.h"
#include "formats/face/inside.h"
#include "formats/log/column_names.h"
#include "formats/reading/table_builder.h"
#include "formats/text/text_lines.h"
#include "tools/vek/sql/rules.h"

namespace vek::sql {

namespace {

using formats::Failure;
using formats::TableBuilder;

// A log that the program has read: one for all that is asked of it, and held already where it is
// to be changed.
class GivenLog {
public:
    GivenLog(Log log, const Wishes& wishes)
        : log_(std::move(log)), path_(log_.name()), wishes_(wishes) {}

    const Log& log() const { return log_; }
    const std::string& path() const { return path_; }
    const Wishes& wishes() const { return wishes_; }
    bool isPrepared() const { return isPrepared_; }

    void prepare(const Log& log, const std::vector<unsigned>& rows) {
        try {
            wishes_.prepare(LogInside::of(log).log, rows);
        } catch (const Failure& failure) {
            throw Refusal(failure.kind == formats::unwritable ? SQLITE_IOERR : SQLITE_ERROR,
                          failure.text);
        }
        isPrepared_ = true;
    }

private:
    Log log_;
    std::string path_;
    const Wishes& wishes_;
    bool isPrepared_ = false;
};

class GivenSource : public LogSource {
public:
    explicit GivenSource(GivenLog& given) : given_(given) {}

    const std::string& path() const override { return given_.path(); }
    const std::string& rate() const override { return given_.wishes().rate; }
    FileLook stamp() const override { return {}; }
    Log read() override { return given_.log(); }
    Log readToChange() override { return given_.log(); }
    // These have one transaction, and no other database that could stop it: all of them are saved
    // behind it.
    void prepare(const Log& log, std::vector<unsigned> rows) override { given_.prepare(log, rows); }
    void requireReady() const override {}
    void commit() override {}
    void giveUp() noexcept override {}

private:
    GivenLog& given_;
};

using GivenLogs = std::vector<std::unique_ptr<GivenLog>>;

std::unique_ptr<LogSource> sourceOf(void* context, const std::vector<std::string_view>& words) {
    const GivenLogs& given = *static_cast<GivenLogs*>(context);
    return std::make_unique<GivenSource>(*given.at(std::stoul(std::string(words.at(0)))));
}

struct Closing {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Connection = std::unique_ptr<sqlite3, Closing>;
using Statement = std::unique_ptr<sqlite3_stmt, Closing>;

std::string shownStatement(std::string_view text) {
    return formats::inQuotes(formats::trimmed(text.substr(0, 200)));
}

// Bounds for statements of strangers; what they keep is bounded by memory.
constexpr struct {
    int what;
    int most;
} limits[] = {{SQLITE_LIMIT_LENGTH, 256 << 20}, {SQLITE_LIMIT_SQL_LENGTH, 1 << 20},
              {SQLITE_LIMIT_EXPR_DEPTH, 500},   {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 10000},
              {SQLITE_LIMIT_TRIGGER_DEPTH, 10}, {SQLITE_LIMIT_ATTACHED, 0},
              {SQLITE_LIMIT_WORKER_THREADS, 0}};

class Session {
public:
    Session(std::vector<NamedLog> logs, const Wishes& wishes);
    Answer run(std::string_view statements);

private:
    void open();
    void makeTable(std::size_t log, const std::string& name);
    void execute(const std::string& statement);
    Statement prepare(std::string_view& rest);
    void step(sqlite3_stmt* statement);
    void takeRows(sqlite3_stmt* statement);
    std::string_view cell(sqlite3_stmt* statement, int column, std::string& room);
    [[noreturn]] void refuse(std::string_view statement, Reason::Kind kind);
    Reason::Kind kindOfError() const;

    const Wishes& wishes_;
    GivenLogs given_;
    TableModule module_;
    Rules rules_;
    Connection db_;
    Answer answer_;
    std::size_t bytes_ = 0;
};

Session::Session(std::vector<NamedLog> logs, const Wishes& wishes)
    : wishes_(wishes), module_{sourceOf, &given_}, rules_(wishes.mayWrite) {
    open();
    for (NamedLog& named : logs) {
        auto inside = std::make_shared<LogInside>();
        inside->log = std::move(named.log);
        given_.push_back(std::make_unique<GivenLog>(LogInside::logOf(std::move(inside)), wishes));
        for (const std::string& name : named.names) makeTable(given_.size() - 1, name);
        if (named.names.size() == 2) rules_.twins(named.names[0], named.names[1]);
    }
    rules_.holdFor(db_.get());
    sqlite3_db_config(db_.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
}

void Session::open() {
    sqlite3* db = nullptr;
    const int opened = sqlite3_open_v2(":memory:", &db, SQLITE_OPEN_READWRITE, nullptr);
    db_.reset(db);
    if (opened != SQLITE_OK || addWords(db) != SQLITE_OK ||
        addTableModule(db, "vek_given", &module_) != SQLITE_OK) {
        throw std::bad_alloc();
    }
    for (const auto& limit : limits) sqlite3_limit(db, limit.what, limit.most);
}

void Session::makeTable(std::size_t log, const std::string& name) {
    execute("CREATE VIRTUAL TABLE \"" + name + "\" USING vek_given(" + std::to_string(log) + ")");
}

void Session::execute(const std::string& statement) {
    if (sqlite3_exec(db_.get(), statement.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return;
    refuse({}, kindOfError());
}

Reason::Kind Session::kindOfError() const {
    const int code = sqlite3_errcode(db_.get());
    if (code == SQLITE_NOMEM) throw std::bad_alloc();
    return (code & 0xFF) == SQLITE_IOERR ? formats::unwritable : formats::wrongUsage;
}

// What a log says names its file; what SQLite says does not tell where it was found.
void Session::refuse(std::string_view statement, Reason::Kind kind) {
    std::string text = rules_.reason().empty() ? sqlite3_errmsg(db_.get()) : rules_.reason();
    if (statement.empty() || kind == formats::unwritable) throw Failure{kind, text};
    throw Failure{kind, formats::concat("sql: ", shownStatement(statement), ": ", text)};
}

// Nothing for what is left behind the last statement.
Statement Session::prepare(std::string_view& rest) {
    sqlite3_stmt* made = nullptr;
    const char* tail = nullptr;
    rules_.forget();
    const int result =
        sqlite3_prepare_v3(db_.get(), rest.data(), static_cast<int>(rest.size()), 0, &made, &tail);
    Statement statement(made);
    if (result != SQLITE_OK) refuse(rest, kindOfError());
    rest.remove_prefix(static_cast<std::size_t>(tail - rest.data()));
    return statement;
}

std::string_view Session::cell(sqlite3_stmt* statement, int column, std::string& room) {
    if (sqlite3_column_type(statement, column) == SQLITE_BLOB) {
        constexpr char digits[] = "0123456789ABCDEF";
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
        const int size = sqlite3_column_bytes(statement, column);
        room = "X'";
        for (int i = 0; i < size; ++i) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            (room += digits[byte >> 4]) += digits[byte & 15];
        }
        return room += '\'';
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    if (text == nullptr && sqlite3_column_type(statement, column) != SQLITE_NULL) {
        throw std::bad_alloc();
    }
    const int size = sqlite3_column_bytes(statement, column);
    return text == nullptr ? std::string_view()
                           : std::string_view(text, static_cast<std::size_t>(size));
}

std::vector<std::string> namesOf(sqlite3_stmt* statement) {
    std::vector<std::string> names;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        const char* name = sqlite3_column_name(statement, i);
        if (name == nullptr) throw std::bad_alloc();
        names.emplace_back(name);
    }
    return names;
}

void Session::takeRows(sqlite3_stmt* statement) {
    if (answer_.rows.table) {
        throw Failure{formats::wrongUsage,
                      "sql: found a second statement that gives rows, expected one; UNION ALL "
                      "joins two"};
    }
    formats::Log& log = answer_.rows;
    log.name = log.path = "answer";
    log.format = Format::csv;
    TableBuilder builder(log, namesOf(statement));
    const auto count = static_cast<std::size_t>(sqlite3_column_count(statement));
    std::vector<std::string_view> cells(count);
    std::vector<std::string> rooms(count);
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
        bytes_ += count * sizeof(void*);
        for (std::size_t i = 0; i < count; ++i) {
            cells[i] = cell(statement, static_cast<int>(i), rooms[i]);
            bytes_ += cells[i].size();
        }
        if (bytes_ > wishes_.mostBytes) {
            throw Failure{formats::unwritable, "sql: the answer is larger than " +
                                                   std::to_string(wishes_.mostBytes) +
                                                   " bytes; ask for less, or raise --max-output"};
        }
        builder.addRow(0, cells);
    }
    if (result != SQLITE_DONE) refuse(sqlite3_sql(statement), kindOfError());
    builder.finish();
    formats::keepRepeatedNames(log);
}

void Session::step(sqlite3_stmt* statement) {
    if (sqlite3_column_count(statement) > 0) return takeRows(statement);
    if (sqlite3_step(statement) != SQLITE_DONE) refuse(sqlite3_sql(statement), kindOfError());
}

Answer Session::run(std::string_view statements) {
    sqlite3_set_authorizer(db_.get(), nullptr, nullptr);
    execute("BEGIN");
    rules_.holdFor(db_.get());
    bool isAsked = false;
    while (!statements.empty()) {
        const Statement statement = prepare(statements);
        if (!statement) continue;  // a comment
        isAsked = true;
        step(statement.get());
    }
    if (!isAsked) {
        throw Failure{formats::wrongUsage, "sql: nothing is asked, expected SQL as the last word"};
    }
    rules_.forget();
    sqlite3_set_authorizer(db_.get(), nullptr, nullptr);
    answer_.changed = static_cast<std::size_t>(sqlite3_total_changes64(db_.get()));
    execute("COMMIT");
    if (answer_.changed > 0) wishes_.commit();
    for (const auto& given : given_) {
        if (given->isPrepared()) answer_.changedLogs.push_back(given->path());
    }
    return std::move(answer_);
}

}  // namespace

Answer run(std::vector<NamedLog> logs, const std::string& statements, const Wishes& wishes) {
    return Session(std::move(logs), wishes).run(statements);
}

}  // namespace vek::sql
