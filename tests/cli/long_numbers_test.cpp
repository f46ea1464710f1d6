#include <gtest/gtest.h>

#include <string>

#include "cli/program.h"

// Compared with every row, the digits of one cell would take half a minute.
TEST(LongNumbers, AreNotComparedWithEveryRow) {
    WorkFolder folder;
    std::string rows = std::string(900000, '9') + "\n";
    for (int i = 0; i < 50000; ++i) rows += "1\n";
    folder.write("log.csv", "Take\n" + rows);
    Start start;
    start.words = {"/bin/sh", "-c", "ulimit -t 5; exec \"$0\" stats log.csv --by Take",
                   VEK_PROGRAM};
    Finish finish = run(folder, start);
    EXPECT_EQ(finish.exitCode, 0) << finish.errors;
    EXPECT_NE(finish.output.find("\n1 "), std::string::npos);
    EXPECT_NE(finish.output.find(" 50000"), std::string::npos);
}
