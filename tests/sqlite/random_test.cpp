// Random transactions over logs beside tables of SQLite's own with the same rows: what one shows
// the other has to show at each step, and the files are what was committed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "sqlite/session.h"
#include "testing/temp_dir.h"

namespace {

unsigned seed() {
    const char* const said = std::getenv("VEKDB_TEST_SEED");
    return said != nullptr ? static_cast<unsigned>(std::strtoul(said, nullptr, 10))
                           : std::random_device()();
}

constexpr int logs = 2;

class RandomTransactions {
public:
    explicit RandomTransactions(unsigned seed) : chance_(seed) {
        for (int i = 0; i < logs; ++i) {
            folder_.write(fileOf(i), "A,B\n1,x\n2,y\n3,\"a \"\"b\"\"\"\n4,\n");
            const std::string path = folder_.file(fileOf(i)).string();
            does(session_.table(nameOf(i), Session::inQuotes(path) + ", backup=yes"));
            does(session_.ask("CREATE TABLE own" + nameOf(i) +
                              " AS SELECT rowid AS id, A, B FROM " + nameOf(i)));
            committed_[i] = shown("own" + nameOf(i));
        }
    }

    void step() {
        switch (number(12)) {
            case 0:
                return both("INSERT INTO # (A, B) VALUES ('" + word() + "', '" + word() + "')");
            case 1:
                return both("INSERT INTO # (A, B) SELECT B, A || 'c' FROM # WHERE " + condition());
            case 2:
                return both("DELETE FROM # WHERE " + condition());
            case 3:
            case 4:
                return both("UPDATE # SET B = '" + word() + "' WHERE " + condition());
            case 5:
                return both("UPDATE # SET A = B, B = A || 'd' WHERE " + condition());
            case 6:
                return refused();
            case 7:
                return transact();
            case 8:
                return mark();
            case 9:
                return goBack();
            case 10:
                return release();
            default:
                return changeSchema();
        }
    }

    void compare() {
        for (int i = 0; i < logs; ++i) {
            EXPECT_EQ(shown(nameOf(i)), shown("own" + nameOf(i))) << told_;
            if (!isOpen()) committed_[i] = shown("own" + nameOf(i));
            EXPECT_EQ(onDisk(i), committed_[i]) << told_;
        }
    }

private:
    static std::string nameOf(int log) { return "log" + std::to_string(log); }
    static std::string fileOf(int log) { return nameOf(log) + ".csv"; }
    unsigned number(unsigned below) { return static_cast<unsigned>(chance_() % below); }
    bool isOpen() const { return sqlite3_get_autocommit(session_.db()) == 0; }

    std::string word() {
        static constexpr const char* words[] = {"", "1", "x", "a longer text than it was", "o;k"};
        return words[number(5)];
    }
    std::string condition() {
        static constexpr const char* conditions[] = {"A = '1'", "B > 'm'",           "A < B",
                                                     "B = ''",  "length(A) % 2 = 1", "1"};
        return conditions[number(12) % 6];
    }

    // Cells alone: the rows of a log are counted anew behind a COMMIT.
    std::string shown(const std::string& table) const {
        return session_.ask("SELECT A, B FROM " + table + " ORDER BY rowid");
    }
    std::string onDisk(int log) const {
        const std::string path = Session::inQuotes(folder_.file(fileOf(log)).string());
        return session_.ask("SELECT cells ->> 'A', cells ->> 'B' FROM vek_file(" + path + ")");
    }

    void does(const std::string& answer) { EXPECT_EQ(answer, "") << told_; }
    void tell(const std::string& statement) { told_ += statement + ";\n"; }
    void run(const std::string& statement) {
        tell(statement);
        does(session_.ask(statement));
    }

    void both(const std::string& statement) {
        const std::string name = nameOf(static_cast<int>(number(logs)));
        const bool isOne = !isOpen();
        if (isOne) run("BEGIN");
        for (const std::string& table : {name, "own" + name}) {
            std::string text = statement;
            for (std::size_t at = 0; (at = text.find('#')) != text.npos;)
                text.replace(at, 1, table);
            run(text);
        }
        if (isOne) run("COMMIT");
        if (session_.ask("SELECT count(*) > 300 FROM " + name) == "1\n" && isOpen())
            end("ROLLBACK");
    }

    // A statement that fails on its way leaves nothing of itself.
    void refused() {
        const std::string statement = "UPDATE " + nameOf(0) +
                                      " SET A = 'lost', B = CASE WHEN A < '3' THEN 'lost' ELSE "
                                      "x'00' END WHERE " +
                                      condition();
        const std::string before = shown(nameOf(0));
        tell(statement);
        if (session_.ask(statement).empty()) {
            if (shown(nameOf(0)) == before) return;
            run("UPDATE own" + nameOf(0) + statement.substr(statement.find(" SET")));
        } else {
            EXPECT_EQ(shown(nameOf(0)), before) << told_;
        }
    }

    void end(const std::string& how) {
        run(how);
        marks_ = 0;
    }
    void transact() {
        if (!isOpen()) return run("BEGIN");
        end(number(2) == 0 ? "ROLLBACK" : "COMMIT");
    }
    void mark() {
        if (marks_ < 5) run("SAVEPOINT s" + std::to_string(marks_++));
    }
    void goBack() {
        if (marks_ == 0) return;
        const unsigned to = number(marks_);
        run("ROLLBACK TO s" + std::to_string(to));
        marks_ = to + 1;
    }
    void release() {
        if (marks_ == 0) return;
        marks_ = number(marks_);
        run("RELEASE s" + std::to_string(marks_));
    }

    // SQLite forgets what it knew of tables by some of these.
    void changeSchema() {
        const std::string column = "c" + std::to_string(++columns_);
        if (number(2) == 0) return run("ALTER TABLE ownlog1 ADD COLUMN " + column);
        run("CREATE TABLE " + column + "(a); DROP TABLE " + column);
    }

    std::mt19937 chance_;
    testing_support::TempDir folder_;
    Session session_;
    std::string committed_[logs];
    std::string told_;
    unsigned marks_ = 0;
    unsigned columns_ = 0;
};

}  // namespace

TEST(RandomSqlTransactions, ShowAndSaveWhatTablesOfSqliteDo) {
    const unsigned first = seed();
    for (unsigned round = 0; round < 12; ++round) {
        SCOPED_TRACE("VEKDB_TEST_SEED=" + std::to_string(first + round));
        RandomTransactions random(first + round);
        for (int i = 0; i < 60 && !testing::Test::HasFailure(); ++i) {
            random.step();
            random.compare();
        }
        if (testing::Test::HasFailure()) return;
    }
}
