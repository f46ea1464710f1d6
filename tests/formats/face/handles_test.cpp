#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <vector>

#include <vekdb/formats/log.h>
#include <vekdb/table.h>
#include "testing/temp_dir.h"

using testing::ElementsAre;

namespace {

vek::Log logOf(const char* text) {
    return *vek::openText(text, "day.csv");
}

std::vector<std::string> addressesOf(const vek::Log& log) {
    std::vector<std::string> addresses;
    for (vek::Column column : log.columns()) addresses.push_back(column.address());
    return addresses;
}

std::vector<std::string> cellsOf(const vek::View& view, const char* column) {
    std::vector<std::string> cells;
    for (vek::Row row : view) cells.emplace_back(row[column]);
    return cells;
}

std::unique_ptr<vekdb> tableOf(unsigned rows) {
    auto table = std::make_unique<vekdb>();
    table->addField({LightweightString<char>("A"), DBFieldTypes::text});
    table->add_records(static_cast<int>(rows));
    return table;
}

static_assert(std::ranges::input_range<vek::Log> && std::ranges::input_range<vek::View> &&
              std::ranges::input_range<vek::Row> && std::ranges::input_range<vek::Column> &&
              std::ranges::input_range<vek::Columns>);
static_assert(std::sentinel_for<vek::PlaceIterator<vek::View>, vek::PlaceIterator<vek::View>>);

}  // namespace

TEST(Ranges, AreThoseOfTheStandardLibrary) {
    const vek::Log log = logOf("A,B\n1,x\n2,y\n3,x\n");
    const auto isX = [](const vek::Row& row) { return row["B"] == "x"; };
    EXPECT_EQ(std::ranges::count_if(log, isX), 2);
    std::string cells;
    for (vek::Row row : log | std::views::filter(isX)) cells += row["A"];
    EXPECT_EQ(cells, "13");
    EXPECT_EQ(std::ranges::distance(log.at(0)), 2);
    EXPECT_EQ(vek::PlaceIterator<vek::Row>(), vek::PlaceIterator<vek::Row>());
}

TEST(Ranges, AreKeptByTheirIterators) {
    auto column = vek::openText("A,B\n1,x\n", "day.csv")->columns().begin();
    auto row = vek::openText("A,B\n1,x\n", "day.csv")->choose()->begin();
    EXPECT_EQ((*++column).name(), "B");
    EXPECT_EQ((*row)["A"], "1");
}

TEST(Addresses, FindTheirColumnAndNoOther) {
    const vek::Log log = logOf("Reel,Scene,reel,,\"a,b\"\n1,2,3,4,5\n");
    EXPECT_THAT(addressesOf(log), ElementsAre("Reel#1", "Scene", "reel#2", "[]", "a,b"));
    for (vek::Column column : log.columns()) {
        const auto found = log.column(column.address());
        ASSERT_TRUE(found) << column.address() << ": " << found.reason().text();
        EXPECT_EQ(found->index(), column.index()) << column.address();
    }
}

TEST(Addresses, OfANameThatLooksLikeAnotherOnesAddressStayTheirOwn) {
    const vek::Log log = logOf("A,A,A#2,[A]\n1,2,3,4\n");
    for (vek::Column column : log.columns()) {
        const auto found = log.column(column.address());
        ASSERT_TRUE(found) << column.address() << ": " << found.reason().text();
        EXPECT_EQ(found->index(), column.index()) << column.address();
    }
}

TEST(Addresses, ReadTheCellsThatTheyWrite) {
    vek::Log log = logOf("Reel,Scene,reel,,\"a,b\"\n1,2,3,4,5\n");
    const vek::Row row = log.at(0);
    for (vek::Column column : log.columns()) {
        const std::string text = "in " + std::to_string(column.index());
        ASSERT_TRUE(log.set(row, column.address(), text));
        EXPECT_EQ(row[column.address()], text) << column.address();
    }
    EXPECT_EQ(row["[a,b]"], "in 4");
    EXPECT_EQ(row["[Reel]#2"], "in 2");
}

TEST(Addresses, OfSeveralColumnsReadNone) {
    const vek::Log log = logOf("Reel,Tag,Reel,Tag\n1,1,3,0\n");
    for (const char* name : {"Reel", "[Reel]", "Reel#3", "Reel#0", "[]", "", "Nothing"}) {
        EXPECT_FALSE(log.column(name)) << name;
        EXPECT_EQ(log.at(0)[name], "") << name;
    }
    EXPECT_TRUE(log.at(0).isTagged());
}

