#include <gmock/gmock.h>

#include <vector>

#include "sqlite/session.h"
#include "testing/temp_dir.h"

using testing::HasSubstr;

using testing_support::TempDir;

namespace {

// Texts on which comparisons as numbers, as bytes and by frames do not agree.
const std::vector<std::string> texts = {"",
                                        "0",
                                        "00",
                                        "-0",
                                        "+1",
                                        "1",
                                        "1.0",
                                        "1e0",
                                        " 1",
                                        "1 ",
                                        "01",
                                        "10",
                                        "2",
                                        "12A",
                                        "12a",
                                        "9007199254740993",
                                        "1e2",
                                        "100",
                                        "0x10",
                                        ".5",
                                        "5.",
                                        "-",
                                        ".",
                                        "e1",
                                        "a",
                                        "B",
                                        "b",
                                        "01:00:00:00",
                                        "01:00:00;00",
                                        "01000000",
                                        "1:00:00:00",
                                        "02:00:00:00",
                                        "\xc3\xa4",
                                        "inf",
                                        "nan",
                                        "NULL"};

// The same rows as a log and as a table of SQLite's own, which need not agree with any plan.
class Conditions : public testing::Test {
protected:
    Conditions() {
        std::string csv = "k,v\n";
        std::string insert = "CREATE TABLE own(k TEXT, v TEXT)";
        for (std::size_t i = 0; i < texts.size(); ++i) {
            csv += "k" + std::to_string(i % 7) + ",\"" + texts[i] + "\"\n";
            insert += "; INSERT INTO own VALUES ('k" + std::to_string(i % 7) + "', " +
                      Session::inQuotes(texts[i]) + ")";
        }
        folder_.write("log.csv", csv);
        EXPECT_EQ(session_.ask(insert), "");
        EXPECT_EQ(session_.table("log", Session::inQuotes(folder_.file("log.csv").string())), "");
    }

    // `condition` asks the table x.
    void expectSame(const std::string& condition) const {
        const auto asked = [&](const std::string& table) {
            return session_.ask("SELECT x.rowid, v FROM " + table + " AS x WHERE " + condition +
                                " ORDER BY x.rowid");
        };
        EXPECT_EQ(asked("log"), asked("own")) << condition;
    }

    std::string plan(const std::string& condition) const {
        return session_.ask("EXPLAIN QUERY PLAN SELECT * FROM log WHERE " + condition);
    }

    TempDir folder_;
    Session session_;
};

const std::vector<std::string> operators = {"=", "IS", "<>", "<", "<=", ">", ">=", "LIKE", "GLOB"};

}  // namespace

TEST_F(Conditions, AnswerAsATableOfSqliteDoesForTextsAndNumbers) {
    for (const std::string& op : operators) {
        for (const std::string& text : texts) {
            const std::string literal = Session::inQuotes(text);
            expectSame("v " + op + " " + literal);
            expectSame(literal + " " + op + " v");
            expectSame("v " + op + " " + literal + " COLLATE TIMECODE");
            expectSame("v COLLATE TIMECODE " + op + " " + literal);
            expectSame("v " + op + " " + literal + " COLLATE PEOPLE");
            expectSame("v " + op + " " + literal + " COLLATE NOCASE");
        }
        for (const char* value : {"1", "1.0", "100", "0.5", "-0", "9007199254740993", "NULL",
                                  "x'31'", "CAST('1' AS INTEGER)", "CAST('01' AS NUMERIC)",
                                  "CAST(1 AS TEXT)", "+'1'", "'1' || ''"}) {
            expectSame("v " + op + " " + value);
            expectSame("x.rowid " + op + " " + value);
        }
    }
}

TEST_F(Conditions, AnswerAsATableOfSqliteDoesForRowNumbers) {
    for (const std::string& op : operators) {
        for (const char* value : {"0", "-1", "1", "3", "3.0", "2.5", "'3'", "'x'", "NULL", "99999",
                                  "9223372036854775807", "-9223372036854775808", "5000000000"}) {
            expectSame("x.rowid " + op + " " + value);
        }
    }
    expectSame("x.rowid BETWEEN 3 AND 5 AND v < '5'");
    expectSame("x.rowid IN (1, 3, 99) OR v IN ('1', 'b')");
}

