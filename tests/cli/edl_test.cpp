#include <gtest/gtest.h>

#include "cli/program.h"

namespace {

std::string sources(int count) {
    std::string list;
    for (int i = 0; i < count; ++i) {
        list += ">>> SOURCE A" + std::to_string(i) + " D:\\new\\file_" + std::to_string(i) + "\n";
    }
    return list;
}

// Through a table and back, compared with what goes straight from edit list to edit list.
void expectNothingLost(const std::string& list) {
    WorkFolder folder;
    folder.write("a.edl", list);
    EXPECT_EQ(runVek(folder, {"convert", "a.edl", "a.vek"}).exitCode, 0);
    EXPECT_EQ(runVek(folder, {"convert", "a.vek", "b.edl"}).exitCode, 0);
    EXPECT_EQ(folder.read("b.edl"), list);
    EXPECT_EQ(runVek(folder, {"diff", "a.edl", "a.vek"}).exitCode, 0);
    EXPECT_EQ(runVek(folder, {"diff", "a.edl", "b.edl"}).exitCode, 0);
}

const std::string oneEvent =
    "TITLE: a\n"
    "001  A        V     C        01:00:00:00 01:00:01:00 02:00:00:00 02:00:01:00\n";

}  // namespace

TEST(EditLists, ALongListBehindTheLastEventBecomesATableAndComesBack) {
    expectNothingLost(oneEvent + sources(1000));
}

TEST(EditLists, ALongLineComesBackInOnePiece) {
    std::string line = "* ";
    for (int i = 0; i < 3000; ++i) line += "\xC3\xA4 \\n";
    expectNothingLost(oneEvent + line + "\n* " + std::string(9000, 'x') + "\n");
}

TEST(EditLists, CommentsOfAListWithoutEventsComeBack) {
    std::string list = "TITLE: a\n";
    for (int i = 0; i < 1000; ++i) list += "* SOURCE " + std::to_string(i) + " of many\n";
    expectNothingLost(list);
}

TEST(EditLists, TabsWithinCommentsAndReelsStay) {
    expectNothingLost(
        "TITLE: a\tb\n"
        "001  A\tB      V     C        01:00:00:00 01:00:01:00 02:00:00:00 02:00:01:00\n"
        "* FROM CLIP NAME: c\td\n"
        "* LOC: 01:00:00:05\tRED\tfix\n");
}
