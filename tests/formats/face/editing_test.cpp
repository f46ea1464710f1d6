#include <gmock/gmock.h>

#include <string>

#include <vekdb/formats/log.h>

using testing::HasSubstr;

namespace {

vek::Log logOf(const char* text) {
    return *vek::openText(text, "day.csv");
}

std::string csvOf(const vek::Log& log) {
    std::string text;
    auto saved = log.write(text, vek::Format::csv);
    return saved ? text : saved.reason().text();
}

}  // namespace

TEST(Editing, PutsTextsInCells) {
    vek::Log log = logOf("A,B\n1,2\n3,4\n");
    vek::View all = *log.choose();
    EXPECT_TRUE(log.set(log.at(1), "b", " x,y "));
    EXPECT_TRUE(log.set(log.at(0), *log.column("A"), ""));
    EXPECT_EQ(all.at(1)["B"], " x,y ");
    EXPECT_EQ(csvOf(log), "A,B\n,2\n3,\" x,y \"\n");
}

TEST(Editing, SaysWhichCellIsNotThere) {
    vek::Log log = logOf("A,B\n1,2\n");
    EXPECT_EQ(log.set(log.at(0), "C", "x").reason().kind, vek::Reason::wrongUsage);
    EXPECT_EQ(log.set(log.at(7), "A", "x").reason().kind, vek::Reason::wrongUsage);
    EXPECT_EQ(csvOf(log), "A,B\n1,2\n");
}

TEST(Editing, ReplacesTextInChosenRows) {
    vek::Log log = logOf("A,B\naa,a\nbaab,\na,aaa\n");
    EXPECT_EQ(*log.replaceText(*log.choose(vek::Choice().limit(2)), "", "aa", "x"), 2u);
    EXPECT_EQ(*log.replaceText(*log.choose(), "B", "a", "aa"), 2u);
    EXPECT_EQ(*log.replaceText(*log.choose(), "B", "", "z"), 0u);
    EXPECT_EQ(csvOf(log), "A,B\nx,aa\nbxb,\na,aaaaaa\n");
}

TEST(Editing, TagsRowsInAColumnOfTheirOwn) {
    vek::Log log = logOf("A\n1\n2\n");
    EXPECT_TRUE(log.setTagged(log.at(0), false));
    EXPECT_EQ(log.columns().size(), 1u);
    EXPECT_TRUE(log.setTagged(log.at(1), true));
    EXPECT_FALSE(log.at(0).isTagged());
    EXPECT_TRUE(log.at(1).isTagged());
    EXPECT_EQ(log.choose(vek::Choice().tagged())->size(), 1u);
    EXPECT_TRUE(log.setTagged(log.at(1), false));
    EXPECT_FALSE(log.at(1).isTagged());
}

TEST(Editing, AddsRows) {
    vek::Log log = logOf("A,B\n1,2\n");
    vek::Row row = *log.addRow();
    EXPECT_TRUE(log.set(row, "B", "new"));
    EXPECT_EQ(row.line(), 0u);
    EXPECT_EQ(csvOf(log), "A,B\n1,2\n,new\n");
}

TEST(Editing, TakesRowsOutAndLeavesViewsAsTheyAre) {
    vek::Log log = logOf("A\n1\n2\n3\n4\n");
    vek::View all = *log.choose();
    vek::Row last = log.at(3);
    EXPECT_TRUE(log.removeRows(*log.choose(vek::Choice("A==2").where("A==3").any())));
    EXPECT_EQ(log.size(), 2u);
    EXPECT_EQ(log.at(1)["A"], "4");
    EXPECT_EQ(last["A"], "4");
    EXPECT_EQ(all.at(1)["A"], "2");
    EXPECT_EQ(log.choose()->size(), 2u);
    EXPECT_EQ(log.choose(vek::Choice("A>=2").order("A").reverse().limit(1))->at(0)["A"], "4");
    EXPECT_TRUE(log.set(*log.addRow(), "A", "5"));
    EXPECT_EQ(log.column("A")->size(), 3u);
    EXPECT_EQ(csvOf(log), "A\n1\n4\n5\n");
}

