#pragma once

#include <set>
#include <string>
#include <vector>

#include <sqlite3.h>

namespace vek::sql {

/// What statements may do: ask the logs, change them where that was wanted, and keep what they
/// need in tables of their own that go when they are done. No file is reached by them but the logs.
class Rules {
public:
    explicit Rules(bool mayWrite) : mayWrite_(mayWrite) {}

    /// Two names of one log.
    void twins(const std::string& a, const std::string& b) { twins_ = {a, b}; }
    /// From here on they hold for the connection, which must not outlive them.
    void holdFor(sqlite3* db);
    /// Why a statement was refused last, "" where it was not.
    const std::string& reason() const { return reason_; }
    void forget() { reason_.clear(); }

private:
    static int asked(void* rules, int action, const char* a, const char* b, const char* database,
                     const char* inner);
    int decide(int action, const char* a, const char* b, const char* database);
    int change(const char* table, const char* database);
    int refuse(const std::string& reason);
    int use(const std::string& table, bool isChanged);

    bool mayWrite_;
    std::vector<std::string> twins_;
    std::set<std::string> used_;
    bool changesTwin_ = false;
    std::string reason_;
};

}  // namespace vek::sql
