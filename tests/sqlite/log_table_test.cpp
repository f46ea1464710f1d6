#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <thread>

#include "sqlite/session.h"
#include "testing/temp_dir.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using testing_support::TempDir;

namespace {

constexpr const char* day = "Scene,Take,Notes\n12,1,good\n7,10,\n12A,2,\"a \"\"b\"\"\"\n";

class LogTables : public testing::Test {
protected:
    LogTables() { folder_.write("day.csv", day); }

    std::string file(const std::string& name = "day.csv") const {
        return folder_.file(name).string();
    }
    std::string quoted(const std::string& name = "day.csv") const {
        return Session::inQuotes(file(name));
    }
    void makeLog(const Session& session) const { ASSERT_EQ(session.table("log", quoted()), ""); }
    static void makeOwnTable(const Session& session) {
        ASSERT_EQ(session.ask("CREATE TABLE own(a); INSERT INTO own VALUES (1), (2)"), "");
    }

    TempDir folder_;
};

// Another connection to a database, in the middle of its table own: no COMMIT of others goes
// through while this stands.
class ReaderOfOwn {
public:
    explicit ReaderOfOwn(const std::string& database)
        : session_(database), steps_(session_, "SELECT a FROM own") {
        EXPECT_EQ(steps_.next(), SQLITE_ROW);
    }

private:
    Session session_;
    Steps steps_;
};

}  // namespace

TEST_F(LogTables, HaveTheCellsAsTextsAndKnowTheirRows) {
    Session session;
    makeLog(session);
    EXPECT_EQ(session.ask("SELECT * FROM log"), "12|1|good\n7|10|\n12A|2|a \"b\"\n");
    EXPECT_EQ(session.ask("SELECT rowid, _row, _line, _tagged, _fps, typeof(Take) FROM log "
                          "WHERE Scene = 7"),
              "2|2|3|0|NULL|text\n");
}

TEST_F(LogTables, TakeNamesThatDifferForColumnsThatDoNot) {
    folder_.write("odd.csv", "Reel,reel,,,_row,Reel#2,\"a\"\"b\"\n1,2,3,4,5,6,7\n");
    Session session;
    ASSERT_EQ(session.table("log", quoted("odd.csv")), "");
    EXPECT_EQ(session.ask("SELECT name FROM pragma_table_xinfo('log')"),
              "Reel\n[reel]#2\n[]\n[]#2\n_row\nReel#2\na\"b\n__row\n_line\n_tagged\n_fps\n");
    EXPECT_EQ(session.ask("SELECT \"[reel]#2\", [reel#2], _row, __row FROM log"), "2|6|5|1\n");
}

TEST_F(LogTables, TakeWordsForHowTheyAreRead) {
    folder_.write("a.txt", "x\nA;B\n1,5;\xe4\n");
    Session session;
    EXPECT_EQ(session.table("a", quoted("a.txt") + ", from = csv, delimiter=';', SKIP_LINES=1, "
                                                   "encoding='windows-1252', fps=25"),
              "");
    EXPECT_EQ(session.ask("SELECT A, B, _fps FROM a"), "1,5|\xc3\xa4|25\n");
    EXPECT_THAT(session.table("b", quoted() + ", delimitr=';'"),
                HasSubstr("there is no option \"delimitr\", expected from, encoding"));
    EXPECT_THAT(session.table("b", quoted() + ", from=html"), HasSubstr("from is \"html\""));
    EXPECT_THAT(session.table("b", quoted() + ", fps=x"), HasSubstr("fps is \"x\""));
    EXPECT_THAT(session.table("b", quoted() + ", backup=maybe"), HasSubstr("expected yes or no"));
    EXPECT_THAT(session.table("b", quoted() + ", max_bytes=3"), HasSubstr("error: "));
    EXPECT_THAT(session.table("b", quoted() + ", 'second'"), HasSubstr("a second file"));
    EXPECT_THAT(session.table("b", ""), HasSubstr("expected vek('dailies.vek')"));
}

TEST_F(LogTables, OpenFilesWhateverTheyAreCalled) {
    Session session;
    for (const std::string name : {"o'clock.csv", "a b\n.csv", "file:x?mode=memory", "..x.csv",
                                   "\xff\xfe.csv", "semi;colon--.csv", "a=b.csv", "[x].csv"}) {
        folder_.write(name, "A\nyes\n");
        EXPECT_EQ(session.table("t", quoted(name) + ", from=csv"), "") << name;
        EXPECT_EQ(session.ask("SELECT A FROM t; DROP TABLE t"), "yes\n") << name;
        EXPECT_TRUE(std::filesystem::exists(folder_.file(name)));
    }
}

