#include <gmock/gmock.h>

#include <filesystem>

#include "sqlite/session.h"
#include "testing/temp_dir.h"

using testing::HasSubstr;
using testing_support::TempDir;

namespace {

constexpr const char* day = "Scene,Take\n12,1\n7,10\n";

class Transactions : public testing::Test {
protected:
    Transactions() {
        folder_.write("day.csv", day);
        folder_.write("b.csv", "A\n1\n");
    }

    std::string quoted(const std::string& name) const {
        return Session::inQuotes(folder_.file(name).string());
    }
    void makeLogs(const Session& session) const {
        ASSERT_EQ(session.table("log", quoted("day.csv") + ", backup=yes"), "");
        ASSERT_EQ(session.table("b", quoted("b.csv") + ", backup=yes"), "");
    }

    TempDir folder_;
};

using Names = std::vector<std::string>;

}  // namespace

TEST_F(Transactions, KeepNoOldFileThatIsNotReplaced) {
    folder_.write("day.csv.bak", "older");
    Session session;
    makeLogs(session);
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x'; UPDATE b SET A = 'x'; ROLLBACK"), "");
    ASSERT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x'; UPDATE b SET A = 'x'"), "");
    folder_.write("b.csv", "A\ntheirs\n");
    EXPECT_THAT(session.ask("COMMIT"), HasSubstr("b.csv: was changed by another program"));
    EXPECT_EQ(folder_.read("day.csv.bak"), "older");
    EXPECT_EQ(folder_.names(), (Names{"b.csv", "day.csv", "day.csv.bak"}));
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x'; UPDATE b SET A = 'x'; COMMIT"), "");
    EXPECT_EQ(folder_.read("day.csv.bak"), day);
    EXPECT_EQ(folder_.read("b.csv.bak"), "A\ntheirs\n");
}

TEST_F(Transactions, KeepNoOldFileBehindACommitThatFoundTheDatabaseInUse) {
    const std::string base = folder_.file("base.db").string();
    Session session(base);
    makeLogs(session);
    ASSERT_EQ(session.ask("CREATE TABLE own(a); INSERT INTO own VALUES (1), (2)"), "");
    {
        const Session other(base);
        Steps steps(other, "SELECT a FROM own");
        ASSERT_EQ(steps.next(), SQLITE_ROW);
        EXPECT_EQ(session.ask("BEGIN; INSERT INTO own VALUES (3); UPDATE log SET Take = 'x'"), "");
        EXPECT_THAT(session.ask("COMMIT"), HasSubstr("database is locked"));
        EXPECT_FALSE(std::filesystem::exists(folder_.file("day.csv.bak")));
    }
    EXPECT_EQ(session.ask("COMMIT"), "");
    EXPECT_EQ(folder_.read("day.csv.bak"), day);
}

TEST_F(Transactions, KeepNoOldFileInThePlaceOfAnotherLog) {
    folder_.write("day.csv.bak", "A\nanother log\n");
    Session session;
    makeLogs(session);
    ASSERT_EQ(session.table("older", quoted("day.csv.bak") + ", from=csv"), "");
    EXPECT_THAT(session.ask("UPDATE log SET Take = 'x'"),
                HasSubstr("day.csv.bak: is a log that is a table, too"));
    EXPECT_EQ(folder_.read("day.csv"), day);
    EXPECT_EQ(session.ask("SELECT A FROM older; DROP TABLE older; UPDATE log SET Take = 'x'"),
              "another log\n");
    EXPECT_EQ(folder_.read("day.csv.bak"), day);
}

TEST_F(Transactions, AreNotLostWithATableThatIsDropped) {
    Session session;
    makeLogs(session);
    ASSERT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x'"), "");
    EXPECT_THAT(session.ask("DROP TABLE log"), HasSubstr("error: "));
    EXPECT_EQ(session.ask("SELECT Take FROM log; COMMIT"), "x\nx\n");
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take\n12,x\n7,x\n");
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'y'; ROLLBACK; DROP TABLE log"), "");
    EXPECT_EQ(session.ask("BEGIN; SAVEPOINT s; UPDATE b SET A = 'y'; ROLLBACK TO s; DROP TABLE b; "
                          "COMMIT"),
              "");
    EXPECT_EQ(folder_.read("b.csv"), "A\n1\n");
}

TEST_F(Transactions, GoOnInATableThatGetsAnotherName) {
    for (const std::string end : {"ROLLBACK", "COMMIT"}) {
        Session session;
        makeLogs(session);
        EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x' WHERE Scene = '7'; "
                              "ALTER TABLE log RENAME TO renamed; SELECT Take FROM renamed"),
                  "1\nx\n");
        EXPECT_EQ(session.ask("UPDATE renamed SET Scene = 'y'; SAVEPOINT s; DELETE FROM renamed; "
                              "ROLLBACK TO s; SELECT * FROM renamed; " +
                              end),
                  "y|1\ny|x\n");
        const std::string name = end == "COMMIT" ? "renamed" : "log";
        EXPECT_EQ(session.ask("SELECT * FROM " + name),
                  end == "COMMIT" ? "y|1\ny|x\n" : "12|1\n7|10\n");
    }
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take\ny,1\ny,x\n");
    EXPECT_EQ(folder_.read("day.csv.bak"), day);
}

// SQLite forgets all tables where it takes back what made or changed one, and connects to them
// anew.
TEST_F(Transactions, GoOnWhereSqliteForgetsItsTables) {
    Session session;
    makeLogs(session);
    EXPECT_EQ(
        session.ask("SAVEPOINT a; UPDATE log SET Take = 'x'; SAVEPOINT b; CREATE TABLE own(a); "
                    "UPDATE log SET Scene = 'gone'; ROLLBACK TO b; SELECT * FROM log"),
        "12|x\n7|x\n");
    EXPECT_EQ(session.ask("INSERT INTO log VALUES ('n', 'n'); SAVEPOINT c; DELETE FROM log; "
                          "CREATE TABLE own(a); ROLLBACK TO c; SELECT count(*) FROM log; "
                          "RELEASE c; ROLLBACK TO b; SELECT * FROM log; RELEASE a"),
              "3\n12|x\n7|x\n");
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take\n12,x\n7,x\n");
    EXPECT_EQ(session.ask("UPDATE log SET Take = 'y' WHERE Scene = '7'; SELECT Take FROM log"),
              "x\ny\n");
}

TEST_F(Transactions, EndAsAWholeWhereSqliteForgotItsTables) {
    Session session;
    makeLogs(session);
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x'; CREATE TABLE own(a); "
                          "ALTER TABLE own ADD COLUMN b; UPDATE log SET Scene = 'y'; ROLLBACK; "
                          "SELECT * FROM log"),
              "12|1\n7|10\n");
    EXPECT_EQ(folder_.read("day.csv"), day);
}
