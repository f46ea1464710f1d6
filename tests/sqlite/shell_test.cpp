#include <gtest/gtest.h>

#include "cli/program.h"

// The extension as SQLite's own shell loads it. A sanitizer must be in a program from its start, so
// there the other tests have to do, which are linked with the same sources.
#ifdef VEKDB_EXTENSION

namespace {

Finish sqlite(const WorkFolder& folder, const std::string& script) {
    Start start;
    start.words = {"/bin/sh", "-c", "exec sqlite3 -batch :memory:"};
    start.input = ".load " VEKDB_EXTENSION "\n" + script;
    return run(folder, start);
}

class SqliteShell : public testing::Test {
protected:
    WorkFolder folder_;
};

}  // namespace

TEST_F(SqliteShell, LoadsTheExtensionAndAsksALog) {
    const Finish finish = sqlite(folder_,
                                 "CREATE VIRTUAL TABLE log USING vek('samples/docs.vek');\n"
                                 "SELECT Scene, count(*) FROM log GROUP BY Scene;\n"
                                 "SELECT json_extract(cells, '$.Reel') FROM "
                                 "vek_file('samples/docs.vek') WHERE row = 6;\n"
                                 "SELECT tc_frames('01:00:00:00', 25), feet(20);\n");
    EXPECT_EQ(finish.output, "12|3\n12A|1\n14|1\n7|1\nA002\n90000|1+04\n");
    EXPECT_EQ(finish.errors, "");
    EXPECT_EQ(finish.exitCode, 0);
}

TEST_F(SqliteShell, SavesWhatATransactionChangedAndNothingOfOneThatIsTakenBack) {
    folder_.write("day.csv", "A,B\n1,x\n2,y\n");
    const Finish finish = sqlite(folder_,
                                 "CREATE VIRTUAL TABLE log USING vek('day.csv', backup=yes);\n"
                                 "BEGIN; DELETE FROM log; ROLLBACK;\n"
                                 "BEGIN; UPDATE log SET B = 'new' WHERE A = '2';\n"
                                 "INSERT INTO log VALUES (3, NULL); COMMIT;\n"
                                 "SELECT * FROM log;\n");
    EXPECT_EQ(finish.output, "1|x\n2|new\n3|\n");
    EXPECT_EQ(finish.errors, "");
    EXPECT_EQ(folder_.read("day.csv"), "A,B\n1,x\n2,new\n3,\n");
    EXPECT_EQ(folder_.read("day.csv.bak"), "A,B\n1,x\n2,y\n");
}

TEST_F(SqliteShell, SaysWhatIsWrongAndGoesOn) {
    folder_.write("o'clock;.csv", "A\n1\n");
    const Finish finish = sqlite(folder_,
                                 "CREATE VIRTUAL TABLE a USING vek('none.vek');\n"
                                 "CREATE VIRTUAL TABLE log USING vek('o''clock;.csv');\n"
                                 "UPDATE log SET A = x'00';\n"
                                 "SELECT A FROM log;\n");
    EXPECT_EQ(finish.output, "1\n");
    EXPECT_NE(finish.errors.find("none.vek: No such file"), std::string::npos) << finish.errors;
    EXPECT_NE(finish.errors.find("a zero byte"), std::string::npos) << finish.errors;
}

#endif