TEST_F(LogTables, RefuseWhatIsNoFile) {
    Session session;
    EXPECT_THAT(session.table("t", quoted("none.csv")), HasSubstr("No such file"));
    EXPECT_THAT(session.table("t", "'/dev/zero'"), HasSubstr("is a pipe or a device"));
    EXPECT_THAT(session.table("t", quoted(".")), HasSubstr("is a folder"));
    ASSERT_EQ(mkfifo(file("pipe").c_str(), 0600), 0);
    EXPECT_THAT(session.table("t", quoted("pipe")), HasSubstr("expected a file"));
    folder_.write("wide.csv", std::string(5000, ',') + "\n");
    EXPECT_THAT(session.table("t", quoted("wide.csv")), HasSubstr("SQLite has room for"));
    EXPECT_EQ(session.ask("SELECT count(*) FROM vek_cells(" + quoted("wide.csv") + ")"), "0\n");
}

TEST_F(LogTables, SaveAtTheEndOfATransactionAndTouchTheirOwnLines) {
    folder_.write("q.csv", "A,B\n\"1\",x\n2,y\n3,z\n");
    Session session;
    ASSERT_EQ(session.table("log", quoted("q.csv") + ", backup=yes"), "");
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET B = 'new' WHERE A = '2'; INSERT INTO log(A) "
                          "VALUES ('4'); DELETE FROM log WHERE A = '3'"),
              "");
    EXPECT_EQ(session.ask("SELECT rowid, * FROM log"), "1|1|x\n2|2|new\n4|4|\n");
    EXPECT_EQ(folder_.read("q.csv"), "A,B\n\"1\",x\n2,y\n3,z\n");
    EXPECT_EQ(session.ask("COMMIT"), "");
    EXPECT_EQ(folder_.read("q.csv"), "A,B\n\"1\",x\n2,new\n4,\n");
    EXPECT_EQ(folder_.read("q.csv.bak"), "A,B\n\"1\",x\n2,y\n3,z\n");
    EXPECT_EQ(session.ask("SELECT rowid, A FROM log"), "1|1\n2|2\n3|4\n");
}

TEST_F(LogTables, LeaveTheFileAloneOnRollback) {
    Session session;
    makeLog(session);
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Notes = 'x'; DELETE FROM log WHERE rowid = 1; "
                          "INSERT INTO log(Scene) VALUES ('n'); ROLLBACK; SELECT * FROM log"),
              "12|1|good\n7|10|\n12A|2|a \"b\"\n");
    EXPECT_EQ(folder_.read("day.csv"), day);
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Notes = Notes; COMMIT"), "");
    EXPECT_EQ(folder_.read("day.csv"), day);
}

TEST_F(LogTables, GoBackToSavepoints) {
    Session session;
    makeLog(session);
    EXPECT_EQ(session.ask("SAVEPOINT a; UPDATE log SET Take = 'A'; SAVEPOINT b; DELETE FROM log "
                          "WHERE rowid < 3; INSERT INTO log(Take) VALUES ('B'); SAVEPOINT c; "
                          "UPDATE log SET Take = 'C'; RELEASE c; ROLLBACK TO b; "
                          "UPDATE log SET Notes = '' WHERE rowid = 3; RELEASE b; RELEASE a"),
              "");
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take,Notes\n12,A,good\n7,A,\n12A,A,\"\"\n");
}

// The savepoint that began the transaction counts as none of SQLite's savepoints within it.
TEST_F(LogTables, GoBackToTheSavepointThatBeganTheTransaction) {
    Session session;
    makeLog(session);
    EXPECT_EQ(session.ask("SAVEPOINT a; UPDATE log SET Take = 'A'; SAVEPOINT b; DELETE FROM log; "
                          "ROLLBACK TO a; INSERT INTO log(Take) VALUES ('B'); ROLLBACK TO a; "
                          "UPDATE log SET Notes = 'C' WHERE rowid = 2; RELEASE a"),
              "");
    EXPECT_EQ(folder_.read("day.csv"),
              "Scene,Take,Notes\n12,1,good\n7,10,C\n12A,2,\"a \"\"b\"\"\"\n");
}