TEST_F(Conditions, JoinAsATableOfSqliteDoesWhateverTheOtherSideIs) {
    for (const char* type : {"TEXT", "INTEGER", "NUMERIC", "REAL", "BLOB", ""}) {
        ASSERT_EQ(session_.ask(std::string("DROP TABLE IF EXISTS other; CREATE TABLE other(o ") +
                               type + ")"),
                  "");
        for (const std::string& text : texts) {
            ASSERT_EQ(session_.ask("INSERT INTO other VALUES (" + Session::inQuotes(text) + ")"),
                      "");
        }
        ASSERT_EQ(session_.ask("INSERT INTO other VALUES (1), (1.0), (100), (0.5), (NULL)"), "");
        for (const char* on : {"x.v = other.o", "x.v IS other.o", "other.o = x.v",
                               "x.v = other.o AND x.k = 'k1'", "x.v < other.o"}) {
            const auto asked = [&](const std::string& table) {
                return session_.ask("SELECT other.rowid, x.rowid FROM other CROSS JOIN " + table +
                                    " AS x ON " + on + " ORDER BY 1, 2");
            };
            EXPECT_EQ(asked("log"), asked("own")) << type << ": " << on;
        }
    }
}

TEST_F(Conditions, FindWhatAnEditPutThere) {
    const std::string join = "SELECT count(*) FROM own CROSS JOIN log ON own.v = log.v";
    const std::string before = session_.ask(join);
    EXPECT_EQ(session_.ask("BEGIN; UPDATE log SET v = 'b' WHERE v = 'a'; " + join), before);
    EXPECT_EQ(session_.ask("SELECT count(*) FROM (SELECT 'b' AS o UNION ALL SELECT 'b') CROSS JOIN "
                           "log ON o = v"),
              "4\n");
    EXPECT_EQ(session_.ask("DELETE FROM log WHERE v = 'b'; INSERT INTO log(v) VALUES ('b'); SELECT "
                           "count(*) FROM (SELECT 'b' AS o UNION ALL SELECT 'b') CROSS JOIN log ON "
                           "o = v; ROLLBACK"),
              "2\n");
    EXPECT_EQ(session_.ask(join), before);
}

TEST_F(Conditions, AreLookedAtByTheTableWhereItsAnswerIsSqlites) {
    EXPECT_THAT(plan("v = 'a'"), HasSubstr("2 1 t"));
    EXPECT_THAT(plan("v COLLATE TIMECODE > '01:00:00:00'"), HasSubstr("4 1 c"));
    EXPECT_THAT(plan("rowid < 3"), HasSubstr("16 -1 n"));
    EXPECT_THAT(plan("v GLOB 'ab*'"), HasSubstr("32 1 t"));
    EXPECT_THAT(plan("v = 'a' COLLATE NOCASE"), testing::Not(HasSubstr(" t ")));
    EXPECT_THAT(plan("1 ORDER BY rowid"), testing::Not(HasSubstr("TEMP B-TREE")));
}

TEST_F(Conditions, OrderByFramesAndAsPeopleDo) {
    EXPECT_EQ(session_.ask("SELECT group_concat(c, ' ') FROM (SELECT column1 AS c FROM (VALUES "
                           "('Scene 10'), ('02:00:00:00'), ('Scene 2'), ('01:00:00:01'), "
                           "('01000000'), ('scene 2A')) ORDER BY c COLLATE TIMECODE)"),
              "01000000 01:00:00:01 02:00:00:00 Scene 2 scene 2A Scene 10\n");
    EXPECT_EQ(session_.ask("SELECT '01:00:00;00' = '01000000' COLLATE TIMECODE, "
                           "'01:00:00;00' = '01000000' COLLATE PEOPLE, "
                           "'99' < '01000000' COLLATE PEOPLE"),
              "1|0|1\n");
}
