#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <vekdb/table.h>

// DuckDB's library, loaded from the path in VEKDB_DUCKDB when a test begins; nothing is linked.

/// What a question answered: rows of texts, as DuckDB writes its values.
using Answer = std::vector<std::vector<std::string>>;

/// A database in memory. What fails is thrown as a std::runtime_error with DuckDB's words.
class DuckDb {
public:
    DuckDb();
    ~DuckDb();
    DuckDb(const DuckDb&) = delete;
    DuckDb& operator=(const DuckDb&) = delete;

    Answer ask(const std::string& statement);
    /// The only value of an answer.
    std::string one(const std::string& statement);
    /// Scans a stream into a table of that name.
    void take(const std::string& name, struct ArrowArrayStream stream);
    /// The answer as a table, by way of Arrow; null and why where it does not become one.
    std::unique_ptr<vekdb> tableOf(const std::string& statement, std::string& why);

private:
    void* database_ = nullptr;
    void* connection_ = nullptr;
};