TEST_F(LogTables, TakeBackAStatementThatFailsHalfway) {
    Session session;
    makeLog(session);
    EXPECT_THAT(session.ask("BEGIN; UPDATE log SET Take = 'A' WHERE rowid = 1; UPDATE log SET Take "
                            "= CASE rowid WHEN 3 THEN x'00' ELSE 'B' END"),
                HasSubstr("a blob with a zero byte"));
    EXPECT_EQ(session.ask("COMMIT; SELECT Take FROM log"), "A\n10\n2\n");
}

// SQLite keeps no savepoint for a statement that changes a single row.
TEST_F(LogTables, LeaveNothingOfARowThatIsRefused) {
    const std::string text = "A,B,Tag\n1,x,1\n2,y,\n";
    folder_.write("t.csv", text);
    Session session;
    ASSERT_EQ(session.table("log", quoted("t.csv")), "");
    ASSERT_EQ(session.ask("BEGIN"), "");
    for (const std::string refused :
         {"INSERT INTO log VALUES ('3', x'00', '')",
          "INSERT INTO log(A, _tagged) VALUES (3, 'yes')", "INSERT INTO log(A, _row) VALUES (3, 9)",
          "INSERT INTO log(A, _fps) VALUES (3, '25')",
          "UPDATE log SET A = 'new', B = x'00' WHERE rowid = 2",
          "UPDATE log SET A = 'new', _tagged = 'yes' WHERE rowid = 2"}) {
        EXPECT_THAT(session.ask(refused), StartsWith("error: ")) << refused;
        EXPECT_EQ(session.ask("SELECT A, B, Tag FROM log"), "1|x|1\n2|y|\n") << refused;
    }
    EXPECT_EQ(session.ask("INSERT OR IGNORE INTO log(A, B) VALUES (3, 'z'); COMMIT"), "");
    EXPECT_EQ(folder_.read("t.csv"), text + "3,z,\n");
}

// What took their making back would not take back their changes.
TEST_F(LogTables, AreNotChangedByTheTransactionThatMadeThem) {
    Session session;
    ASSERT_EQ(session.ask("BEGIN; SAVEPOINT a"), "");
    makeLog(session);
    EXPECT_THAT(session.ask("INSERT INTO log(Scene) VALUES ('z')"),
                HasSubstr("was made a table in this transaction, which cannot change it; COMMIT"));
    EXPECT_EQ(session.ask("ROLLBACK TO a; COMMIT"), "");
    EXPECT_EQ(folder_.read("day.csv"), day);
    ASSERT_EQ(session.ask("BEGIN"), "");
    makeLog(session);
    EXPECT_THAT(session.ask("UPDATE log SET Take = 'x'"), HasSubstr("COMMIT"));
    EXPECT_EQ(session.ask("COMMIT; UPDATE log SET Take = 'x' WHERE rowid = 2"), "");
    EXPECT_EQ(folder_.read("day.csv"),
              "Scene,Take,Notes\n12,1,good\n7,x,\n12A,2,\"a \"\"b\"\"\"\n");
}

TEST_F(LogTables, WriteValuesOfOtherTypesAsTheirTexts) {
    Session session;
    makeLog(session);
    EXPECT_EQ(session.ask("UPDATE log SET Take = 9007199254740993, Notes = 0.1 WHERE rowid = 1; "
                          "UPDATE log SET Take = NULL, Notes = x'c3a4' WHERE rowid = 2; "
                          "UPDATE log SET Take = 1e21, Notes = '007' WHERE rowid = 3"),
              "");
    EXPECT_EQ(folder_.read("day.csv"),
              "Scene,Take,Notes\n12,9007199254740993,0.1\n7,,\xc3\xa4\n12A,1.0e+21,\"007\"\n");
}

TEST_F(LogTables, SetNoPlacesOfRows) {
    Session session;
    makeLog(session);
    EXPECT_THAT(session.ask("UPDATE log SET _row = 9"), HasSubstr("cannot be set"));
    EXPECT_THAT(session.ask("UPDATE log SET rowid = 9"), HasSubstr("cannot be set"));
    EXPECT_THAT(session.ask("INSERT INTO log(rowid) VALUES (1)"), HasSubstr("expected no rowid"));
    EXPECT_THAT(session.ask("UPDATE log SET _tagged = 1"), HasSubstr("has no column Tag"));
    EXPECT_EQ(folder_.read("day.csv"), day);
}

