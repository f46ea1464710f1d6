#include <gmock/gmock.h>

#include <string>

#include <vekdb/formats/merging.h>
#include "testing/temp_dir.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using testing_support::TempDir;

namespace {

vek::Log logOf(std::string_view text, std::string_view name = "log.csv") {
    return *vek::openText(text, name);
}

std::string textOf(const vek::Log& log) {
    std::string text;
    const auto saved = log.write(text, vek::Format::csv);
    return saved ? text : saved.reason().text();
}

}  // namespace

TEST(MergingLogs, PutsRowsBehindEachOther) {
    vek::Log into = logOf("Name\na\n");
    auto merged = vek::merge(into, {logOf("Name,Take\nb,1\n"), logOf("Take\n2\n")});
    ASSERT_TRUE(merged) << merged.reason().text();
    EXPECT_TRUE(merged->isWhole());
    ASSERT_EQ(into.size(), 3u);
    EXPECT_EQ(into.at(1)["Take"], "1");
    EXPECT_EQ(into.at(2)["Take"], "2");
}

TEST(MergingLogs, KeepsTheLinesOfRowsBehindOneThatWasAdded) {
    vek::Log day = *vek::openText("A\n1\n", "a.csv");
    ASSERT_TRUE(day.addRow());
    std::vector<vek::Log> others;
    others.push_back(*vek::openText("A\n\"two\nlines\"\n4\n", "b.csv"));
    others.push_back(*vek::openText("A\n3\n", "c.csv"));
    ASSERT_TRUE(vek::merge(day, others, {}));
    EXPECT_EQ(day.at(0).line(), 2u);
    EXPECT_EQ(day.at(1).line(), 0u);
    EXPECT_EQ(day.at(2).line(), 2u);
    EXPECT_EQ(day.at(3).line(), 4u);
    EXPECT_EQ(day.at(4).line(), 2u);
}

TEST(MergingLogs, JoinsRowsOfOneKeyAndGivesConflictsAsValues) {
    vek::Log into = logOf("Name,Take,Reel\na,1,\n");
    vek::MergeOptions options;
    options.key = "name";
    auto merged = vek::merge(into, {logOf("Name,Take,Reel\na,2,A001\n", "b.csv")}, options);
    ASSERT_TRUE(merged) << merged.reason().text();
    ASSERT_EQ(into.size(), 1u);
    EXPECT_EQ(into.at(0)["Reel"], "A001");
    EXPECT_EQ(into.at(0)["Take"], "1");
    EXPECT_FALSE(merged->isWhole());
    EXPECT_EQ(merged->cells, 1u);
    ASSERT_THAT(merged->conflicts, SizeIs(1));
    const vek::MergeConflict& conflict = merged->conflicts[0];
    EXPECT_EQ(conflict.kind, vek::MergeConflict::cell);
    EXPECT_EQ(conflict.file, "b.csv");
    EXPECT_EQ(conflict.line, 2u);
    EXPECT_EQ(conflict.column, "Take");
    EXPECT_EQ(conflict.value, "2");
    EXPECT_EQ(conflict.kept, "1");
    EXPECT_EQ(conflict.row, 0u);
    EXPECT_EQ(conflict.text(),
              "b.csv:2:Take: \"2\", expected \"1\", as row 1 has; the first is kept");
}

TEST(MergingLogs, TakesTheLastValueWhereThatIsPreferred) {
    vek::Log into = logOf("Name,Take\na,1\n");
    vek::MergeOptions options;
    options.key = "Name";
    options.prefer = vek::MergeOptions::last;
    ASSERT_TRUE(vek::merge(into, {logOf("Name,Take\na,2\n")}, options)->isWhole());
    EXPECT_EQ(into.at(0)["Take"], "2");
}

TEST(MergingLogs, CountsTheConflictsThatItDoesNotKeep) {
    std::string ours = "Name,Take\n";
    std::string theirs = ours;
    for (int i = 0; i < 20; ++i) {
        ours += std::to_string(i) + ",1\n";
        theirs += std::to_string(i) + ",2\n";
    }
    vek::Log into = logOf(ours);
    vek::MergeOptions options;
    options.key = "Name";
    options.mostConflicts = 5;
    auto merged = vek::merge(into, {logOf(theirs)}, options);
    EXPECT_THAT(merged->conflicts, SizeIs(5));
    EXPECT_EQ(merged->cells, 20u);
}