TEST(Editing, AddsRenamesAndRemovesColumns) {
    vek::Log log = logOf("A,B\n1,2\n");
    EXPECT_TRUE(log.addColumn("C"));
    EXPECT_EQ(log.addColumn("b").reason().kind, vek::Reason::wrongUsage);
    EXPECT_TRUE(log.set(log.at(0), "C", "3"));
    EXPECT_TRUE(log.removeColumn(*log.column("A")));
    EXPECT_TRUE(log.renameColumn(*log.column("B"), "Bee"));
    EXPECT_EQ(log.renameColumn(*log.column("C"), "Bee").reason().kind, vek::Reason::wrongUsage);
    EXPECT_EQ(csvOf(log), "Bee,C\n2,3\n");
}

TEST(Editing, FindsColumnsThatHadOneNameByTheirNewOnes) {
    vek::Log log = logOf("Reel,Reel\n1,2\n");
    EXPECT_TRUE(log.renameColumn(log.columns().at(1), "B"));
    EXPECT_EQ(log.at(0)["B"], "2");
    ASSERT_TRUE(log.column("B"));
    EXPECT_EQ(log.column("B")->at(0), "2");
    ASSERT_TRUE(log.column("Reel"));
    EXPECT_EQ(log.column("Reel")->at(0), "1");
    EXPECT_EQ(log.column("Reel#2").reason().kind, vek::Reason::wrongUsage);
    EXPECT_TRUE(log.renameColumn(*log.column("reel"), "A"));
    EXPECT_EQ(csvOf(log), "A,B\n1,2\n");
}

TEST(Editing, FindsColumnsOfOneNameAfterOneInFrontWentOut) {
    vek::Log log = logOf("Tape,Reel,Reel,Scene,Reel\n0,1,2,3,4\n");
    EXPECT_TRUE(log.removeColumn(*log.column("Tape")));
    EXPECT_EQ(log.at(0)["Scene"], "3");
    EXPECT_EQ(log.column("Scene")->at(0), "3");
    EXPECT_EQ(log.at(0)["Reel#1"], "1");
    EXPECT_EQ(log.column("Reel#3")->at(0), "4");
    EXPECT_TRUE(log.removeColumn(*log.column("Reel#1")));
    EXPECT_EQ(log.column("Reel#2")->at(0), "4");
    EXPECT_TRUE(log.removeColumn(*log.column("Reel#2")));
    EXPECT_EQ(log.column("Reel")->at(0), "2");
    EXPECT_EQ(csvOf(log), "Reel,Scene\n2,3\n");
}

TEST(Editing, AddsAColumnUnderTheNameOfOneThatTheHeadingHadNoNameFor) {
    vek::Log log = logOf("A,B\n1,2,3\n");
    ASSERT_EQ(log.columns().size(), 3u);
    const std::string name = log.columns().at(2).name();
    EXPECT_TRUE(log.removeColumn(log.columns().at(2)));
    EXPECT_TRUE(log.addColumn(name));
    EXPECT_TRUE(log.set(log.at(0), name, "x"));
    EXPECT_EQ(csvOf(log), "A,B," + name + "\n1,2,x\n");
}

TEST(Editing, SetsParametersThatAFileCanHold) {
    vek::Log log = logOf("A\n1\n");
    EXPECT_TRUE(log.setParameter("FPS", "24"));
    EXPECT_TRUE(log.setParameter("FPS", "25"));
    EXPECT_EQ(log.parameter("fps"), "25");
    ASSERT_EQ(log.parameters().size(), 1u);
    EXPECT_EQ(log.parameters()[0].name, "FPS");
    for (const char* name : {"", "a:b", "VEKDB", " a", "a\nb"}) {
        EXPECT_FALSE(log.setParameter(name, "x")) << name;
    }
    EXPECT_FALSE(log.setParameter("A", "say \"cut\""));
}

TEST(Editing, SaysWhyAParameterCannotBe) {
    vek::Log log = logOf("A\n1\n");
    EXPECT_EQ(log.setParameter("vekdb", "x").reason().text(),
              "day.csv: parameter \"vekdb\" is the library's own, expected another name");
    EXPECT_EQ(log.setParameter("", "x").reason().text(),
              "day.csv: a parameter without a name, expected a name");
    EXPECT_THAT(log.setParameter("a:b", "x").reason().expected, HasSubstr("no colon in the name"));
}