TEST_F(LogTables, TagRowsInTheColumnTag) {
    folder_.write("t.csv", "A,Tag\n1,\n2,3\n");
    Session session;
    ASSERT_EQ(session.table("log", quoted("t.csv")), "");
    EXPECT_EQ(session.ask("UPDATE log SET _tagged = 1; SELECT A, _tagged, Tag FROM log"),
              "1|1|1\n2|1|3\n");
    EXPECT_EQ(session.ask("UPDATE log SET Tag = 0 FROM (SELECT 2 AS k) WHERE A = k; "
                          "INSERT INTO log(A, _tagged) VALUES (3, 1); "
                          "SELECT A, _tagged FROM log"),
              "1|1\n2|0\n3|1\n");
}

TEST_F(LogTables, TakeNoTextForATagThatIsNone) {
    const std::string text = "A,Tag\n1,1\n2,0\n";
    folder_.write("t.csv", text);
    Session session;
    ASSERT_EQ(session.table("log", quoted("t.csv")), "");
    for (const char* value : {"'yes'", "'true'", "''", "x'31'", "'0x'"}) {
        EXPECT_THAT(session.ask(std::string("UPDATE log SET _tagged = ") + value),
                    HasSubstr("expected 1 or 0"))
            << value;
    }
    EXPECT_EQ(folder_.read("t.csv"), text);
    EXPECT_EQ(session.ask("UPDATE log SET _tagged = CASE A WHEN 1 THEN NULL ELSE 0.5 END;"
                          "SELECT _tagged FROM log; UPDATE log SET _tagged = '1' WHERE A = '1';"
                          "SELECT _tagged FROM log"),
              "0\n1\n1\n1\n");
}

TEST_F(LogTables, RefuseToChangeWhatIsOnlyRead) {
    folder_.write("x.fcpxml", "<fcpxml version=\"1.9\"><resources/><library/></fcpxml>");
    Session session;
    ASSERT_EQ(session.table("log", quoted() + ", read_only=yes"), "");
    EXPECT_THAT(session.ask("DELETE FROM log"), HasSubstr("is read only"));
    EXPECT_EQ(folder_.read("day.csv"), day);
    if (session.table("x", quoted("x.fcpxml")).empty()) {
        EXPECT_THAT(session.ask("INSERT INTO x DEFAULT VALUES"), HasSubstr("not changed in place"));
    }
}

TEST_F(LogTables, ReadAFileAnewThatWasChanged) {
    Session session;
    makeLog(session);
    EXPECT_EQ(session.ask("SELECT count(*) FROM log"), "3\n");
    folder_.write("day.csv", "Scene,Take,Notes\n1,2,3\n");
    EXPECT_EQ(session.ask("SELECT * FROM log"), "1|2|3\n");
    EXPECT_EQ(session.ask("UPDATE log SET Take = 5 WHERE Scene = 1"), "");
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take,Notes\n1,5,3\n");
    folder_.write("day.csv", "Other\n1\n");
    EXPECT_THAT(session.ask("SELECT * FROM log"), HasSubstr("has other columns"));
    std::filesystem::remove(file());
    EXPECT_THAT(session.ask("SELECT * FROM log"), HasSubstr("No such file"));
    EXPECT_THAT(session.ask("DELETE FROM log"), HasSubstr("No such file"));
    folder_.write("day.csv", day);
    EXPECT_EQ(session.ask("SELECT count(*) FROM log"), "3\n");
}

TEST_F(LogTables, FindTheirColumnsWhereTheyStandInAnotherOrder) {
    Session session;
    makeLog(session);
    folder_.write("day.csv", "Notes,Scene,Take\nn,s,t\n");
    EXPECT_EQ(session.ask("SELECT Scene, Take, Notes FROM log WHERE Scene = 's'"), "s|t|n\n");
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x'; ROLLBACK; INSERT INTO log VALUES "
                          "('a', 'b', 'c'); SELECT * FROM log a NATURAL JOIN log b"),
              "s|t|n\na|b|c\n");
    EXPECT_EQ(folder_.read("day.csv"), "Notes,Scene,Take\nn,s,t\nc,a,b\n");
    folder_.write("day.csv", "Notes,Scene\nn,s\n");
    EXPECT_THAT(session.ask("SELECT * FROM log"), HasSubstr("has other columns"));
    folder_.write("day.csv", "Notes,Scene,Take,New\nn,s,t,\n");
    EXPECT_THAT(session.ask("SELECT * FROM log"), HasSubstr("has other columns"));
}