TEST(MergingLogs, RefusesTwoRatesUnlessAsked) {
    vek::Log into = logOf("Start\n01:00:00:00\n");
    vek::Log other = logOf("Start\n01:00:00:00\n");
    ASSERT_TRUE(into.setParameter("FPS", "24"));
    ASSERT_TRUE(other.setParameter("FPS", "25"));
    EXPECT_EQ(vek::merge(into, {other}).reason().kind, vek::Reason::contradiction);
    EXPECT_EQ(into.size(), 1u);
    vek::MergeOptions options;
    options.joinsUnlike = true;
    auto merged = vek::merge(into, {other}, options);
    ASSERT_TRUE(merged) << merged.reason().text();
    EXPECT_EQ(into.size(), 2u);
    EXPECT_THAT(merged->notes, SizeIs(1));
}

TEST(MergingLogs, RefusesWhatCannotBeJoined) {
    vek::Log into = logOf("Name\na\nb\n");
    EXPECT_EQ(vek::merge(into, {into}).reason().kind, vek::Reason::wrongUsage);
    vek::MergeOptions options;
    options.key = "Reel";
    EXPECT_THAT(vek::merge(into, {logOf("Name\nc\n")}, options).reason().text(),
                HasSubstr("there is no column \"Reel\""));
    EXPECT_EQ(into.size(), 2u);
}

TEST(MergingLogs, SavesAJoinedLogInPlace) {
    TempDir folder;
    folder.write("day.csv", "Name,Take\n\"a\",1\n");
    const std::string path = folder.file("day.csv").string();
    auto log = vek::openToChange(path);
    ASSERT_TRUE(log);
    ASSERT_TRUE(vek::merge(*log, {logOf("Name,Take\nb,2\n")}));
    ASSERT_TRUE(log->save());
    EXPECT_EQ(folder.read("day.csv"), "Name,Take\n\"a\",1\nb,2\n");
}

TEST(MergingLogs, JoinsWhatIsLeftOfLogsThatRowsWereRemovedFrom) {
    vek::Log into = logOf("Name,Take\na,1\nb,2\nc,3\n");
    ASSERT_TRUE(into.removeRows(*into.choose("Name=b")));
    vek::Log from = logOf("Name,Take\nb,7\nc,8\nd,9\n");
    ASSERT_TRUE(from.removeRows(*from.choose("Name=d")));
    vek::MergeOptions options;
    options.key = "Name";
    const auto merged = vek::merge(into, {from}, options);
    ASSERT_TRUE(merged) << merged.reason().text();
    EXPECT_EQ(textOf(into), "Name,Take\na,1\nc,3\nb,7\n");
    ASSERT_THAT(merged->conflicts, SizeIs(1));
    EXPECT_EQ(merged->conflicts[0].row, 1u);
    EXPECT_THAT(merged->conflicts[0].text(), HasSubstr("as row 2 has"));
    EXPECT_EQ(merged->conflicts[0].line, 3u);
}

TEST(MergingLogs, PutsRowsBehindThoseThatAreLeft) {
    vek::Log into = logOf("Name\na\nb\n");
    ASSERT_TRUE(into.removeRows(*into.choose()));
    vek::Log from = logOf("Name,Take\nc,1\nd,2\n");
    ASSERT_TRUE(from.removeRows({0}));
    ASSERT_TRUE(vek::merge(into, {from, logOf("Name\ne\n")}));
    EXPECT_EQ(textOf(into), "Name,Take\nd,2\ne,\n");
}

TEST(MergingLogs, TakesNoFormerNameForThatOfAColumn) {
    vek::Log into = logOf("Scene,Take\n12,1\n");
    ASSERT_TRUE(into.renameColumn(*into.column("Scene"), "Szene"));
    ASSERT_TRUE(vek::merge(into, {logOf("Scene,Take\n7,2\n")}));
    EXPECT_EQ(textOf(into), "Szene,Take,Scene\n12,1,\n,2,7\n");
}
