#include <gmock/gmock.h>

#include <vekdb/formats/comparing.h>

using testing::ElementsAre;
using testing::SizeIs;

TEST(Comparing, GivesTheDifferencesByAKeyAsValues) {
    auto first = vek::openText("Name,Take,Old\na,1,\nb,2,\n", "a.csv");
    auto second = vek::openText("Name,Take\nb,3\nc,4\n", "b.csv");
    auto found = vek::compare(*first, *second, "name");
    ASSERT_TRUE(found) << found.reason().text();
    EXPECT_THAT(found->onlyInFirst, ElementsAre("Old"));
    ASSERT_THAT(found->rows, SizeIs(3));
    EXPECT_EQ(found->rows[0].kind, vek::RowDifference::removed);
    EXPECT_EQ(found->rows[1].kind, vek::RowDifference::changed);
    ASSERT_THAT(found->rows[1].cells, SizeIs(1));
    EXPECT_EQ(found->rows[1].cells[0].before, "2");
    EXPECT_EQ(found->rows[1].cells[0].after, "3");
    EXPECT_EQ(found->rows[2].kind, vek::RowDifference::added);
}

TEST(Comparing, CountsTheNotesThatItDoesNotKeep) {
    std::string text = "Reel\n";
    for (int i = 0; i < 1500; ++i) text += std::to_string(i) + "\n" + std::to_string(i) + "\n";
    const vek::Log log = *vek::openText(text, "a.csv");
    auto found = vek::compare(log, *vek::openText("Reel\n1\n", "b.csv"), "Reel");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->notes.size(), 1000u);
    EXPECT_EQ(found->moreNotes, 500u);
}

TEST(Comparing, FindsNothingInTheSameLog) {
    auto log = vek::openText("A\n1\n2\n", "a.csv");
    EXPECT_TRUE(vek::compare(*log, *log)->isEmpty());
}

TEST(Comparing, SaysThatThereIsNoSuchKey) {
    auto log = vek::openText("A\n1\n", "a.csv");
    EXPECT_EQ(vek::compare(*log, *log, "B").reason().kind, vek::Reason::wrongUsage);
}

TEST(Comparing, GoesByTheRowsThatAreLeft) {
    vek::Log first = *vek::openText("Name,Take\na,1\nb,2\nc,3\nd,4\n", "a.csv");
    vek::Log second = *vek::openText("Name,Take\nx,0\nb,2\nd,5\n", "b.csv");
    ASSERT_TRUE(first.removeRows({0, 2}));
    ASSERT_TRUE(second.removeRows({0}));
    for (const char* key : {"Name", ""}) {
        const auto found = vek::compare(first, second, key);
        ASSERT_TRUE(found) << found.reason().text();
        ASSERT_THAT(found->rows, SizeIs(1));
        EXPECT_EQ(found->rows[0].kind, vek::RowDifference::changed);
        EXPECT_EQ(first.row(found->rows[0].a)["Name"], "d");
        EXPECT_EQ(second.row(found->rows[0].b)["Name"], "d");
    }
}