// In JSON the columns stand in the rows, and go with them.
TEST_F(LogTables, KeepColumnsOfRowsThatWent) {
    folder_.write("day.jsonl", "{\"A\": \"1\", \"B\": \"2\"}\n{\"B\": \"3\"}\n");
    folder_.write("day.json", "[{\"A\": \"1\", \"B\": \"2\"}]\n");
    Session session;
    ASSERT_EQ(session.table("log", quoted("day.jsonl")), "");
    ASSERT_EQ(session.table("whole", quoted("day.json")), "");
    EXPECT_EQ(session.ask("DELETE FROM log WHERE A = 1; SELECT * FROM log"), "|3\n");
    EXPECT_EQ(session.ask("INSERT INTO log VALUES ('4', '5'); SELECT * FROM log"), "|3\n4|5\n");
    EXPECT_EQ(session.ask("DELETE FROM whole; SELECT * FROM whole"), "");
    EXPECT_EQ(session.ask("INSERT INTO whole(B) VALUES ('6'); SELECT * FROM whole"), "|6\n");
}

TEST_F(LogTables, StopTheCommitWhereTheFileWasChangedMeanwhile) {
    Session session(file("base.db"));
    makeLog(session);
    EXPECT_EQ(session.ask("CREATE TABLE own(a); BEGIN; INSERT INTO own VALUES (1); UPDATE log SET "
                          "Take = 'x'"),
              "");
    folder_.write("day.csv", "Scene,Take,Notes\ntheirs,,\n");
    EXPECT_THAT(session.ask("COMMIT"),
                HasSubstr("by another program since it was read, so nothing is written"));
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take,Notes\ntheirs,,\n");
    EXPECT_EQ(session.ask("SELECT count(*) FROM own; SELECT Scene FROM log"), "0\ntheirs\n");
}

TEST_F(LogTables, AreNotSavedByACommitThatFindsTheDatabaseInUse) {
    Session session(file("base.db"));
    makeLog(session);
    makeOwnTable(session);
    for (const std::string end : {"ROLLBACK", "COMMIT"}) {
        std::optional<ReaderOfOwn> reader(file("base.db"));
        EXPECT_EQ(session.ask("BEGIN; INSERT INTO own VALUES (3); UPDATE log SET Notes = 'new'; "
                              "DELETE FROM log WHERE rowid = 1"),
                  "");
        EXPECT_THAT(session.ask("COMMIT"), HasSubstr("database is locked"));
        EXPECT_EQ(folder_.read("day.csv"), day);
        reader.reset();
        EXPECT_EQ(session.ask(end), "");
        EXPECT_EQ(folder_.read("day.csv"),
                  end == "ROLLBACK" ? day : "Scene,Take,Notes\n7,10,new\n12A,2,\"new\"\n");
        EXPECT_EQ(session.ask("SELECT count(*) FROM log"), end == "ROLLBACK" ? "3\n" : "2\n");
    }
    EXPECT_EQ(session.ask("SELECT rowid, Scene FROM log; SELECT count(*) FROM own"),
              "1|7\n2|12A\n3\n");
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
        EXPECT_THAT(entry.path().filename(), testing::AnyOf("day.csv", "base.db"));
    }
}

TEST_F(LogTables, SaveWhatChangedBehindACommitThatFoundTheDatabaseInUse) {
    Session session(file("base.db"));
    makeLog(session);
    makeOwnTable(session);
    {
        const ReaderOfOwn reader(file("base.db"));
        EXPECT_EQ(session.ask("BEGIN; INSERT INTO own VALUES (3); UPDATE log SET Notes = 'a'; "
                              "SAVEPOINT b; UPDATE log SET Notes = 'b'"),
                  "");
        EXPECT_THAT(session.ask("COMMIT"), HasSubstr("database is locked"));
        EXPECT_EQ(session.ask("ROLLBACK TO b"), "");
        EXPECT_THAT(session.ask("COMMIT"), HasSubstr("database is locked"));
        EXPECT_EQ(session.ask("UPDATE log SET Take = '9' WHERE rowid = 2"), "");
        EXPECT_THAT(session.ask("COMMIT"), HasSubstr("database is locked"));
        EXPECT_EQ(folder_.read("day.csv"), day);
    }
    EXPECT_EQ(session.ask("COMMIT"), "");
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take,Notes\n12,1,a\n7,9,a\n12A,2,\"a\"\n");
}

