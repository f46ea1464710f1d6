#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "formats/log/column_edits.h"
#include "formats/log/column_names.h"
#include "formats/log/mapped_columns.h"
#include "testing/logs.h"

using testing::ElementsAre;
using testing::IsEmpty;

using testing_support::logOf;
using namespace vek::formats;

namespace {

std::vector<std::string> rowOf(const Log& log, unsigned row) {
    std::vector<std::string> cells;
    for (unsigned i = 0; i < log.columnCount(); ++i) cells.emplace_back(log.cell(row, i));
    return cells;
}

// Columns Reel, Name and Reel again, of which the last and the second are shown.
constexpr const char* twinsWithMap =
    "\"VEKDB:Rev 1\"\n\"V5_FIELD_MAP:3 -1 2\"\n\"VEKDB\"\n\"4\",\"4\",\"4\"\n"
    "\"text\",\"text\",\"text\"\n\"Reel\",\"Name\",\"Reel\"\n\"a\",\"b\",\"c\"\n";

}  // namespace

TEST(ColumnEdits, RemoveTheOneThatIsMeantOfSeveralOfOneName) {
    for (unsigned column : {0u, 1u, 3u}) {
        Log log = logOf("Reel,reel,Name,REEL\na,b,c,d\n");
        std::vector<std::string> names = log.columnNames();
        std::vector<std::string> cells = rowOf(log, 0);
        ColumnEdits(log).remove(column);
        names.erase(names.begin() + column);
        cells.erase(cells.begin() + column);
        EXPECT_EQ(log.columnNames(), names);
        EXPECT_EQ(rowOf(log, 0), cells);
        EXPECT_EQ(numberedColumn(log, "Reel#2"), column == 3u ? 1u : 2u);
    }
}

TEST(ColumnEdits, RemoveTheOneThatIsMeantOfSeveralWithoutAName) {
    Log log = logOf("Name,,\na,b,c\n");
    ColumnEdits(log).remove(2);
    EXPECT_THAT(log.columnNames(), ElementsAre("Name", ""));
    EXPECT_THAT(rowOf(log, 0), ElementsAre("a", "b"));
    ColumnEdits(log).remove(1);
    EXPECT_THAT(log.columnNames(), ElementsAre("Name"));
}

TEST(ColumnEdits, LeaveANameToTheColumnThatStillHasIt) {
    for (unsigned column : {0u, 2u}) {
        Log log = logOf("Reel,Name,Reel\na,b,c\n");
        ColumnEdits(log).rename(column, "Reel", "Camera");
        EXPECT_EQ(log.findColumn("Reel"), 2 - column);
        EXPECT_EQ(log.findColumn("Camera"), column);
        EXPECT_THAT(log.repeatedNames, IsEmpty());
    }
}

TEST(ColumnEdits, KeepTheMapOfColumnsThatShareTheirName) {
    Log log = logOf(twinsWithMap, "log.vek");
    EXPECT_THAT(mappedColumns(log), ElementsAre(2u, 1u));
    ColumnEdits(log).rename(0, "Reel", "Camera");
    EXPECT_EQ(log.parameter("V5_FIELD_MAP"), "3 -1 2");
    ColumnEdits(log).add("Notes", DBFieldTypes::text);
    EXPECT_EQ(log.parameter("V5_FIELD_MAP"), "3 -1 2 4");
    ColumnEdits(log).remove(1);
    EXPECT_EQ(log.parameter("V5_FIELD_MAP"), "2 -1 3");
    ColumnEdits(log).order({2, 1});
    EXPECT_EQ(log.parameter("V5_FIELD_MAP"), "3 2 -1");
}