TEST(Places, AreCountedWithoutTheRowsThatWent) {
    vek::Log log = logOf("A\n1\n2\n3\n4\n");
    const vek::Row last = log.at(3);
    const vek::Row gone = log.at(1);
    ASSERT_TRUE(log.removeRows(*log.choose("A=2")));
    EXPECT_EQ(log.placeOf(last), std::optional(2u));
    EXPECT_EQ(log.placeOf(gone), std::nullopt);
    EXPECT_EQ(log.row(last.index())["A"], "4");
    EXPECT_EQ(log.at(2).index(), last.index());
}

TEST(Places, OfARowThatIsNotThereAreNone) {
    const vek::Log log = logOf("A\n1\n");
    EXPECT_EQ(log.placeOf(log.row(1)), std::nullopt);
    EXPECT_EQ(log.placeOf(log.row(0xFFFFFFFF)), std::nullopt);
    EXPECT_EQ(log.row(7)["A"], "");
}

TEST(ChoosingAmong, KeepsTheOrderThatRowsAreNamedIn) {
    const vek::Log log = logOf("A,B\n1,x\n2,y\n3,x\n4,x\n");
    EXPECT_THAT(cellsOf(*log.chooseAmong({3, 0, 1}), "A"), ElementsAre("4", "1", "2"));
    EXPECT_THAT(cellsOf(*log.chooseAmong({3, 1, 0}, "B=x"), "A"), ElementsAre("4", "1"));
    EXPECT_THAT(cellsOf(*log.chooseAmong({3, 1, 0, 2}, vek::Choice().order("B")), "A"),
                ElementsAre("4", "1", "3", "2"));
    EXPECT_EQ(log.chooseAmong({})->size(), 0u);
}

TEST(ChoosingAmong, LeavesRowsOutThatWent) {
    vek::Log log = logOf("A\n1\n2\n3\n");
    ASSERT_TRUE(log.removeRows(*log.choose("A=2")));
    EXPECT_THAT(cellsOf(*log.chooseAmong({2, 1, 0, 99}), "A"), ElementsAre("3", "1"));
}

TEST(ChoosingAmong, SaysWhatIsWrongWithACondition) {
    const vek::Log log = logOf("A\n1\n");
    EXPECT_EQ(log.chooseAmong({0}, "C=1").reason().kind, vek::Reason::wrongUsage);
}

TEST(Copies, AreLogsOfTheirOwn) {
    vek::Log log = logOf("A\n1\n2\n3\n");
    ASSERT_TRUE(log.removeRows(*log.choose("A=2")));
    std::optional<vek::Log> copy = *log.copy();
    ASSERT_TRUE(log.set(log.at(0), "A", "changed"));
    ASSERT_TRUE(copy->set(copy->at(1), "A", "other"));
    EXPECT_THAT(cellsOf(*copy->choose(), "A"), ElementsAre("1", "other"));
    EXPECT_THAT(cellsOf(*log.choose(), "A"), ElementsAre("changed", "3"));
    EXPECT_FALSE(copy->canBeSaved() && copy->save());
    const vek::Row kept = copy->at(0);
    copy.reset();
    EXPECT_EQ(kept["A"], "1");
}

TEST(AdoptedTables, AreLogs) {
    auto table = tableOf(2);
    table->setField(1, 0, "x");
    const vek::Log log = *vek::adopt(std::move(table), "mine");
    EXPECT_EQ(log.name(), "mine");
    EXPECT_EQ(log.size(), 2u);
    EXPECT_EQ(log.at(1)["A"], "x");
    EXPECT_EQ(log.choose("A=x")->size(), 1u);
}

TEST(AdoptedTables, AreRefusedWhereTheyAreNone) {
    EXPECT_FALSE(vek::adopt(nullptr));
    EXPECT_FALSE(vek::adopt(std::make_unique<vekdb>()));
}

TEST(LettingGo, GivesTheFileToOthers) {
    testing_support::TempDir folder;
    folder.write("day.csv", "A\n1\n");
    const std::string path = folder.file("day.csv").string();
    vek::Log log = *vek::openToChange(path);
    EXPECT_FALSE(vek::openToChange(path));
    log.letGo();
    EXPECT_EQ(log.at(0)["A"], "1");
    vek::Log other = *vek::openToChange(path);
    ASSERT_TRUE(other.set(other.at(0), "A", "2"));
    EXPECT_TRUE(other.save());
    EXPECT_FALSE(log.save());
}