TEST_F(LogTables, AreAllSavedByACommitOrNone) {
    folder_.write("b.csv", "A\n1\n");
    folder_.write("c.csv", "A\n1\n");
    Session session;
    makeLog(session);
    ASSERT_EQ(session.table("b", quoted("b.csv")), "");
    ASSERT_EQ(session.table("c", quoted("c.csv")), "");
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x'; UPDATE b SET A = 'x'; UPDATE c SET A "
                          "= 'x'"),
              "");
    folder_.write("b.csv", "A\ntheirs\n");
    EXPECT_THAT(session.ask("COMMIT"), HasSubstr("b.csv: was changed by another program"));
    EXPECT_EQ(folder_.read("day.csv"), day);
    EXPECT_EQ(folder_.read("c.csv"), "A\n1\n");
    EXPECT_EQ(session.ask("SELECT A FROM b UNION ALL SELECT A FROM c"), "theirs\n1\n");
    EXPECT_EQ(session.ask("BEGIN; UPDATE b SET A = 'x'; UPDATE c SET A = 'y'; COMMIT"), "");
    EXPECT_EQ(folder_.read("b.csv") + folder_.read("c.csv"), "A\nx\nA\ny\n");
}

// What SQLite asks is behind the point where a commit may still fail.
TEST_F(LogTables, TellAfterwardsThatACommitDidNotSave) {
    Session session;
    makeLog(session);
    ASSERT_EQ(session.ask("CREATE TABLE own(a)"), "");
    const auto change = [](void* folder) {
        static_cast<TempDir*>(folder)->write("day.csv", "Scene,Take,Notes\ntheirs,,\n");
        return 0;
    };
    sqlite3_commit_hook(session.db(), change, &folder_);
    EXPECT_EQ(session.ask("BEGIN; INSERT INTO own VALUES (1); UPDATE log SET Take = 'x'; COMMIT"),
              "");
    sqlite3_commit_hook(session.db(), nullptr, nullptr);
    EXPECT_THAT(session.ask("SELECT * FROM log"),
                HasSubstr("day.csv: the last COMMIT did not save its changes"));
    EXPECT_EQ(session.ask("SELECT * FROM log"), "theirs||\n");
    EXPECT_EQ(session.ask("UPDATE log SET Take = 'y'; SELECT * FROM log"), "theirs|y|\n");
}

// Who closes the connection would never hear of it otherwise.
TEST_F(LogTables, TellTheLogOfSQLiteThatACommitDidNotSave) {
    std::string told;
    const auto note = [](void* out, int code, const char* text) {
        if (code == SQLITE_IOERR) *static_cast<std::string*>(out) += text;
    };
    void (*const take)(void*, int, const char*) = note;
    void (*const none)(void*, int, const char*) = nullptr;
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_LOG, take, &told);
    {
        Session session;
        makeLog(session);
        const auto change = [](void* folder) {
            static_cast<TempDir*>(folder)->write("day.csv", "Scene,Take,Notes\ntheirs,,\n");
            return 0;
        };
        sqlite3_commit_hook(session.db(), change, &folder_);
        EXPECT_EQ(session.ask("CREATE TABLE own(a)"), "");
        folder_.write("day.csv", day);
        EXPECT_EQ(session.ask("BEGIN; INSERT INTO own VALUES (1); UPDATE log SET Take = 'x'; "
                              "COMMIT"),
                  "");
    }
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_LOG, none, nullptr);
    EXPECT_THAT(told, HasSubstr("a COMMIT did not save its changes: " + file()));
}

TEST_F(LogTables, SaveAFileOfTwoNamesUnderBoth) {
    std::filesystem::create_hard_link(file(), file("second.csv"));
    Session session;
    makeLog(session);
    EXPECT_EQ(session.ask("DELETE FROM log WHERE rowid < 3; UPDATE log SET Take = 'x'"), "");
    EXPECT_EQ(folder_.read("second.csv"), "Scene,Take,Notes\n12A,x,\"a \"\"b\"\"\"\n");
    EXPECT_EQ(folder_.read("day.csv"), folder_.read("second.csv"));
}

TEST_F(LogTables, LeaveAFileOfTwoNamesAloneWhereACommitFindsTheDatabaseInUse) {
    std::filesystem::create_hard_link(file(), file("second.csv"));
    Session session(file("base.db"));
    makeLog(session);
    makeOwnTable(session);
    {
        const ReaderOfOwn reader(file("base.db"));
        EXPECT_EQ(session.ask("BEGIN; INSERT INTO own VALUES (3); UPDATE log SET Take = 'x'"), "");
        EXPECT_THAT(session.ask("COMMIT"), HasSubstr("database is locked"));
        EXPECT_EQ(folder_.read("second.csv"), day);
    }
    EXPECT_EQ(session.ask("UPDATE log SET Notes = '' WHERE rowid = 3; COMMIT"), "");
    EXPECT_EQ(folder_.read("second.csv"), "Scene,Take,Notes\n12,x,good\n7,x,\n12A,x,\"\"\n");
    EXPECT_EQ(folder_.read("day.csv"), folder_.read("second.csv"));
}