TEST(Editing, SaysWhenThereIsNoRoomForAParameter) {
    vek::Log log = logOf("A\n1\n");
    vek::Result<void> done;
    for (int i = 0; i < 60 && done; ++i) done = log.setParameter("P" + std::to_string(i), "x");
    EXPECT_EQ(done.reason().kind, vek::Reason::unwritable);
}

TEST(Editing, TakesRowsOutByTheirPlaces) {
    vek::Log log = logOf("A\n1\n2\n3\n4\n");
    EXPECT_TRUE(log.removeRows({3, 0, 3, 99}));
    EXPECT_EQ(csvOf(log), "A\n2\n3\n");
    EXPECT_TRUE(log.removeRows({1}));
    EXPECT_EQ(csvOf(log), "A\n3\n");
}

TEST(Editing, CallsColumnsByAddressesThatFindThem) {
    vek::Log log = logOf("A,b,B,,\"\",C\n1,2,3,4,5,6\n");
    std::string addresses;
    for (vek::Column column : log.columns()) {
        addresses += column.address() + " ";
        EXPECT_EQ(log.column(column.address())->index(), column.index());
    }
    EXPECT_EQ(addresses, "A b#1 B#2 []#1 []#2 C ");
}

namespace {

// Two logs that a handle of the one may be taken for one of the other.
struct TwoLogs {
    vek::Log log = logOf("A,B,Tag\n1,2,\n3,4,\n");
    vek::Log other = logOf("B,A,C\n5,6,7\n8,9,0\n");
    std::string before = csvOf(log);

    template <class T>
    void expectRefused(const vek::Result<T>& done) const {
        EXPECT_EQ(done.reason().kind, vek::Reason::wrongUsage);
        EXPECT_THAT(done.reason().text(), HasSubstr("of another log"));
        EXPECT_EQ(csvOf(log), before);
    }
};

}  // namespace

TEST(HandlesOfAnotherLog, ChangeNothing) {
    TwoLogs two;
    vek::Log& log = two.log;
    const vek::Row row = two.other.at(1);
    const vek::Column column = *two.other.column("A");
    const vek::View rows = *two.other.choose();
    two.expectRefused(log.set(row, "A", "x"));
    two.expectRefused(log.set(row, *log.column("A"), "x"));
    two.expectRefused(log.set(log.at(0), column, "x"));
    two.expectRefused(log.setTagged(row, true));
    two.expectRefused(log.removeRows(rows));
    two.expectRefused(log.replaceText(rows, "", "1", "x"));
    two.expectRefused(log.removeColumn(column));
    two.expectRefused(log.renameColumn(column, "Z"));
    EXPECT_EQ(log.at(0)[column], "");
    EXPECT_EQ(log.placeOf(row), std::nullopt);
}

TEST(HandlesOfAnotherLog, AreThoseOfACopyToo) {
    TwoLogs two;
    const vek::Log copy = *two.log.copy();
    two.expectRefused(two.log.set(copy.at(0), "A", "x"));
    EXPECT_TRUE(two.log.set(vek::Log(two.log).at(0), *two.log.column("A"), "x"));
}

TEST(FormerNames, FindNothing) {
    vek::Log log = logOf("Scene,Take,Tag\n12,2,1\n12,1,\n");
    ASSERT_TRUE(log.renameColumn(*log.column("Scene"), "Szene"));
    for (const vek::Log& each : {log, *log.copy()}) {
        EXPECT_FALSE(each.column("Scene"));
        EXPECT_EQ(each.at(0)["Scene"], "");
        EXPECT_EQ(each.at(0)["Szene"], "12");
        EXPECT_FALSE(each.choose("Scene=12"));
        EXPECT_FALSE(each.choose(vek::Choice().order("Scene")));
        EXPECT_EQ(each.choose("szene=12")->size(), 2u);
    }
    EXPECT_FALSE(log.set(log.at(0), "Scene", "x"));
    ASSERT_TRUE(log.renameColumn(*log.column("Tag"), "Marked"));
    EXPECT_FALSE(log.at(0).isTagged());
    EXPECT_EQ(log.choose(vek::Choice().tagged())->size(), 0u);
    ASSERT_TRUE(log.setTagged(log.at(1), true));
    EXPECT_EQ(csvOf(log), "Szene,Take,Marked,Tag\n12,2,1,\n12,1,,1\n");
}

TEST(FormerNames, AreFreeForOtherColumns) {
    vek::Log log = logOf("Scene,Take\n12,2\n");
    ASSERT_TRUE(log.renameColumn(*log.column("Scene"), "Szene"));
    ASSERT_TRUE(log.addColumn("Scene"));
    EXPECT_FALSE(log.addColumn("scene"));
    ASSERT_TRUE(log.set(log.at(0), "Scene", "7"));
    EXPECT_EQ(csvOf(log), "Szene,Take,Scene\n12,2,7\n");
    ASSERT_TRUE(log.removeColumn(*log.column("Scene")));
    EXPECT_FALSE(log.column("Scene"));
    ASSERT_TRUE(log.renameColumn(*log.column("Take"), "Scene"));
    ASSERT_TRUE(log.renameColumn(*log.column("Szene"), "Take"));
    EXPECT_EQ(csvOf(log), "Take,Scene\n12,2\n");
    EXPECT_EQ(log.at(0)["take"], "12");
}

TEST(FormerNames, OfRangesAreAskedAsTheColumnsThatTheyAreNow) {
    vek::Log log = *vek::openText(
        "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\",\"4\"\n\"text\",\"text\",\"text\"\n\"Start time\","
        "\"End time\",\"From\"\n\"01\",\"05\",\"03\"\n\"11\",\"15\",\"13\"\n",
        "day.vek");
    ASSERT_EQ(log.choose("Start time=03")->size(), 1u);
    ASSERT_TRUE(log.renameColumn(*log.column("Start time"), "Begin"));
    EXPECT_EQ(log.choose("Begin=01")->size(), 1u);
    EXPECT_EQ(log.choose("Begin=03")->size(), 0u);
    ASSERT_TRUE(log.renameColumn(*log.column("From"), "Start time"));
    EXPECT_EQ(log.choose("Start time=04")->size(), 1u);
    EXPECT_EQ(log.choose("End time=05")->size(), 1u);
}

TEST(RangesThatWereMoved, AreAskedAsTheColumnsThatTheyAreNow) {
    vek::Log log = logOf("Reel,Start time,End time,Notes\nA,01,05,01\nB,11,15,02\n");
    ASSERT_EQ(log.choose("Start time=03")->size(), 1u);
    ASSERT_TRUE(log.removeColumn(*log.column("Reel")));
    EXPECT_EQ(log.choose("Start time=03")->size(), 1u);
    EXPECT_EQ(log.choose("Notes=02")->size(), 1u);
    EXPECT_EQ(log.choose("End time=13")->size(), 1u);
    ASSERT_TRUE(log.addColumn("Start inkcode"));
    EXPECT_EQ(log.copy()->choose("Notes=02")->size(), 1u);
}

TEST(Editing, NamesTheColumnThatIsNotThere) {
    const vek::Log log = logOf("A,B,B\n1,2,3\n");
    EXPECT_EQ(log.column("C").reason().noColumn, "C");
    EXPECT_EQ(log.choose("B=1").reason().noColumn, "B");
    EXPECT_EQ(log.choose("A~(").reason().noColumn, "");
}

TEST(ValuesOfJson, StayWhatTheyAreBehindAColumnThatGoes) {
    auto log = vek::openText("[{\"a\": \"x\", \"n\": 1, \"t\": \"7\"}]", "log.json");
    ASSERT_TRUE(log);
    ASSERT_TRUE(log->removeColumn(*log->column("a")));
    std::string text;
    ASSERT_TRUE(log->write(text, vek::Format::jsonl));
    EXPECT_EQ(text, "{\"n\": 1, \"t\": \"7\"}\n");
}