TEST_F(LogTables, KeepOthersFromChangingTheFileDuringATransactionAlone) {
    Session session;
    Session other;
    makeLog(session);
    makeLog(other);
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x' WHERE rowid = 1"), "");
    EXPECT_EQ(other.ask("CREATE TABLE own(a); BEGIN; INSERT INTO own VALUES (1)"), "");
    EXPECT_THAT(other.ask("UPDATE log SET Take = 'y' WHERE rowid = 2"),
                HasSubstr("another program is changing it"));
    EXPECT_EQ(sqlite3_errcode(other.db()), SQLITE_BUSY);
    EXPECT_EQ(session.ask("ROLLBACK"), "");
    // Only the statement was refused: the transaction goes on with what else it changed.
    EXPECT_EQ(other.ask("UPDATE log SET Take = 'y' WHERE rowid = 2; COMMIT; SELECT a FROM own"),
              "1\n");
    EXPECT_EQ(session.ask("SELECT Take FROM log"), "1\ny\n2\n");
}

// What a statement is to be written over is the file as the other left it.
TEST_F(LogTables, AreSavedBehindAnotherWriterThatTheyWaitedFor) {
    Session session;
    Session other;
    makeLog(session);
    makeLog(other);
    ASSERT_EQ(session.ask("BEGIN; UPDATE log SET Take = 'x' WHERE rowid = 1"), "");
    std::string answer;
    std::thread waiting([&] { answer = other.ask("UPDATE log SET Take = 'y' WHERE rowid = 2"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(session.ask("COMMIT"), "");
    waiting.join();
    EXPECT_EQ(answer, "");
    EXPECT_EQ(folder_.read("day.csv"),
              "Scene,Take,Notes\n12,x,good\n7,y,\n12A,2,\"a \"\"b\"\"\"\n");
    EXPECT_EQ(other.ask("SELECT Take FROM log"), "x\ny\n2\n");
}

TEST_F(LogTables, LetCursorsGoOnWhileRowsChange) {
    Session session;
    makeLog(session);
    Steps steps(session, "SELECT Notes, max(Notes) OVER (), rowid FROM log a");
    ASSERT_EQ(steps.next(), SQLITE_ROW);
    EXPECT_EQ(session.ask("BEGIN; UPDATE log SET Notes = 'longer than it was before'; DELETE FROM "
                          "log WHERE rowid = 2; INSERT INTO log(Scene) VALUES ('z'); COMMIT"),
              "");
    EXPECT_EQ(steps.text(), "good");
    while (steps.next() == SQLITE_ROW) EXPECT_FALSE(steps.text().empty() && steps.text(2) == "1");
}

TEST_F(LogTables, ChangeNoOtherRowsThanAreMeantWhereNumbersWereCountedAnew) {
    Session session;
    makeLog(session);
    Steps steps(session, "SELECT rowid FROM log");
    ASSERT_EQ(steps.next(), SQLITE_ROW);
    EXPECT_EQ(session.ask("DELETE FROM log WHERE rowid = 1"), "");
    ASSERT_EQ(steps.next(), SQLITE_ROW);
    EXPECT_THAT(session.ask("DELETE FROM log WHERE rowid = " + steps.text()),
                HasSubstr("its rows may have other numbers"));
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take,Notes\n7,10,\n12A,2,\"a \"\"b\"\"\"\n");
}

TEST_F(LogTables, KeepNumbersWithinATransaction) {
    Session session;
    makeLog(session);
    ASSERT_EQ(
        session.ask("BEGIN; DELETE FROM log WHERE rowid = 1; DELETE FROM log WHERE rowid = 3; "
                    "COMMIT"),
        "");
    EXPECT_EQ(folder_.read("day.csv"), "Scene,Take,Notes\n7,10,\n");
}

TEST_F(LogTables, AreReachedByNoViewOfADatabase) {
    Session session(file("base.db"));
    makeLog(session);
    EXPECT_THAT(session.ask("CREATE VIEW v AS SELECT * FROM log; SELECT * FROM v"),
                HasSubstr("unsafe use of virtual table"));
    EXPECT_THAT(session.ask("CREATE VIEW w AS SELECT * FROM vek_file('/etc/passwd'); "
                            "SELECT * FROM w"),
                HasSubstr("unsafe use of virtual table"));
    EXPECT_THAT(session.ask("CREATE TABLE own(a); CREATE TRIGGER t AFTER INSERT ON own BEGIN "
                            "DELETE FROM log; END; INSERT INTO own VALUES (1)"),
                HasSubstr("unsafe use of virtual table"));
    EXPECT_EQ(folder_.read("day.csv"), day);
    EXPECT_EQ(session.ask("CREATE TEMP VIEW own_view AS SELECT Scene FROM log WHERE Take = 1; "
                          "SELECT * FROM own_view"),
              "12\n");
}

TEST_F(LogTables, StayWithADatabaseAndKeepTheFileWhenTheyAreDropped) {
    {
        Session session(file("base.db"));
        makeLog(session);
        EXPECT_EQ(session.ask("ALTER TABLE log RENAME TO renamed"), "");
    }
    Session session(file("base.db"));
    EXPECT_EQ(session.ask("SELECT count(*) FROM renamed"), "3\n");
    EXPECT_EQ(session.ask("DROP TABLE renamed"), "");
    EXPECT_EQ(folder_.read("day.csv"), day);
}

TEST_F(LogTables, AreFunctionsForFilesOfAnyColumns) {
    Session session;
    const std::string path = quoted();
    EXPECT_EQ(session.ask("SELECT row, line, tagged, cells FROM vek_file(" + path + ")"),
              "1|2|0|{\"Scene\":\"12\",\"Take\":\"1\",\"Notes\":\"good\"}\n"
              "2|3|0|{\"Scene\":\"7\",\"Take\":\"10\",\"Notes\":\"\"}\n"
              "3|4|0|{\"Scene\":\"12A\",\"Take\":\"2\",\"Notes\":\"a \\\"b\\\"\"}\n");
    EXPECT_EQ(session.ask("SELECT cells ->> '$.Notes' FROM vek_file(" + path +
                          ") WHERE cells ->> 'Scene' = '12A'"),
              "a \"b\"\n");
    EXPECT_EQ(session.ask("SELECT row, col, name, value FROM vek_cells(" + path +
                          ") WHERE name = 'Take'"),
              "1|2|Take|1\n2|2|Take|10\n3|2|Take|2\n");
    EXPECT_EQ(session.ask("SELECT value FROM vek_cells WHERE path = " + path +
                          " AND no_header = 'yes' AND row = 1"),
              "Scene\nTake\nNotes\n");
    EXPECT_THAT(session.ask("SELECT * FROM vek_file"), HasSubstr("error: "));
    EXPECT_EQ(session.ask("SELECT * FROM vek_file(NULL)"), "");
    EXPECT_THAT(session.ask("SELECT * FROM vek_file('')"), HasSubstr("found no file"));
    EXPECT_THAT(session.ask("SELECT * FROM vek_file(x'61006100')"), HasSubstr("error: "));
    EXPECT_THAT(session.ask("SELECT * FROM vek_file(" + path + ", 'html')"),
                HasSubstr("from is \"html\""));
    EXPECT_THAT(session.ask("DELETE FROM vek_file"), HasSubstr("error: "));
    EXPECT_EQ(session.ask("SELECT p, count(*) FROM (SELECT " + path + " AS p UNION ALL SELECT " +
                          path + ") JOIN vek_file(p) GROUP BY 1"),
              file() + "|6\n");
}

TEST_F(LogTables, AnswerADatabaseInAnotherEncoding) {
    Session session;
    ASSERT_EQ(session.ask("PRAGMA encoding = 'UTF-16le'"), "");
    folder_.write("u.csv", "A\n\xc3\xa4\n\xf0\x9f\x8e\xac\nz\n");
    ASSERT_EQ(session.table("log", quoted("u.csv")), "");
    EXPECT_EQ(session.ask("SELECT A FROM log WHERE A = '\xc3\xa4'"), "\xc3\xa4\n");
    EXPECT_EQ(session.ask("SELECT count(*) FROM log WHERE A >= '\xef\xbf\xbd'"), "0\n");
    EXPECT_EQ(session.ask("UPDATE log SET A = '\xc3\xb6' WHERE A = 'z' COLLATE TIMECODE; "
                          "SELECT A FROM log ORDER BY rowid DESC LIMIT 1"),
              "\xc3\xb6\n");
}
